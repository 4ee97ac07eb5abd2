#pragma once

#include "core/externaldigits.hpp"
#include "datacnv/signform.hpp"
#include "dataconv.hpp"

namespace oxr {

// What an external decimal looks like, as all its members are told it. Functions that are not inline take it by value:
// a reference would keep the one of their caller in memory, on the fast way too.
struct ExternalForm {
  ESign sign;
  EJustification justification;
  unsigned short padChar;
  bool padCharIsUnicode;
  bool customSign;  // letters for included signs, outside of EBCDIC
  const unsigned short* positiveSignTable;
  const unsigned short* negativeSignTable;

  // REQUIRES: a known sign.
  core::SignPlace signPlace() const {
    using enum core::SignPlace;
    static_assert(static_cast<int>(none) == eSignNone && static_cast<int>(firstByte) == eSignLeadingIncluded &&
                  static_cast<int>(lastByte) == eSignTrailingIncluded &&
                  static_cast<int>(leading) == eSignLeadingSeparate &&
                  static_cast<int>(trailing) == eSignTrailingSeparate);
    return static_cast<core::SignPlace>(sign);
  }

  // How a digit carries a sign in a code page whose digit 0 is the byte `zero`.
  core::Overpunch overpunch(unsigned char zero) const {
    using enum core::Overpunch;
    if (zero == 0xF0) return ebcdic;
    return customSign ? letters : ascii;
  }
  // The same in the code page of a converter, which is asked for it once.
  core::Overpunch overpunch(DataCnv& cnv) const { return overpunch(cnv.IsCcsidEBCDIC() ? 0xF0 : '0'); }
};

}  // namespace oxr
