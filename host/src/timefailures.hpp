#pragma once

#include <string_view>

#include "kelexception.hpp"
#include "kellogsource.hpp"
#include "kelwstring.hpp"

namespace oxr {

// The failures of dates and times. The numbers are the host's own.
enum class TimeFailure : unsigned {
  outOfRange = 0xC0000000u | 2140u,
  textMismatch = 0xC0000000u | 2141u,
  badPattern = 0xC0000000u | 2142u,
  unknownZone = 0xC0000000u | 2143u,
  icu = 0xC0000000u | 2144u,
};

// Raises a KelRecoverableException with `what` and the text that it is about as inserts.
[[noreturn]] void raiseTimeFailure(TimeFailure failure, const char* function, const char* what,
                                   const KelWstring& subject, const KelLogSource* source = nullptr);

}  // namespace oxr
