#include "oxrrec/profile/extremes.hpp"

#include <algorithm>

#include "kelwstringconvertor.hpp"
#include "oxrrec/values.hpp"

namespace oxr::rec {

namespace {

// A decimal without its sign: the longer whole part is the larger one, and of the same length the digits decide. A
// fraction that goes on is larger than one that ends.
bool isSmaller(UnitView a, UnitView b) {
  const auto stripped = [](UnitView digits) {
    while (digits.size() > 1 && digits[0] == '0' && digits[1] != '.')
      digits.remove_prefix(1);
    return digits;
  };
  const UnitView x = stripped(a), y = stripped(b);
  const std::size_t wholeX = std::min(x.find('.'), x.size()), wholeY = std::min(y.find('.'), y.size());
  return wholeX != wholeY ? wholeX < wholeY : x < y;
}

UnitView decimalOf(const PWFData& value) {
  return {value.getDecimalValue(), static_cast<std::size_t>(value.getDecimalLength())};
}

bool isSmallerDecimal(UnitView a, UnitView b) {
  const bool isNegative = !a.empty() && a[0] == '-';
  if (isNegative != (!b.empty() && b[0] == '-')) return isNegative;
  return isNegative ? isSmaller(b.substr(1), a.substr(1)) : isSmaller(a, b);
}

// Values of one field may differ in type: a large integer is a decimal.
bool isSmaller(const PWFData& a, const PWFData& b) {
  if (a.getDataLogicalType() != b.getDataLogicalType())
    return isSmallerDecimal(fromUtf8(valueText(a)).view(), fromUtf8(valueText(b)).view());
  switch (a.getDataLogicalType()) {
    case INTEGER:
      return a.getInt64Value() < b.getInt64Value();
    case FLOAT:
      return a.getDoubleValue() < b.getDoubleValue();
    case DECIMAL:
      return isSmallerDecimal(decimalOf(a), decimalOf(b));
    default:
      return a.getPWFStringValue().view() < b.getPWFStringValue().view();
  }
}

std::string shown(const PWFData& value) {
  return value.isNull() ? "" : valueText(value);
}

}  // namespace

void Extremes::add(const PWFData& value) {
  if (smallest_.isNull() || isSmaller(value, smallest_)) smallest_ = value;
  if (largest_.isNull() || isSmaller(largest_, value)) largest_ = value;
}

std::string Extremes::smallest() const {
  return shown(smallest_);
}

std::string Extremes::largest() const {
  return shown(largest_);
}

}  // namespace oxr::rec
