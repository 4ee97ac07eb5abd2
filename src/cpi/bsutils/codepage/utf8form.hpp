#pragma once

#include "codepage/form.hpp"
#include "core/utf8.hpp"

namespace oxr {

// UTF-8. The number of units of a text is known beforehand where all of it is ASCII.
struct Utf8Form {
  // A form that reads or writes a mark has a longer name.
  static bool isFormOf(const KelConverter&, std::string_view icuName) { return icuName == "UTF-8"; }

  [[gnu::always_inline]] static core::Advance decode(PageTables, InputBytes bytes, OutputUnits units) {
    return core::decodeUtf8(bytes, units);
  }
  [[gnu::always_inline]] static core::Advance encode(PageTables, InputUnits units, OutputBytes bytes) {
    return core::encodeUtf8(units, bytes);
  }

  static std::size_t unitCount(InputBytes bytes) { return core::isAscii(bytes) ? bytes.size() : 0; }
  static bool decodeCounted(PageTables, InputBytes bytes, unsigned short* units) {
    core::widenAscii(bytes, units);  // unitCount() has looked at all of them
    return true;
  }

  static bool decodeByte(PageTables, unsigned char byte, unsigned short& unit) {
    unit = byte;
    return byte < 0x80;
  }
};

}  // namespace oxr
