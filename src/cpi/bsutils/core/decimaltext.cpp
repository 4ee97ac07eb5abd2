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

// Without its trailing zeros. REQUIRES: a point, which the zeros then cannot pass.
std::size_t withoutTrailingZeros(UnitView text) {
  return text.find_last_not_of(u'0') + 1;
}

// A text without a point, or none at all.
PlacesEdit editWholeNumber(std::uint32_t length, std::int32_t selector) {
  PlacesEdit edit{.keep = length};
  edit.appendPoint = selector == kExplicitPoint || selector > 0;
  edit.appendZeros = static_cast<std::uint32_t>(std::max(selector, 0));
  return edit;
}

// A text with its first point at `point`, to exactly `places` of them. More than there are are zeros; fewer are cut,
// with the point where none is left. Below 0 whole digits go, too.
PlacesEdit editToPlaces(std::uint32_t length, std::uint32_t point, std::int32_t places) {
  PlacesEdit edit{.zeroInFront = point == 0, .keep = length};
  const std::int64_t excess = std::int64_t{length} - point - 1 - places;
  if (excess < 0) edit.appendZeros = static_cast<std::uint32_t>(-excess);
  if (excess <= 0) return edit;  // a point at the end stays: Decimals.AdjustsPrecision
  const std::int64_t keep = places == 0 ? point : std::int64_t{point} + 1 + places;
  edit.becomesZero = keep + edit.zeroInFront <= 0;
  if (!edit.becomesZero) edit.keep = static_cast<std::uint32_t>(keep);
  return edit;
}

}  // namespace

bool isDecimalText(UnitView text, bool mayBeSigned) {
  bool pointSeen = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const unsigned short unit = text[i];
    if (isAsciiDigit(unit) || unit == ',') continue;
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
  PlacesEdit edit{.zeroInFront = point == 0, .keep = static_cast<std::uint32_t>(withoutTrailingZeros(text))};
  if (selector == kPlacesOfValue && text[edit.keep - 1] == kPoint) --edit.keep;
  return edit;
}

}  // namespace oxr::core
