#include "core/numbertextread.hpp"

#include <algorithm>
#include <bit>
#include <charconv>

#include "core/numbertextwrite.hpp"
#include "core/roundeddecimal.hpp"

namespace oxr::core {

namespace {

constexpr bool isExponentLetter(unsigned short unit) {
  return (unit | 0x20) == 'e';
}
// The units from "+" to "9" are the signs, the point and the digits, and "," and "/", at which std::from_chars stops.
constexpr bool isNumberUnit(unsigned short unit) {
  return static_cast<std::uint16_t>(unit - '+') <= '9' - '+' || isExponentLetter(unit);
}

// Reads a plain text through std::from_chars, which takes more than is wanted here: words such as "inf", and texts of
// which it reads only the beginning. Both are turned away.
bool readThroughChars(UnitView text, double& value) {
  constexpr std::size_t kMostUnits = 64;
  if (text.empty() || text.size() > kMostUnits) return false;
  char chars[kMostUnits];
  char* end = chars;
  bool hasExponent = false;
  for (const unsigned short unit : text) {
    if (!isNumberUnit(unit)) return false;
    hasExponent |= isExponentLetter(unit);
    *end++ = static_cast<char>(unit);
  }
  const auto [endOfNumber, error] = std::from_chars(chars, end, value);
  if (error != std::errc() || endOfNumber != end) return false;
  // ICU makes infinity of "0E999999999999": NumbersFromText.ReadDecimalsAndDoubles.
  if (value == 0 && hasExponent) return false;
  return true;
}

}  // namespace

IntegerReading readInteger(UnitView text) {
  using Fault = IntegerReading::Fault;
  constexpr std::uint64_t kMax = std::numeric_limits<std::int64_t>::max();
  const unsigned short* unit = text.data();
  const unsigned short* const end = unit + text.size();
  const bool negative = unit != end && *unit == '-';
  unit += negative || (unit != end && *unit == '+');
  std::uint64_t value = 0;
  // Each digit is tested before it is taken in. The least value is one further from 0 than the greatest.
  for (; unit != end; ++unit) {
    const std::uint32_t digit = digitValue(*unit);
    if (digit > 9) return {0, Fault::noDigit};
    if (value >= kMax / 10 && (value > kMax / 10 || digit > kMax % 10 + negative)) return {0, Fault::outOfBounds};
    value = value * 10 + digit;
  }
  return {static_cast<std::int64_t>(negative ? 0 - value : value), Fault::none};
}

bool isWithin(UnitView digits, std::string_view limit) {
  if (digits.size() != limit.size()) return digits.size() < limit.size();
  return !std::lexicographical_compare(limit.begin(), limit.end(), digits.begin(), digits.end());
}

std::uint64_t sumOfDigits(UnitView digits) {
  std::uint64_t sum = 0;
  for (const unsigned short digit : digits)
    sum = sum * 10 + digit - '0';
  return sum;
}

// The digits before the point and those after it are read as two words: shifts of more than a register take longer than
// all the rest.
bool readShortDecimal(UnitView text, unsigned short point, double& value) {
  constexpr std::uint32_t kMostDigits = 19;  // their number fits 64 bits
  constexpr std::uint32_t kWordDigits = 16;
  constexpr std::uint64_t kExact = std::uint64_t{1} << 53;  // up to this bound each integer is a double
  const auto length = static_cast<std::uint32_t>(text.size());
  if (text.empty() || text.size() > kMostDigits + 1) return false;
  const unsigned short* units = text.data();
  // In two steps, since no shift takes away all of a word; and what has no point can't be foreseen either.
  const auto firstDigits = [](std::uint64_t word, std::uint32_t count) {
    return word >> 2 * (kWordDigits - count) >> 2 * (kWordDigits - count);
  };
  const auto lastDigits = [](std::uint64_t word, std::uint32_t count) {
    return word & ~(~std::uint64_t{0} << 2 * count << 2 * count);
  };
  const std::uint64_t front = halfBytesOf(text);
  const std::uint64_t others = nonDigitHalfBytes(front);
  const std::uint32_t whole = std::min(static_cast<std::uint32_t>(std::countl_zero(others)) / 4, length);
  const bool hasPoint = whole < length;
  const std::uint32_t places = length - whole - hasPoint;
  if ((hasPoint & (units[whole - !hasPoint] != point)) | (places > kWordDigits) | (whole + places - 1 >= kMostDigits))
    return false;
  if (length <= kWordDigits) {
    // All in one word, and as a rule exact: then dividend and divisor are, and the division rounds once.
    const std::uint64_t digits =
        firstDigits(front, whole) << 4 * places | firstDigits(front << 4 * (whole & 15) << 4, places);
    const std::uint64_t number = numberOfHalfBytes(digits);
    if (nonDigitHalfBytes(digits) != 0) return false;
    if (number > kExact) return RoundedDecimal::round(number, places, value);
    value = static_cast<double>(static_cast<std::int64_t>(number)) / kExactPowers[places];
    return true;
  }
  // All that follows the point lies in the last word. Where nothing does, no unit may be read from there on: the page
  // can end with the point.
  const std::uint64_t fraction = lastDigits(halfBytesOf(text.substr(length - kWordDigits)), places);
  const std::uint64_t number =
      numberOfHalfBytes(firstDigits(front, whole)) * kPowersOfTen[places] + numberOfHalfBytes(fraction);
  return nonDigitHalfBytes(fraction) == 0 && RoundedDecimal::round(number, places, value);
}

bool readPlainDouble(UnitView text, double& value) {
  const bool negative = text.starts_with(u'-');
  if (!readShortDecimal(text.substr(negative), '.', value)) return readThroughChars(text, value);
  value = std::bit_cast<double>(std::bit_cast<std::uint64_t>(value) ^ std::uint64_t{negative} << 63);
  return true;
}

}  // namespace oxr::core
