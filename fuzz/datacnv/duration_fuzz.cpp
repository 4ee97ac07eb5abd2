// Durations from nearly good texts, and any record as text.

#include "fuzz/datacnv/duration_check.hpp"
#include "fuzz/harness/target.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return oxr::fuzz::runTarget(
      [](oxr::fuzz::Choices& choices) {
        if (choices.coin())
          oxr::fuzz::checkDurationRead(choices);
        else
          oxr::fuzz::checkDurationWrite(choices);
      },
      data, size);
}
