#include "fuzz/records/roundtrip_check.hpp"

#include "fuzz/harness/target.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return oxr::fuzz::runTarget(oxr::fuzz::checkRoundTrip, data, size);
}
