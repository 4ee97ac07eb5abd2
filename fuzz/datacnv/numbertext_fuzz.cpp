// Numbers from text and as text: fields with any settings, plain texts, values, decimal texts.

#include "fuzz/datacnv/numbertext_check.hpp"
#include "fuzz/harness/target.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return oxr::fuzz::runTarget(
      [](oxr::fuzz::Choices& choices) {
        using Check = void (*)(oxr::fuzz::Choices&);
        static constexpr Check kChecks[] = {oxr::fuzz::checkNumberField, oxr::fuzz::checkNumberRead,
                                            oxr::fuzz::checkNumberWrite, oxr::fuzz::checkDecimalText};
        choices.oneOf(kChecks)(choices);
      },
      data, size);
}
