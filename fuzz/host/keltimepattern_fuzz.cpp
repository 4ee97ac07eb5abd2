// Time stamp patterns that give a stamp back, and patterns and texts of any kind.

#include "fuzz/host/keltimepattern_check.hpp"

#include "fuzz/harness/target.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return oxr::fuzz::runTarget(
      [](oxr::fuzz::Choices& choices) {
        (choices.upTo(3) == 0 ? oxr::fuzz::checkTimeStampRoundTrip : oxr::fuzz::checkTimePatternAndText)(choices);
      },
      data, size);
}
