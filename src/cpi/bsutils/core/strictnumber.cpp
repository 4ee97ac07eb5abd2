// The declared places are a small table by precision selector and by what stands after the point.

#include "core/strictnumber.hpp"

#include <unicode/uchar.h>

#include "core/decimaltext.hpp"

namespace oxr::core {

namespace {

// ASCII is tested first, since ICU's test is a look-up.
bool isDigit(unsigned short unit) {
  return isAsciiDigit(unit) || u_isdigit(unit);
}

bool hasExponentLetter(UnitView text) {
  constexpr unsigned short kLetters[] = {'e', 'E'};
  return text.find_first_of(UnitView(kLetters, 2)) != UnitView::npos;
}

enum PointForm { kPointAndDigit, kPointAlone, kNoPoint };

// What is amiss with a text, by the precision selectors that name no number of places; `PointForm` is the column.
struct PlacesRule {
  std::int32_t precision;
  StrictFault faults[3];
};
constexpr PlacesRule kPlacesRules[] = {
    {kExplicitPoint, {StrictFault::none, StrictFault::none, StrictFault::noPoint}},
    {kPlacesOfValue, {StrictFault::none, StrictFault::endsWithPoint, StrictFault::none}},
    {kPlacesUntouched, {StrictFault::none, StrictFault::endsWithPoint, StrictFault::none}},
    {0, {StrictFault::wrongPlaces, StrictFault::endsWithPoint, StrictFault::none}},
};

// REQUIRES: the point, if there is one, lies inside the text.
StrictFault placesFault(UnitView text, std::size_t point, std::int32_t precision) {
  const bool hasPoint = point != UnitView::npos;
  const UnitView places = hasPoint ? text.substr(point + 1) : UnitView();
  const PointForm form = !hasPoint ? kNoPoint : !places.empty() && isDigit(places[0]) ? kPointAndDigit : kPointAlone;
  for (const PlacesRule& rule : kPlacesRules)
    if (rule.precision == precision) return rule.faults[form];
  if (hasPoint && static_cast<std::int64_t>(places.size()) == precision) return StrictFault::none;
  // A whole number with an exponent is refused for its exponent: NumbersFromText.ReadDecimalsAndDoubles.
  return !hasPoint && hasExponentLetter(text) ? StrictFault::none : StrictFault::wrongPlaces;
}

// An exponent must be there exactly where the field is declared exponential.
StrictFault exponentFault(UnitView text, const DeclaredNumber& declared) {
  const bool isWanted = declared.mayBeExponential && declared.precision == kPlacesUntouched;
  if (hasExponentLetter(text) == isWanted) return StrictFault::none;
  return isWanted ? StrictFault::isNotExponential : StrictFault::isExponential;
}

}  // namespace

StrictFault strictFault(UnitView text, std::size_t point, const DeclaredNumber& declared) {
  if (point == UnitView::npos) point = text.find(u'.');
  const bool hasPoint = point != UnitView::npos;
  if (declared.hasVirtualPoint) return hasPoint ? StrictFault::hasPoint : exponentFault(text, declared);
  if (hasPoint && (point == 0 || !isDigit(text[point - 1]))) return StrictFault::noIntegerDigit;
  const StrictFault places = placesFault(text, point, declared.precision);
  return places != StrictFault::none ? places : exponentFault(text, declared);
}

}  // namespace oxr::core
