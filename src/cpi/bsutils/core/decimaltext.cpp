// The tests go through a text once. The edits look for its first point and count from there.

#include "core/decimaltext.hpp"

#include <unicode/uchar.h>

#include <algorithm>

namespace oxr::core {

namespace {

constexpr unsigned short kPoint = '.';

constexpr bool isSign(unsigned short unit) {
  return unit == '-' || unit == '+';
}
constexpr bool isExponentLetter(unsigned short unit) {
  return unit == 'e' || unit == 'E';
}

// The length without trailing zeros. REQUIRES: the text has a point, at which the zeros end at the latest.
std::size_t lengthWithoutZeros(UnitView text) {
  return text.find_last_not_of(u'0') + 1;
}

// The edit of a text without a point, which may be empty.
PlacesEdit editWholeNumber(std::uint32_t length, std::int32_t selector) {
  PlacesEdit edit{.keep = length};
  edit.appendPoint = selector == kExplicitPoint || selector > 0;
  edit.appendZeros = static_cast<std::uint32_t>(std::max(selector, 0));
  return edit;
}

// The edit of a text with its first point at `point` to exactly `places` decimal places. Missing ones are zeros. Those
// that are too many are cut, and the point with them where none is left. Below 0 places, whole digits go too.
PlacesEdit editToPlaces(std::uint32_t length, std::uint32_t point, std::int32_t places) {
  PlacesEdit edit{.leadingZero = point == 0, .keep = length};
  const std::int64_t excess = std::int64_t{length} - point - 1 - places;
  if (excess < 0) edit.appendZeros = static_cast<std::uint32_t>(-excess);
  if (excess <= 0) return edit;  // a point at the end stays: Decimals.Edits
  const std::int64_t keep = places == 0 ? point : std::int64_t{point} + 1 + places;
  edit.becomesZero = keep + edit.leadingZero <= 0;
  if (!edit.becomesZero) edit.keep = static_cast<std::uint32_t>(keep);
  return edit;
}

}  // namespace

bool isDecimalText(UnitView text, bool mayBeSigned) {
  bool pointSeen = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const unsigned short unit = text[i];
    if (isAsciiDigit(unit) || unit == ',') continue;
    // A second point, or a sign that does not come first, is what makes a text bad that has only legal units.
    const bool legal = unit == kPoint ? !pointSeen : isSign(unit) && i == 0 && mayBeSigned;
    if (!legal) return false;
    pointSeen |= unit == kPoint;
  }
  return true;
}

bool isNumberText(UnitView text, bool pointRequired) {
  bool pointSeen = false;
  bool exponentSeen = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const unsigned short unit = text[i];
    if (isAsciiDigit(unit) || u_isdigit(unit)) continue;
    if (unit == kPoint) {
      if (pointSeen) return false;
      pointSeen = true;
    } else if (isExponentLetter(unit)) {
      if (exponentSeen) return false;
      exponentSeen = true;
    } else if (!isSign(unit) || i == 0 || !isExponentLetter(text[i - 1])) {
      return false;
    }
  }
  return pointSeen || !pointRequired;
}

PlacesEdit editPlaces(UnitView text, std::int32_t selector) {
  const auto length = static_cast<std::uint32_t>(text.size());
  const bool asValue = selector == kPlacesOfValue || selector == kExplicitPoint;
  if (selector == kPlacesUntouched) return {.keep = length};
  const std::size_t point = text.find(kPoint);
  if (point == UnitView::npos) return editWholeNumber(length, selector);
  if (!asValue) return editToPlaces(length, static_cast<std::uint32_t>(point), selector);
  // The zeros end at the point, which goes too where it need not be shown.
  PlacesEdit edit{.leadingZero = point == 0, .keep = static_cast<std::uint32_t>(lengthWithoutZeros(text))};
  if (selector == kPlacesOfValue && text[edit.keep - 1] == kPoint) --edit.keep;
  return edit;
}

std::optional<PlainDecimal> plainDecimal(UnitView text) {
  if (!isDecimalText(text, true)) return {};
  PlainDecimal decimal{.negative = text.starts_with(u'-')};
  if (!text.empty() && isSign(text[0])) text.remove_prefix(1);
  // As in the general way, zeros go from the end only if a point stops them there.
  decimal.digits = text;
  decimal.digits.remove_prefix(std::min(text.find_first_not_of(u'0'), text.size()));
  if (text.find(kPoint) != UnitView::npos) {
    decimal.digits = decimal.digits.substr(0, lengthWithoutZeros(decimal.digits));
    if (decimal.digits.ends_with(kPoint)) decimal.digits.remove_suffix(1);
  }
  decimal.leadingZero = !text.empty() && (decimal.digits.empty() || decimal.digits[0] == kPoint);
  return decimal;
}

}  // namespace oxr::core
