#pragma once

#include <cstddef>
#include <cstdint>

#include "kelunits.hpp"

// Whether the text of a number has the form that its field is declared with.
namespace oxr::core {

enum class StrictFault : std::uint8_t {
  none,
  hasPoint,        // beside a virtual one
  noIntegerDigit,  // in front of the point
  noPoint,
  endsWithPoint,
  wrongPlaces,
  isExponential,
  isNotExponential,
};

struct DeclaredNumber {
  bool hasVirtualPoint;
  std::int32_t precision;  // the precision selector, or the places of the virtual point
  bool mayBeExponential;   // and then must be, where the places are to stay untouched
};

// The first fault of a text that has lost its sign and has a "." for its point. `point`: its position, or npos for the
// first ".", if any.
StrictFault strictFault(UnitView text, std::size_t point, const DeclaredNumber& declared);

}  // namespace oxr::core
