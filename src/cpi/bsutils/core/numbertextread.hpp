#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

#include "kelunits.hpp"

// Numbers read from text, in ASCII and without a field's settings.
//
// Integers are read by arithmetic, and the range is tested before the step that would leave it. Doubles are read in two
// ways that give the same, since both round correctly. Few digits make an integer that a double holds exactly, and one
// division by an exact power of ten then rounds once. Any other text goes through std::from_chars. What ICU or strtod
// might see otherwise is left to them.
namespace oxr::core {

// The value of a digit "0" to "9". It is above 9 for every other unit.
constexpr std::uint32_t digitValue(unsigned short unit) {
  return static_cast<std::uint16_t>(unit - '0');
}

// An integer of digits "0" to "9" after an optional sign. Without digits it is 0.
struct IntegerReading {
  enum class Fault : std::uint8_t { none, noDigit, outOfBounds };  // whichever comes first in the text

  std::int64_t value = 0;
  Fault fault = Fault::none;
};
IntegerReading readInteger(UnitView text);

// Whether there are fewer digits than a limit has, or as many and they sort no higher, unit by unit. Leading zeros
// count as digits.
bool isWithin(UnitView digits, std::string_view limit);

// The sum of the digits' values times their places, modulo 2^64. A unit's value is its distance from "0", so that a
// digit of another script counts with a value that is no digit.
std::uint64_t sumOfDigits(UnitView digits);

// The double of ASCII digits with an optional `point` among them, correctly rounded. There is no result for any other
// text, nor for one that a single division does not serve: more than 18 digits, or beyond 2^53 without their point.
std::optional<double> readShortDecimal(UnitView text, unsigned short point);

// The double of a plain text, correctly rounded: an optional "-", digits with an optional ".", an optional exponent,
// all in ASCII. There is no result for any other text, nor for those that other readers of numbers may see otherwise:
// what over- or underflows, a zero with an exponent, more than 64 units.
std::optional<double> readPlainDouble(UnitView text);

[[gnu::always_inline]] inline IntegerReading readInteger(UnitView text) {
  using Fault = IntegerReading::Fault;
  constexpr std::uint64_t kMax = std::numeric_limits<std::int64_t>::max();
  const unsigned short* unit = text.data();
  const unsigned short* const end = unit + text.size();
  const bool negative = unit != end && *unit == '-';
  unit += negative || (unit != end && *unit == '+');
  std::uint64_t value = 0;
  // Sixteen digits always fit. In groups of four, the multiplications don't wait for each other.
  for (int groups = 0; groups < 4 && end - unit >= 4; ++groups, unit += 4) {
    const std::uint32_t a = digitValue(unit[0]), b = digitValue(unit[1]), c = digitValue(unit[2]),
                        d = digitValue(unit[3]);
    if (a > 9 || b > 9 || c > 9 || d > 9) return {0, Fault::noDigit};
    value = value * 10000 + (a * 1000 + b * 100 + c * 10 + d);
  }
  // From here on each digit is tested before it is taken in. The least value is one further from 0 than the greatest.
  for (; unit != end; ++unit) {
    const std::uint32_t digit = digitValue(*unit);
    if (digit > 9) return {0, Fault::noDigit};
    if (value >= kMax / 10 && (value > kMax / 10 || digit > kMax % 10 + negative)) return {0, Fault::outOfBounds};
    value = value * 10 + digit;
  }
  return {static_cast<std::int64_t>(negative ? 0 - value : value), Fault::none};
}

}  // namespace oxr::core
