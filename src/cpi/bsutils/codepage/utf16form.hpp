#pragma once

#include <bit>

#include "codepage/form.hpp"
#include "core/utf16.hpp"

namespace oxr {

// UTF-16 in the byte order `kOrder`, without a mark.
template <std::endian kOrder>
struct Utf16Form {
  // A form that reads or writes a mark has another name.
  static bool isFormOf(const KelConverter&, std::string_view icuName) {
    return icuName == (kOrder == std::endian::big ? "UTF-16BE" : "UTF-16LE");
  }

  [[gnu::always_inline]] static core::Advance decode(PageTables, InputBytes bytes, OutputUnits units) {
    return core::decodeUtf16<kSwap>(bytes, units);
  }
  [[gnu::always_inline]] static core::Advance encode(PageTables, InputUnits units, OutputBytes bytes) {
    return core::encodeUtf16<kSwap>(units, bytes);
  }

  static std::size_t unitCount(InputBytes bytes) { return bytes.size() % 2 == 0 ? bytes.size() / 2 : 0; }
  [[gnu::always_inline]] static bool decodeCounted(PageTables tables, InputBytes bytes, unsigned short* units) {
    return decode(tables, bytes, {units, bytes.size() / 2}).read == bytes.size();
  }
  static std::size_t plainCount(InputBytes bytes) { return unitCount(bytes); }
  [[gnu::always_inline]] static bool decodePlain(PageTables, InputBytes bytes, unsigned short* units) {
    return core::decodePlainUtf16<kSwap>(bytes, units);
  }

  static bool decodeByte(PageTables, unsigned char, unsigned short&) { return false; }

 private:
  static constexpr bool kSwap = kOrder != std::endian::native;
};

}  // namespace oxr
