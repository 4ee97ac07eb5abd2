// Date-times as text of any kind, in the forms of ISO 8601, and as counts.

#include "fuzz/pwffrmtr/datetime_check.hpp"

#include "fuzz/harness/target.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return oxr::fuzz::runTarget(
      [](oxr::fuzz::Choices& choices) {
        using Check = void (*)(oxr::fuzz::Choices&);
        static constexpr Check kChecks[] = {oxr::fuzz::checkDateTimeText, oxr::fuzz::checkIsoDateTime,
                                            oxr::fuzz::checkEpochDateTime};
        choices.oneOf(kChecks)(choices);
      },
      data, size);
}
