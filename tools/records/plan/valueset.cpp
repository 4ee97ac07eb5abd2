#include "records/plan/valueset.hpp"

#include <algorithm>
#include <charconv>
#include <optional>
#include <stdexcept>

#include "kelwstringconvertor.hpp"

// The text is a list, split at commas; a member is a value, or two of them with a "-" between. Quotes around a value
// take away the meaning of what is in it.
//
// Numbers are compared as text: without leading zeros the longer whole part is the greater one, and places after the
// point compare from the left as if zeros went on for ever.

namespace oxr::rec {

namespace {

constexpr bool isDigit(unsigned short unit) {
  return unit >= '0' && unit <= '9';
}

// A decimal without what does not count: leading zeros, trailing zeros of its places, the sign of a zero.
struct Number {
  bool isNegative = false;
  UnitView whole;
  UnitView places;
};

std::optional<Number> numberIn(UnitView text) {
  Number number;
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) {
    number.isNegative = text[0] == '-';
    text.remove_prefix(1);
  }
  const std::size_t point = std::min(text.find('.'), text.size());
  number.whole = text.substr(0, point);
  if (point < text.size()) number.places = text.substr(point + 1);
  if (number.whole.empty() && number.places.empty()) return std::nullopt;
  for (const UnitView digits : {number.whole, number.places})
    if (!std::all_of(digits.begin(), digits.end(), isDigit)) return std::nullopt;
  while (!number.whole.empty() && number.whole.front() == '0')
    number.whole.remove_prefix(1);
  while (!number.places.empty() && number.places.back() == '0')
    number.places.remove_suffix(1);
  if (number.whole.empty() && number.places.empty()) number.isNegative = false;
  return number;
}

// Below, at or above zero as `a` is less than, equal to or greater than `b`.
int compareNumbers(const Number& a, const Number& b) {
  if (a.isNegative != b.isNegative) return a.isNegative ? -1 : 1;
  int result = 0;
  if (a.whole.size() != b.whole.size())
    result = a.whole.size() < b.whole.size() ? -1 : 1;
  else if ((result = a.whole.compare(b.whole)) == 0)
    result = a.places.compare(b.places);
  return a.isNegative ? -result : result;
}

UnitView withoutTrailingBlanks(UnitView text) {
  while (!text.empty() && text.back() == ' ')
    text.remove_suffix(1);
  return text;
}

// Takes a value off the text: a quoted one, or all up to a "," or a "-" that does not begin it.
std::string takeValue(std::string_view& text) {
  std::string value;
  if (!text.empty() && (text[0] == '\'' || text[0] == '"')) {
    const char quote = text[0];
    for (text.remove_prefix(1);; text.remove_prefix(1)) {
      if (text.empty()) throw std::invalid_argument("a quoted value has no end");
      if (text[0] == quote) {
        text.remove_prefix(1);
        if (text.empty() || text[0] != quote) return value;
      }
      value += text[0];
    }
  }
  std::size_t end = text.empty() ? 0 : 1;
  while (end < text.size() && text[end] != ',' && text[end] != '-')
    ++end;
  if (end == 0 || text[0] == ',') throw std::invalid_argument("a value is missing");
  value = text.substr(0, end);
  text.remove_prefix(end);
  return value;
}

}  // namespace

ValueSet::ValueSet(std::string_view text) {
  do {
    if (!ranges_.empty()) text.remove_prefix(1);
    const std::string first = takeValue(text);
    std::string last = first;
    if (text.starts_with('-')) {
      text.remove_prefix(1);
      last = takeValue(text);
    }
    ranges_.push_back({fromUtf8(first), fromUtf8(last)});
    if (!text.empty() && text[0] != ',') throw std::invalid_argument("a \",\" is missing between two values");
  } while (!text.empty());
}

std::string ValueSet::fault(bool areNumbers) const {
  for (const auto& [first, last] : ranges_) {
    if (areNumbers)
      for (const KelWstring* value : {&first, &last})
        if (!numberIn(value->view())) return toUtf8(value->view()) + " is no number, as the field's values are";
    const bool isReversed = areNumbers ? compareNumbers(*numberIn(first.view()), *numberIn(last.view())) > 0
                                       : withoutTrailingBlanks(first.view()) > withoutTrailingBlanks(last.view());
    if (isReversed) return "the range " + toUtf8(first.view()) + '-' + toUtf8(last.view()) + " ends before it begins";
  }
  return {};
}

bool ValueSet::holds(const PWFData& value) const {
  if (value.isNull() || value.isNothing()) return false;
  if (value.getDataLogicalType() == STRING) return holdsText(withoutTrailingBlanks(value.getPWFStringValue().view()));
  if (value.getDataLogicalType() == DECIMAL)
    return holdsNumber({value.getDecimalValue(), static_cast<std::size_t>(value.getDecimalLength())});
  if (value.getDataLogicalType() != INTEGER) return false;
  char digits[20];
  const char* const end = std::to_chars(digits, digits + sizeof digits, value.getInt64Value()).ptr;
  const std::basic_string<unsigned short> units(static_cast<const char*>(digits), end);
  return holdsNumber(units);
}

bool ValueSet::holdsText(UnitView text) const {
  return std::any_of(ranges_.begin(), ranges_.end(), [&](const Range& range) {
    return text >= withoutTrailingBlanks(range.first.view()) && text <= withoutTrailingBlanks(range.last.view());
  });
}

bool ValueSet::holdsNumber(UnitView text) const {
  const std::optional<Number> number = numberIn(text);
  return number && std::any_of(ranges_.begin(), ranges_.end(), [&](const Range& range) {
           const std::optional<Number> first = numberIn(range.first.view());
           const std::optional<Number> last = numberIn(range.last.view());
           return first && last && compareNumbers(*first, *number) <= 0 && compareNumbers(*number, *last) <= 0;
         });
}

}  // namespace oxr::rec
