#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "kelunits.hpp"

// The text of a number, looked at digit by digit: whether it fits a field without losing any of them.

namespace oxr::rec {

// A number as it stands in a text: an optional "-", digits, optional "." and digits.
struct DecimalText {
  bool isNegative = false;
  UnitView whole;
  UnitView places;
  bool isZero = false;
};

// Finds the parts of a text, without a copy of them on the way. False if it is no such number.
bool readDecimal(UnitView text, DecimalText& number);

// The same number without its exponent: "-1.5e+3" is "-1500". Nothing if the text is no number, or one of more than
// 400 digits.
std::optional<std::basic_string<unsigned short>> withoutExponent(UnitView text);

// The whole number that a field of this scale stores for a number: its value times 10 to the power of `scale`.
struct StoredDigits {
  std::size_t count = 0;     // digits without leading zeros; 0 for zero
  bool losesPlaces = false;  // digits that are not zero have no place
};
StoredDigits storedDigits(const DecimalText& number, int scale);

// Calls `take` with each stored digit, most significant first, leading zeros among them.
template <class Take>
void forEachStoredDigit(const DecimalText& number, int scale, Take take) {
  const auto kept = [&](UnitView digits, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
      take(static_cast<unsigned>(i < digits.size() ? digits[i] - '0' : 0));
  };
  if (scale >= 0) {
    kept(number.whole, number.whole.size());
    kept(number.places, static_cast<std::size_t>(scale));
  } else if (const auto cut = static_cast<std::size_t>(-scale); cut < number.whole.size()) {
    kept(number.whole, number.whole.size() - cut);
  }
}

}  // namespace oxr::rec
