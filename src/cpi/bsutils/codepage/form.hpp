#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "core/advance.hpp"
#include "core/singlebyte.hpp"
#include "kelconverter.hpp"

// What the forms of code pages have in common. A form is a kind of code page that is read and written without ICU, as
// far as a text is one that the form knows; `singlebyteform.hpp` is the plainest. It has these static members, all of
// them inline, for fields are short and a few calls would cost as much as the conversion:
//
//   bool isFormOf(const KelConverter& shared, std::string_view icuName)
//     Whether the form reads and writes as this converter of the host's does, whose name ICU gives.
//   Advance decode(PageTables tables, InputBytes bytes, OutputUnits units)
//   Advance encode(PageTables tables, InputUnits units, OutputBytes bytes)
//     Converts the first characters, up to one that is not well formed, has no place in the other set, is not all there
//     or finds no room: what ICU would give, ending between two characters. The rest of the room may be overwritten.
//   std::size_t unitCount(InputBytes bytes)
//     The number of units of a text where that is known before it is converted, else 0.
//   bool decodeCounted(PageTables tables, InputBytes bytes, unsigned short* units)
//     Converts such a text into that many units; false when it is not well formed.
//   std::size_t plainCount(InputBytes bytes)
//   bool decodePlain(PageTables tables, InputBytes bytes, unsigned short* units)
//     The same for a text that is a plain one, such as ASCII, which the second finds out. Neither calls anything that
//     is not inline. False, and the units may be overwritten, for any other text.
//   bool decodeByte(PageTables tables, unsigned char byte, unsigned short& unit)
//     One character, where the byte is one by itself; else false, and `unit` may be overwritten.
namespace oxr {

// The tables of a converter; null but for the form that has them.
struct PageTables {
  const core::SingleByteTable* units;  // by byte
  const core::UnitTable* bytes;        // by unit
};

using InputBytes = std::span<const unsigned char>;
using OutputBytes = std::span<unsigned char>;
using InputUnits = std::span<const unsigned short>;
using OutputUnits = std::span<unsigned short>;

}  // namespace oxr
