// Standard strings from values and back, any texts as any type, hexadecimal text, values compared.

#include "fuzz/datacnv/standardstrings_check.hpp"
#include "fuzz/harness/target.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return oxr::fuzz::runTarget(
      [](oxr::fuzz::Choices& choices) {
        using Check = void (*)(oxr::fuzz::Choices&);
        static constexpr Check kChecks[] = {oxr::fuzz::checkStandardValue, oxr::fuzz::checkStandardText,
                                            oxr::fuzz::checkHexText, oxr::fuzz::checkDecimalComparison,
                                            oxr::fuzz::checkDurationComparison};
        choices.oneOf(kChecks)(choices);
      },
      data, size);
}
