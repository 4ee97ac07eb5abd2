#pragma once

#include "core/externaldigits.hpp"
#include "dataconv.hpp"

namespace oxr {

// What an external decimal looks like, as all its members are told it.
struct ExternalForm {
  ESign sign;
  EJustification justification;
  unsigned short padChar;
  bool padCharIsUnicode;
  bool customSign;
  const unsigned short* positiveSignTable;
  const unsigned short* negativeSignTable;

  // REQUIRES: a known sign.
  core::SignPlace signPlace() const {
    using enum core::SignPlace;
    constexpr core::SignPlace kPlaces[] = {none, firstDigit, lastDigit, front, behind};
    return kPlaces[sign];
  }
};

// How a digit carries a sign in a code page whose "0" is `zero`,
inline oxr::core::Overpunch overpunchCodeOf(unsigned char zero, bool customSign) {
  using enum oxr::core::Overpunch;
  if (zero == 0xF0) return ebcdic;
  return customSign ? letters : ascii;
}

// Brings the characters that external decimals are written with into the object's cache; false where one of them is not
// a byte in its code page, or the pad is none.
bool settleExternalCodes(DataCnv& cnv, unsigned short padChar);

// How a digit carries a sign in the object's code page.
inline core::Overpunch overpunchCode(DataCnv& cnv, bool customSign) {
  return overpunchCodeOf(cnv.IsCcsidEBCDIC() ? 0xF0 : '0', customSign);
}

}  // namespace oxr
