#pragma once

#include <cstdint>
#include <optional>

#include "kelunits.hpp"

// Signs written as texts of the message's own, and digits that carry a sign.
namespace oxr::core {

// A sign text; nothing where the message has none. An empty one matches everywhere, none matches nowhere.
using SignText = std::optional<UnitView>;
inline SignText signText(const unsigned short* text) {
  return text == nullptr ? SignText() : UnitView(text);
}

// A sign found at an end of a text, and the units to take off there.
struct FoundSign {
  bool negative = false;
  std::uint32_t units = 0;
};
// Not mirror images (Signs.CheckSignTakesTheSignOff): in front the first match ends the search; behind, a plus text in
// front of the minus text comes off as well.
FoundSign leadingSign(UnitView text, SignText minus, SignText plus);
FoundSign trailingSign(UnitView text, SignText minus, SignText plus);

// A sign text behind the exponent letter.
struct ExponentSign {
  bool negative;
  std::uint32_t position;
  std::uint32_t units;  // not 0
};
// Behind the first "e" or "E" only. An empty minus text ends the search without a result.
std::optional<ExponentSign> exponentSign(UnitView text, SignText minus, SignText plus);

// A digit with a sign, by tables: the index of a character modulo 10 is its digit.
struct SignedDigit {
  bool negative;
  unsigned digit;
};
// The table of the positive digits is asked first.
std::optional<SignedDigit> signedDigit(unsigned short unit, UnitView positive, UnitView negative);

}  // namespace oxr::core
