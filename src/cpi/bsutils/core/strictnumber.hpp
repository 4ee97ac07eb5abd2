#pragma once

#include <cstddef>
#include <cstdint>

#include "kelunits.hpp"

// Strict checking: whether the text of a number has the form that its field is declared with.
//
// The tests go from the point outwards: whether there may be one, the digit before it, the decimal places after it, and
// last an exponent. The first that fails is told.
namespace oxr::core {

enum class StrictFault : std::uint8_t {
  none,
  hasPoint,        // though the point is a virtual one
  noIntegerDigit,  // no digit stands right before the point
  noPoint,
  endsWithPoint,  // or no digit stands right after it
  wrongPlaces,
  isExponential,
  isNotExponential,
};

struct DeclaredNumber {
  bool hasVirtualPoint;
  std::int32_t precision;  // the precision selector, or the places of the virtual point
  bool mayBeExponential;   // and must be, where the places are to stay untouched
};

// The first fault of a text that has lost its sign and has a "." for its point. `point` is the position of the point,
// or npos where the first "." is to be taken, if there is one.
StrictFault strictFault(UnitView text, std::size_t point, const DeclaredNumber& declared);

}  // namespace oxr::core
