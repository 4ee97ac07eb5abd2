#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>

#include "kelunits.hpp"

// Texts of decimal numbers: what is one, and how many decimal places it gets.
//
// Nothing here changes a text. An edit is worked out as a plan of its parts from left to right, so that the caller can
// apply it to a text in place.
namespace oxr::core {

constexpr bool isAsciiDigit(unsigned short unit) {
  return static_cast<unsigned short>(unit - '0') <= 9;
}

// The precision selector says how the decimal places of a field are defined. From 0 up, it is their exact number.
inline constexpr int kPlacesOfValue = -1;    // as many as the value has: no trailing zeros, no trailing point
inline constexpr int kExplicitPoint = -2;    // the same, but the point is always there
inline constexpr int kPlacesUntouched = -3;  // as they are

// Whether the text holds nothing but digits, grouping commas, at most one point and, where `mayBeSigned`, a leading
// sign. So it has no exponent. An empty text passes.
bool isDecimalText(UnitView text, bool mayBeSigned);

// The looser test, for a text that has lost its sign: ICU's digits, at most one point, at most one exponent letter
// anywhere, and a sign only right after that letter. So "5e" and "e5" pass. An empty text passes unless a point is
// required.
bool isNumberText(UnitView text, bool pointRequired);

// How a text comes to the places that a selector asks for: the parts of the result from left to right.
struct PlacesEdit {
  bool becomesZero = false;  // the whole text becomes "0"; nothing else counts
  bool leadingZero = false;  // a "0" before a point that comes first
  std::uint32_t keep = 0;    // units of the text, from the first on
  bool appendPoint = false;
  std::uint32_t appendZeros = 0;
};
PlacesEdit editPlaces(UnitView text, std::int32_t selector);

// A decimal in plain form: "-" or no sign, no zeros but those that count, a digit before the point and after it. Commas
// stay. The parts of the text from left to right; an empty text stays empty, and a sign alone stays alone.
struct PlainDecimal {
  bool negative = false;
  bool leadingZero = false;  // a "0" before a point that comes first, or the only digit
  UnitView digits = {};      // the rest, in the text that was given

  std::uint32_t length() const { return negative + leadingZero + static_cast<std::uint32_t>(digits.size()); }
  void write(unsigned short* out) const {
    if (negative) *out++ = '-';
    if (leadingZero) *out++ = '0';
    std::copy(digits.begin(), digits.end(), out);
  }
};
// There is no result for a text that isDecimalText() refuses.
std::optional<PlainDecimal> plainDecimal(UnitView text);

}  // namespace oxr::core
