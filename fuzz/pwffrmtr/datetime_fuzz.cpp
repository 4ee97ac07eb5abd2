// Date-times as text of any kind, in the forms of ISO 8601, as counts, and as binary fields.

#include "fuzz/pwffrmtr/datetime_check.hpp"

#include "fuzz/harness/target.hpp"
#include "fuzz/pwffrmtr/binarydatetime_check.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return oxr::fuzz::runTarget(
      [](oxr::fuzz::Choices& choices) {
        using Check = void (*)(oxr::fuzz::Choices&);
        static constexpr Check kChecks[] = {oxr::fuzz::checkDateTimeText, oxr::fuzz::checkIsoDateTime,
                                            oxr::fuzz::checkEpochDateTime, oxr::fuzz::checkBinaryDateTime};
        choices.oneOf(kChecks)(choices);
      },
      data, size);
}
