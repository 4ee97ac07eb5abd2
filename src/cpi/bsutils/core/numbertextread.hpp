#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

#include "core/packednumber.hpp"
#include "core/textdigits.hpp"
#include "kelunits.hpp"

// Numbers read from text, in ASCII and without a field's settings.
//
// Integers are read sixteen digits at once, long ones digit by digit, and the range is tested before the
// step that would leave it. Doubles are read in two ways that give the same, since both round correctly. Few digits
// make an integer that is multiplied once. Any other text goes through std::from_chars. What ICU or strtod might see
// otherwise is left to them.
//
// The results of doubles come by reference: in an optional, its flag would be stored as a byte and loaded as a word,
// and each such load waits for the store to be done.
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

// Reads ASCII digits with an optional `point` among them as a double, correctly rounded. False for any other text, and
// where a multiplication does not serve: more than 19 digits, and, seldom, what lies in the middle of two doubles.
bool readShortDecimal(UnitView text, unsigned short point, double& value);

// Reads a plain text as a double, correctly rounded: an optional "-", digits with an optional ".", an optional
// exponent, all in ASCII. False for any other text, and for those that other readers of numbers may see otherwise: what
// over- or underflows, a zero with an exponent, more than 64 units.
bool readPlainDouble(UnitView text, double& value);

// The same for most texts: false where there is no digit or more than 19, or anything is wrong.
[[gnu::always_inline]] inline bool readShortInteger(UnitView text, std::int64_t& value) {
  constexpr std::size_t kMostDigits = 19;  // their number fits 64 bits
  constexpr std::size_t kWordDigits = 16;
  constexpr std::uint64_t kMax = std::numeric_limits<std::int64_t>::max();
  const unsigned short* digits = text.data();
  const unsigned short first = text.empty() ? '0' : *digits;
  const bool negative = first == '-';
  const std::size_t signs = negative | (first == '+');
  const std::size_t count = text.size() - signs;
  digits += signs;
  if (count - 1 >= kMostDigits) [[unlikely]]
    return false;
  // The digits come to the lower end, and what comes after them falls off.
  const std::uint64_t word = halfBytesOf(UnitView(digits, count)) >> 4 * (kWordDigits - std::min(count, kWordDigits));
  std::uint64_t magnitude = numberOfHalfBytes(word);
  bool good = nonDigitHalfBytes(word) == 0;
  for (std::size_t i = kWordDigits; i < count; ++i) {
    good &= digitValue(digits[i]) <= 9;
    magnitude = magnitude * 10 + digitValue(digits[i]);
  }
  value = static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude);
  return good && magnitude <= kMax + negative;
}

}  // namespace oxr::core
