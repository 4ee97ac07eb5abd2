#pragma once

#include <cstdint>

#include "kelwstring.hpp"

class KelTimeZone;

// The integer names of the public signatures.
using PWFInt8 = std::int8_t;
using PWFUInt8 = std::uint8_t;
using PWFInt16 = std::int16_t;
using PWFUInt16 = std::uint16_t;
using PWFInt32 = std::int32_t;
using PWFUInt32 = std::uint32_t;
using PWFInt64 = std::int64_t;
using PWFUInt64 = std::uint64_t;
// The text of the public signatures.
using PWFString = KelWstring;

// A byte order. Conversions test for exactly 1, or for exactly 2, and take anything else as the other order.
enum EEndian : std::int32_t {
  eEndianUnset = -1,  // no byte order given; only a code page converter tells it apart
  eEndianLittle = 1,
  eEndianBig = 2,
};

// The kinds of logical value. The numbers are stored and traced outside the library: they never change. Other numbers
// up to 16 name no kind; a value may carry one and then stores nothing.
enum ELogicalType : std::int32_t {
  NOTHING = 0,    // no value at all: the element is absent, which is not the same as null
  STRING = 2,     // text
  INTEGER = 4,    // signed, 4 or 8 bytes wide
  FLOAT = 6,      // a double
  BINARY = 10,    // bytes
  BOOLEAN = 12,   // a 32-bit int, true when not 0
  INTERVAL = 14,  // a PWFInterval
  DATETIME = 15,  // a PWFDateTime
  DECIMAL = 16,   // a decimal number, as text: optional "-", digits, optional "." and digits
};

// Who frees the bytes that a value is made from.
enum EOwnership : std::int32_t {
  COPY = 0,       // the value takes a copy of its own
  ADOPT = 1,      // the value takes over a block from malloc() and releases it with free()
  REFERENCE = 2,  // the value points at the caller's bytes, which must outlive it
};

// A date and time. 0x80000000 in a numeric field means that the field is not set.
struct PWFDateTime {
  PWFInt32 _year;                   // 1 to 9999 on the calendar
  PWFInt32 _month;                  // January is 1
  PWFInt32 _day;                    // of the month, from 1
  PWFInt32 _hour;                   // 0 to 23
  PWFInt32 _minute;                 // 0 to 59
  PWFInt32 _second;                 // whole seconds
  PWFInt32 _subsecond;              // fraction of the second, a whole number of `_scale` digits
  PWFInt32 _scale;                  // digits in _subsecond; 6 (microseconds) as a rule
  const KelTimeZone* iTimeZone;     // the date-time's own zone, or null; not owned
  PWFInt32 _hasLocalTimezone;       // not 0 when the date-time carries its own zone
  PWFInt32 iTimeZoneFormatControl;  // how a UTC zone is to be written
};
static_assert(sizeof(PWFDateTime) == 48);

// A duration.
struct PWFInterval {
  PWFInt32 _years;         // whole years
  PWFInt32 _months;        // whole months, beside the years
  PWFInt64 _microseconds;  // days, hours, minutes and seconds together
  PWFInt32 _sign;          // not 0: negative, the other fields being magnitudes
};
static_assert(sizeof(PWFInterval) == 24);
