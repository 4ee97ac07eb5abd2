#pragma once

#include <cstdint>
#include <stdexcept>

#include "pwfdata.hpp"

namespace oxr {

// Makes a text value whose units are written where they stay, so that no conversion needs scratch room or a copy. It is
// the one friend of PWFData: a value in the making is the only one that is ever written to.
struct TextInPlace {
  // A text of up to so many units lies inside the value. There `write` may touch one unit more than these, whatever the
  // length, and in a longer text one more than its length: digits are written as whole words, and the terminator put in
  // after them.
  static constexpr unsigned kInlineUnits = 16;

  // Makes a value of `type` (STRING or DECIMAL) of `length` units. `write(unsigned short*)` fills them and leaves a
  // zero after them; what it throws passes through. A text that no string can hold raises std::length_error.
  template <class Write>
  static PWFData make(ELogicalType type, std::uint64_t length, Write write) {
    if (length >= KelWstring::npos) throw std::length_error("PWFData");
    PWFData value(type, static_cast<unsigned>(length));
    write(const_cast<unsigned short*>(value.stringValue.characters()));
    traceMade(value);
    return value;
  }
  // Makes a value of `type` with an empty text, for what is written into it afterwards.
  static PWFData make(ELogicalType type) { return PWFData(type, 0u); }
  // Writes a text of up to kInlineUnits units into such a value, as above; the terminator is put in afterwards.
  template <class Write>
  [[gnu::always_inline]] static void writeShort(PWFData& value, std::uint32_t length, Write write) {
    write(const_cast<unsigned short*>(value.stringValue.characters()));
    value.stringValue.cutTo(length);
  }
  // Gives the text of a value in the making.
  static KelWstring& text(PWFData& value) { return value.stringValue; }
  // Shows in the debug trace that such a value is made, with its text as it is now. The general ways call it: there is
  // no trace where a fast way is taken.
  static void traceMade(const PWFData& value) {
    value.traceInit(value.stringValue.characters(), static_cast<int>(2 * value.stringValue.length()),
                    value.logicalType);
  }
};

}  // namespace oxr
