#include "records/fields/decimaltext.hpp"

#include <algorithm>

namespace oxr::rec {

namespace {

using Units = std::basic_string<unsigned short>;

constexpr std::size_t kMostDigits = 400;

constexpr bool isDigit(unsigned short unit) {
  return unit >= '0' && unit <= '9';
}

bool areZeros(UnitView digits) {
  return std::all_of(digits.begin(), digits.end(), [](unsigned short unit) { return unit == '0'; });
}

std::size_t leadingZeros(UnitView digits) {
  const auto first = std::find_if(digits.begin(), digits.end(), [](unsigned short unit) { return unit != '0'; });
  return static_cast<std::size_t>(first - digits.begin());
}

// What stands behind the "e" of a number, kept within reach.
std::optional<int> exponentIn(UnitView text) {
  const bool isNegative = !text.empty() && text[0] == '-';
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.remove_prefix(1);
  if (text.empty() || !std::all_of(text.begin(), text.end(), isDigit)) return std::nullopt;
  int value = 0;
  for (const unsigned short unit : text)
    value = std::min(10 * value + (unit - '0'), 100'000);
  return isNegative ? -value : value;
}

}  // namespace

bool readDecimal(UnitView text, DecimalText& number) {
  number.isNegative = !text.empty() && text[0] == '-';
  if (number.isNegative) text.remove_prefix(1);
  unsigned values = 0;  // those of all digits in one
  const auto digitsFrom = [&](std::size_t begin) {
    std::size_t end = begin;
    for (; end < text.size() && isDigit(text[end]); ++end)
      values |= text[end] - unsigned{'0'};
    return text.substr(begin, end - begin);
  };
  number.whole = digitsFrom(0);
  number.places = {};
  std::size_t end = number.whole.size();
  if (end < text.size() && text[end] == '.') {
    number.places = digitsFrom(end + 1);
    end += 1 + number.places.size();
  }
  number.isZero = values == 0;
  return end == text.size() && !(number.whole.empty() && number.places.empty());
}

std::optional<Units> withoutExponent(UnitView text) {
  const std::size_t mark = std::min({text.find('e'), text.find('E'), text.size()});
  DecimalText number;
  if (!readDecimal(text.substr(0, mark), number)) return std::nullopt;
  if (mark == text.size()) return Units(text);
  const std::optional<int> exponent = exponentIn(text.substr(mark + 1));
  if (!exponent) return std::nullopt;
  Units digits(number.whole);
  digits += number.places;
  if (number.isZero) digits.assign(1, '0');
  // Where the point comes to stand among the digits.
  std::ptrdiff_t point = number.isZero ? 1 : static_cast<std::ptrdiff_t>(number.whole.size()) + *exponent;
  if (point < 0 && -point < static_cast<std::ptrdiff_t>(kMostDigits)) {
    digits.insert(0, static_cast<std::size_t>(-point), '0');
    point = 0;
  }
  if (point < 0 || point > static_cast<std::ptrdiff_t>(kMostDigits) || digits.size() > kMostDigits) return std::nullopt;
  const auto whole = static_cast<std::size_t>(point);
  if (whole > digits.size()) digits.append(whole - digits.size(), '0');
  if (whole < digits.size()) digits.insert(whole, 1, '.');
  if (whole == 0) digits.insert(0, 1, '0');
  if (number.isNegative) digits.insert(0, 1, '-');
  return digits;
}

StoredDigits storedDigits(const DecimalText& number, int scale) {
  StoredDigits stored;
  if (scale < 0) {
    const std::size_t cut = std::min(static_cast<std::size_t>(-scale), number.whole.size());
    const std::size_t kept = number.whole.size() - cut;
    stored.losesPlaces = !areZeros(number.whole.substr(kept)) || !areZeros(number.places);
    stored.count = kept - leadingZeros(number.whole.substr(0, kept));
    return stored;
  }
  const auto places = static_cast<std::size_t>(scale);
  stored.losesPlaces = number.places.size() > places && !areZeros(number.places.substr(places));
  const std::size_t zeros = leadingZeros(number.whole);
  stored.count = number.whole.size() - zeros + places;
  if (zeros == number.whole.size()) stored.count -= std::min(places, leadingZeros(number.places));
  if (number.isZero) stored.count = 0;
  return stored;
}

}  // namespace oxr::rec
