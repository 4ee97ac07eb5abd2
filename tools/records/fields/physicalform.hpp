#pragma once

#include "pwftypes.hpp"

namespace oxr::rec {

// How fields are stored, as far as the copybook does not say.
struct PhysicalForm {
  int ccsid = 37;
  EEndian integerEndian = eEndianBig;  // of binary numbers, and of text in CCSID 1200
  // Signs that share a byte with a digit, where the code page is not EBCDIC: the letters that an EBCDIC sign turns into
  // ("{", "A" to "I", "}", "J" to "R"), or "p" to "y" for the digits of a negative number.
  bool hasLetterSigns = false;
};

}  // namespace oxr::rec
