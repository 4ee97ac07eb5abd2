// Packed fields of any bytes and settings, and any texts and numbers into them.

#include "fuzz/datacnv/packed_check.hpp"
#include "fuzz/harness/target.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return oxr::fuzz::runTarget(
      [](oxr::fuzz::Choices& choices) {
        using Check = void (*)(oxr::fuzz::Choices&);
        static constexpr Check kChecks[] = {oxr::fuzz::checkPackedRead, oxr::fuzz::checkPackedWrite,
                                            oxr::fuzz::checkPackedNumbers};
        choices.oneOf(kChecks)(choices);
      },
      data, size);
}
