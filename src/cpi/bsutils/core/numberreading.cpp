#include "core/numberreading.hpp"

#include <algorithm>
#include <charconv>
#include <limits>

namespace oxr::core {

namespace {

// What a unit is above "0"; above 9 for all but a digit.
constexpr std::uint32_t above0(unsigned short unit) {
  return static_cast<std::uint16_t>(unit - '0');
}

// What signed text comes to beyond its digits.
constexpr bool isSign(unsigned short unit) {
  return unit == '-' || unit == '+';
}

constexpr bool isExponentLetter(unsigned short unit) {
  return (unit | 0x20) == 'e';
}
// "+" to "9", which are the signs, the point, the digits, and "," and "/": those end a number for std::from_chars, too.
constexpr bool isNumberUnit(unsigned short unit) {
  return static_cast<std::uint16_t>(unit - '+') <= '9' - '+' || isExponentLetter(unit);
}

}  // namespace

IntegerReading readInteger(UnitView text) {
  constexpr std::uint64_t kMax = std::numeric_limits<std::int64_t>::max();
  const bool negative = text.starts_with(u'-');
  if (!text.empty() && isSign(text[0])) text.remove_prefix(1);
  std::uint64_t value = 0;
  std::size_t i = 0;
  // Sixteen digits always fit. By fours, the multiplications don't wait for each other.
  for (const std::size_t fours = std::min<std::size_t>(text.size(), 16) & ~std::size_t{3}; i < fours; i += 4) {
    const std::uint32_t a = above0(text[i]), b = above0(text[i + 1]), c = above0(text[i + 2]), d = above0(text[i + 3]);
    if (a > 9 || b > 9 || c > 9 || d > 9) return {.fault = IntegerReading::Fault::noDigit};
    value = value * 10000 + (a * 1000 + b * 100 + c * 10 + d);
  }
  for (; i < text.size(); ++i) {
    const std::uint32_t digit = above0(text[i]);
    if (digit > 9) return {.fault = IntegerReading::Fault::noDigit};
    if (value > kMax / 10 || (value == kMax / 10 && digit > kMax % 10 + negative))
      return {.fault = IntegerReading::Fault::outOfBounds};
    value = value * 10 + digit;
  }
  return {.value = static_cast<std::int64_t>(negative ? 0 - value : value)};
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

std::optional<double> readPlainDouble(UnitView text) {
  constexpr std::size_t kMostUnits = 64;
  if (text.size() > kMostUnits) return {};
  // std::from_chars knows words, too.
  if (!std::all_of(text.begin(), text.end(), isNumberUnit)) return {};
  char chars[kMostUnits];
  std::transform(text.begin(), text.end(), chars, [](unsigned short unit) { return static_cast<char>(unit); });
  double value;
  const auto [end, error] = std::from_chars(chars, chars + text.size(), value);
  if (error != std::errc() || end != chars + text.size()) return {};
  // ICU makes infinity of "0E999999999999".
  if (value == 0 && std::any_of(text.begin(), text.end(), isExponentLetter)) return {};
  return value;
}

}  // namespace oxr::core
