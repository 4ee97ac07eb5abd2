#pragma once

#include "codepage/form.hpp"
#include "core/ascii.hpp"
#include "core/utf8.hpp"

namespace oxr {

// UTF-8. The number of units of a text is known beforehand where all of it is ASCII.
struct Utf8Form {
  // A form that reads or writes a mark has a longer name.
  static bool isFormOf(const KelConverter&, std::string_view icuName) { return icuName == "UTF-8"; }

  [[gnu::always_inline]] static core::Advance decode(PageTables, InputBytes bytes, OutputUnits units) {
    if (bytes.size() <= units.size() && core::widenIfAscii(bytes, units.data())) return {bytes.size(), bytes.size()};
    return core::decodeUtf8(bytes, units);
  }
  [[gnu::always_inline]] static core::Advance encode(PageTables, InputUnits units, OutputBytes bytes) {
    if (units.size() <= bytes.size() && core::narrowAscii(units, bytes.data())) return {units.size(), units.size()};
    return core::encodeUtf8(units, bytes);
  }

  static std::size_t unitCount(InputBytes bytes) { return core::isAscii(bytes) ? bytes.size() : 0; }
  [[gnu::always_inline]] static bool decodeCounted(PageTables, InputBytes bytes, unsigned short* units) {
    core::widenBytes(bytes, units);  // unitCount() has looked at all of them
    return true;
  }
  static std::size_t plainCount(InputBytes bytes) { return bytes.size(); }
  [[gnu::always_inline]] static bool decodePlain(PageTables, InputBytes bytes, unsigned short* units) {
    return core::widenIfAscii(bytes, units);
  }

  static bool decodeByte(PageTables, unsigned char byte, unsigned short& unit) {
    unit = byte;
    return byte < 0x80;
  }
};

}  // namespace oxr
