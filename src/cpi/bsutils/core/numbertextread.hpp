#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

#include "kelunits.hpp"

// Numbers read from text.
namespace oxr::core {

// An integer of digits "0" to "9" behind an optional sign. Without digits it is 0.
struct IntegerReading {
  enum class Fault : std::uint8_t { none, noDigit, outOfBounds };  // whichever comes first in the text

  std::int64_t value = 0;
  Fault fault = Fault::none;
};
IntegerReading readInteger(UnitView text);

// Whether digits number fewer than those of a limit, or as many and sort no higher, unit by unit. Zeros in front count.
bool isWithin(UnitView digits, std::string_view limit);

// The sum of the digits' values times their places, modulo 2^64. A unit's value is what it is above "0", which for a
// digit of another script is no digit at all.
std::uint64_t sumOfDigits(UnitView digits);

// The double of ASCII digits with an optional `point` among them, correctly rounded. Nothing for any other text, and
// for those that need more than one division: of more than 18 digits, or beyond 2^53 without their point.
std::optional<double> readShortDecimal(UnitView text, unsigned short point);

// The double of a plain text, correctly rounded: an optional "-", digits with an optional ".", an optional exponent,
// all in ASCII. Nothing for any other text, and for those that other readers of numbers may see otherwise: what over-
// or underflows, a zero with an exponent, more than 64 units.
std::optional<double> readPlainDouble(UnitView text);

// What a unit is above "0"; above 9 for all but a digit.
constexpr std::uint32_t aboveZero(unsigned short unit) {
  return static_cast<std::uint16_t>(unit - '0');
}

[[gnu::always_inline]] inline IntegerReading readInteger(UnitView text) {
  using Fault = IntegerReading::Fault;
  constexpr std::uint64_t kMax = std::numeric_limits<std::int64_t>::max();
  const unsigned short* unit = text.data();
  const unsigned short* const end = unit + text.size();
  const bool negative = unit != end && *unit == '-';
  unit += negative || (unit != end && *unit == '+');
  std::uint64_t value = 0;
  // Sixteen digits always fit. By fours, the multiplications don't wait for each other.
  for (int fours = 0; fours < 4 && end - unit >= 4; ++fours, unit += 4) {
    const std::uint32_t a = aboveZero(unit[0]), b = aboveZero(unit[1]), c = aboveZero(unit[2]), d = aboveZero(unit[3]);
    if (a > 9 || b > 9 || c > 9 || d > 9) return {0, Fault::noDigit};
    value = value * 10000 + (a * 1000 + b * 100 + c * 10 + d);
  }
  for (; unit != end; ++unit) {
    const std::uint32_t digit = aboveZero(*unit);
    if (digit > 9) return {0, Fault::noDigit};
    if (value >= kMax / 10 && (value > kMax / 10 || digit > kMax % 10 + negative)) return {0, Fault::outOfBounds};
    value = value * 10 + digit;
  }
  return {static_cast<std::int64_t>(negative ? 0 - value : value), Fault::none};
}

}  // namespace oxr::core
