#pragma once

#include <cstdint>
#include <optional>

#include "kelunits.hpp"

// Signs in the texts of numbers: written as texts of the message's own before or after the digits, or folded into a
// digit by tables. What is found is reported by position and length; cutting and replacing are the caller's.
namespace oxr::core {

// A sign text, or none where the message has none. An empty one matches everywhere, none matches nowhere.
using SignText = std::optional<UnitView>;
inline SignText signText(const unsigned short* text) {
  return text == nullptr ? SignText() : UnitView(text);
}

// A sign found at an end of a text, and the units to take off there.
struct FoundSign {
  bool negative = false;
  std::uint32_t units = 0;
};
// Looks for a sign at the start of a text, and at its end. The two are not mirror images: at the start the first match
// ends the search; at the end a plus text that precedes the minus text comes off as well. That is meant:
// Signs.CheckSignTakesTheSignOff.
FoundSign leadingSign(UnitView text, SignText minus, SignText plus);
FoundSign trailingSign(UnitView text, SignText minus, SignText plus);

// A sign text that follows the exponent letter.
struct ExponentSign {
  bool negative;
  std::uint32_t position;  // of its first unit
  std::uint32_t units;     // not 0
};
// Looks after the first "e" or "E" only. An empty minus text ends the search without a result.
std::optional<ExponentSign> exponentSign(UnitView text, SignText minus, SignText plus);

// A digit with a sign, by tables: the index of a character modulo 10 is its digit, so that a table may give each digit
// more than one character.
struct SignedDigit {
  bool negative;
  unsigned digit;
};
// Nothing for a unit that neither table has. The table of the positive digits is asked first.
std::optional<SignedDigit> signedDigit(unsigned short unit, UnitView positive, UnitView negative);

}  // namespace oxr::core
