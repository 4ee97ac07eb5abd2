#pragma once

#include <optional>

#include "dataconv.hpp"

namespace oxr {

// A numeric field of a text message: what the members that read one are given.
struct TextField {
  const unsigned short* text;
  int length;
  ESign sign;
  const unsigned short* minusText;
  const unsigned short* plusText;
  ETrimType trim;
  EJustification justification;
  unsigned short padChar;
  bool padCharIsUnicode;

  // As it came, for messages. REQUIRES: the text isn't null, the length isn't below 0.
  UnitView view() const { return {text, static_cast<unsigned>(length)}; }
};

// A field of a number that may have decimal places.
struct NumberField : TextField {
  bool useVirtualDecimalPoint;
  int precision;
  const unsigned short* decimalPoint;
};

// What is left of a field without padding and sign. It lies in the field.
struct BareNumber {
  UnitView text;  // not empty
  bool negative;
};
// Finds it as TrimData and CheckSign would, without their trace and a copy. Nothing for a field that those would
// refuse, that has a pad in the code page, or in which nothing is left.
std::optional<BareNumber> bareNumber(const TextField& field);

}  // namespace oxr
