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

// How a digit carries a sign in the converter's code page.
inline core::Overpunch overpunchCode(DataCnv& converter, bool customSign) {
  if (converter.IsCcsidEBCDIC()) return core::Overpunch::ebcdic;
  return customSign ? core::Overpunch::letters : core::Overpunch::ascii;
}

}  // namespace oxr
