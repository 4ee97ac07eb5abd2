#pragma once

#include <cstdint>

#include "kelunits.hpp"

// Texts of decimal numbers: what is one, and how many decimal places it gets.
namespace oxr::core {

constexpr bool isAsciiDigit(unsigned short unit) {
  return static_cast<unsigned short>(unit - '0') <= 9;
}

// The precision selector: how the decimal places of a field are defined. 0 and up, exactly so many.
inline constexpr int kPlacesOfValue = -1;    // as many as the value has: no trailing zeros, no trailing point
inline constexpr int kExplicitPoint = -2;    // the same, but the point is always there
inline constexpr int kPlacesUntouched = -3;  // as they are

// Whether nothing but digits, grouping commas, one point and, where `mayBeSigned`, a sign in front stands in the text.
// No exponent. An empty text is one.
bool isDecimalText(UnitView text, bool mayBeSigned);

// The looser test, for a text that has lost its sign: ICU's digits, one point, one exponent letter anywhere, a sign
// right behind that. So "5e" and "e5" pass. An empty text passes unless a point is required.
bool isNumberText(UnitView text, bool pointRequired);

// How a text comes to the places that a selector asks for: the parts of the result from left to right.
struct PlacesEdit {
  bool becomesZero = false;  // the whole text becomes "0"; nothing else counts
  bool zeroInFront = false;  // of a point that comes first
  std::uint32_t keep = 0;    // units of the text, from the first on
  bool appendPoint = false;
  std::uint32_t appendZeros = 0;
};
PlacesEdit editPlaces(UnitView text, std::int32_t selector);

}  // namespace oxr::core
