#pragma once

#include <algorithm>
#include <bit>
#include <span>

#include "core/singlebyte.hpp"
#include "core/utf16.hpp"
#include "core/utf8.hpp"
#include "cpunicodeconverter.hpp"

namespace oxr {

// The way around ICU, for the code pages that most messages are in: single-byte ones, UTF-8 and UTF-16. It goes as far
// as the text is one that it knows; from there on ICU converts, which gives the same result as ICU from the start: the
// way ends between two characters and is not taken while the converter holds something from before. Bytes become units
// and units bytes.
//
// It may write behind the end of what it gives, but not behind the end of the room. All inline: fields are short, and a
// few calls would cost as much as the conversion.
struct DirectPath {
  [[gnu::always_inline]] static core::Progress convert(const CPUnicodeConverter& page, std::span<const char> bytes,
                                                       std::span<unsigned short> units) {
    if (page.holdsUnitsBack) return {};
    switch (page.form) {
      case Form::eSingleByte: {
        const std::size_t count = std::min(bytes.size(), units.size());
        core::decodeSingleBytes(bytesOf(bytes).first(count), *page.byteTable, units.data());
        return {count, count};
      }
      case Form::eUtf8:
        return core::decodeUtf8(bytesOf(bytes), units);
      case Form::eUtf16Big:
      case Form::eUtf16Little:
        return core::decodeUtf16(bytesOf(bytes), units, (page.form == Form::eUtf16Big) != kIsBigEndian);
      case Form::eOther:
        break;
    }
    return {};
  }

  [[gnu::always_inline]] static core::Progress convert(const CPUnicodeConverter& page,
                                                       std::span<const unsigned short> units, std::span<char> bytes) {
    if (page.holdsBytesBack) return {};
    switch (page.form) {
      case Form::eSingleByte: {
        const std::size_t most = std::min(units.size(), bytes.size());
        const std::size_t count = core::encodeSingleBytes(units.first(most), *page.unitTable, bytesOf(bytes).data());
        return {count, count};
      }
      case Form::eUtf8:
        return core::encodeUtf8(units, bytesOf(bytes));
      case Form::eUtf16Big:
      case Form::eUtf16Little:
        return core::encodeUtf16(units, bytesOf(bytes), (page.form == Form::eUtf16Big) != kIsBigEndian);
      case Form::eOther:
        break;
    }
    return {};
  }

  // The number of units of a text where it is known before it is converted; 0 where it is not, and while the converter
  // holds something from before.
  static std::size_t unitsOf(const CPUnicodeConverter& page, std::span<const char> bytes) {
    if (page.holdsUnitsBack) return 0;
    switch (page.form) {
      case Form::eSingleByte:
        return bytes.size();
      case Form::eUtf8:
        return core::isAscii(bytesOf(bytes)) ? bytes.size() : 0;
      case Form::eUtf16Big:
      case Form::eUtf16Little:
        return bytes.size() % 2 == 0 ? bytes.size() / 2 : 0;
      case Form::eOther:
        break;
    }
    return 0;
  }

  // Converts such a text into units.size() units, that many; false when it is not well formed.
  static bool convertAll(const CPUnicodeConverter& page, std::span<const char> bytes, std::span<unsigned short> units) {
    if (page.form != Form::eUtf8) return convert(page, bytes, units).read == bytes.size();
    core::widenAscii(bytesOf(bytes), units.data());  // unitsOf() has looked at all of them
    return true;
  }

  // Whether the converter is in its initial state on the way to Unicode, as far as can be told at no cost.
  static bool isAtStart(const CPUnicodeConverter& page) { return page.form != Form::eOther && !page.holdsUnitsBack; }

 private:
  using Form = CPUnicodeConverter::Form;
  static constexpr bool kIsBigEndian = std::endian::native == std::endian::big;

  static std::span<const unsigned char> bytesOf(std::span<const char> text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
  }
  static std::span<unsigned char> bytesOf(std::span<char> text) {
    return {reinterpret_cast<unsigned char*>(text.data()), text.size()};
  }
};

}  // namespace oxr
