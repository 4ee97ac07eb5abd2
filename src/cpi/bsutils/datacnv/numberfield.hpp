#pragma once

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

  // REQUIRES: the text isn't null, the length isn't below 0.
  UnitView view() const { return {text, static_cast<unsigned>(length)}; }
};

}  // namespace oxr
