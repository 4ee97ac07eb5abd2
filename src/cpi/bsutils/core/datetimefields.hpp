#pragma once

#include <limits>

#include "pwftypes.hpp"

// The fields of a date-time that are not set, and what stands for them.
namespace oxr::core {

inline constexpr PWFInt32 kMicrosecondScale = 6;

inline bool isSet(PWFInt32 field) {
  return field != std::numeric_limits<PWFInt32>::min();
}

// Gives a copy with all fields set. Made of single fields, so that a caller keeps them in registers: a copy of the
// whole that is then changed costs more than the writing of a date-time.
[[gnu::always_inline]] inline PWFDateTime withDefaults(const PWFDateTime& value) {
  const auto orDefault = [](PWFInt32 field, PWFInt32 otherwise) { return isSet(field) ? field : otherwise; };
  return {orDefault(value._year, 1970),
          orDefault(value._month, 1),
          orDefault(value._day, 1),
          orDefault(value._hour, 0),
          orDefault(value._minute, 0),
          orDefault(value._second, 0),
          orDefault(value._subsecond, 0),
          orDefault(value._scale, kMicrosecondScale),
          value.iTimeZone,
          value._hasLocalTimezone,
          value.iTimeZoneFormatControl};
}

}  // namespace oxr::core
