#include "fuzz/records/diagnosis_check.hpp"

#include "fuzz/harness/target.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return oxr::fuzz::runTarget(oxr::fuzz::checkDiagnosis, data, size);
}
