// Time stamps in 20 zones and fields out of their ranges against ICU.

#include "fuzz/host/keltimestamp_check.hpp"

#include "fuzz/harness/target.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return oxr::fuzz::runTarget(
      [](oxr::fuzz::Choices& choices) {
        (choices.coin() ? oxr::fuzz::checkTimeStampAgainstIcu : oxr::fuzz::checkTimeStampCarryOver)(choices);
      },
      data, size);
}
