#pragma once

#include "pwfdata.hpp"

namespace oxr {

// Makes a text value whose units are written where they stay: no scratch, no copy.
struct TextValue {
  // A value of `type` (STRING or DECIMAL) of `length` units. `write(unsigned short*)` fills them; what it throws passes
  // through.
  template <class Write>
  static PWFData make(ELogicalType type, unsigned length, Write write) {
    PWFData value(type, length);
    write(const_cast<unsigned short*>(value.stringValue.characters()));
    return value;
  }
  // The text of a value under construction.
  static KelWstring& text(PWFData& value) { return value.stringValue; }
};

}  // namespace oxr
