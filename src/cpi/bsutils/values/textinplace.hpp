#pragma once

#include <cstdint>
#include <stdexcept>

#include "pwfdata.hpp"

namespace oxr {

// Makes a text value whose units are written where they stay: no scratch, no copy.
struct TextValue {
  // A text of up to so many units stays inside the value; `write` may then touch one unit more.
  static constexpr unsigned kInlineUnits = 16;

  // A value of `type` (STRING or DECIMAL) of `length` units. `write(unsigned short*)` fills them and leaves a zero
  // behind them; what it throws passes through. std::length_error for a text that no string can hold.
  template <class Write>
  static PWFData make(ELogicalType type, std::uint64_t length, Write write) {
    if (length >= KelWstring::npos) throw std::length_error("PWFData");
    PWFData value(type, static_cast<unsigned>(length));
    write(const_cast<unsigned short*>(value.stringValue.characters()));
    return value;
  }
  // The text of a value under construction.
  static KelWstring& text(PWFData& value) { return value.stringValue; }
};

}  // namespace oxr
