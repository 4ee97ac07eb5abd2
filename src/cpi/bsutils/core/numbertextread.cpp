#include "core/numbertextread.hpp"

#include <algorithm>
#include <charconv>

#include "core/numbertextwrite.hpp"

namespace oxr::core {

namespace {

constexpr std::size_t kShortDigits = 18;  // their number fits 64 bits, and their places the exact powers of ten

constexpr bool isExponentLetter(unsigned short unit) {
  return (unit | 0x20) == 'e';
}
// The units from "+" to "9" are the signs, the point and the digits, and "," and "/", at which std::from_chars stops.
constexpr bool isNumberUnit(unsigned short unit) {
  return static_cast<std::uint16_t>(unit - '+') <= '9' - '+' || isExponentLetter(unit);
}

// Reads a plain text through std::from_chars, which takes more than is wanted here: words such as "inf", and texts of
// which it reads only the beginning. Both are turned away.
std::optional<double> readThroughChars(UnitView text) {
  constexpr std::size_t kMostUnits = 64;
  if (text.empty() || text.size() > kMostUnits) return {};
  char chars[kMostUnits];
  char* end = chars;
  bool hasExponent = false;
  for (const unsigned short unit : text) {
    if (!isNumberUnit(unit)) return {};
    hasExponent |= isExponentLetter(unit);
    *end++ = static_cast<char>(unit);
  }
  double value;
  const auto [endOfNumber, error] = std::from_chars(chars, end, value);
  if (error != std::errc() || endOfNumber != end) return {};
  // ICU makes infinity of "0E999999999999": NumbersFromText.ReadDecimalsAndDoubles.
  if (value == 0 && hasExponent) return {};
  return value;
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

std::optional<double> readShortDecimal(UnitView text, unsigned short point) {
  constexpr std::uint64_t kExact = std::uint64_t{1} << 53;  // up to this bound each integer is a double
  if (text.size() > kShortDigits + 1) return {};
  std::uint64_t digits = 0;
  std::size_t pointAt = text.size();
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::uint32_t digit = digitValue(text[i]);
    if (digit <= 9) {
      digits = digits * 10 + digit;
    } else {
      if (text[i] != point || pointAt != text.size()) return {};
      pointAt = i;
    }
  }
  const bool hasPoint = pointAt != text.size();
  if (text.size() == hasPoint || digits > kExact) return {};
  // Dividend and divisor are exact, so that the one division rounds as it should.
  const std::size_t places = hasPoint ? text.size() - pointAt - 1 : 0;
  return static_cast<double>(digits) / kExactPowers[places];
}

std::optional<double> readPlainDouble(UnitView text) {
  const bool negative = text.starts_with(u'-');
  if (const auto value = readShortDecimal(text.substr(negative), '.')) return negative ? -*value : *value;
  return readThroughChars(text);
}

}  // namespace oxr::core
