// External decimals of any bytes, settings and code pages, read and written.

#include "fuzz/datacnv/external_check.hpp"
#include "fuzz/harness/target.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return oxr::fuzz::runTarget(
      [](oxr::fuzz::Choices& choices) {
        using Check = void (*)(oxr::fuzz::Choices&);
        // The one that goes through all 256 sign bytes is for the tests: what takes as long as hundreds of others finds
        // less in the same time.
        static constexpr Check kChecks[] = {oxr::fuzz::checkExternalRead, oxr::fuzz::checkExternalWrite,
                                            oxr::fuzz::checkExternalWord};
        choices.oneOf(kChecks)(choices);
      },
      data, size);
}
