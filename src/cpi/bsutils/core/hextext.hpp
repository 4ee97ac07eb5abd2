#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "kelunits.hpp"

// Hexadecimal text of bytes: two digits a byte, the high half first. Stretches of nothing but digits go several bytes
// at a time.
namespace oxr::core {

// Writes 2 * bytes.size() units, lower case, without separators. `out` does not overlap `bytes`.
void writeHex(std::span<const unsigned char> bytes, unsigned short* out);

enum class HexFault : std::uint8_t {
  none,
  foreign,   // a unit that is neither a digit nor white space
  oddCount,  // the last byte has one digit
};
struct HexReading {
  std::size_t size;  // bytes written
  HexFault fault;
};

// Reads digits of either case. White space, as ICU sees it, is skipped, between the two digits of a byte too. `out` has
// room for text.size() / 2 + 1 bytes and does not overlap `text`; beyond `size` its contents are unspecified.
HexReading readHex(UnitView text, unsigned char* out);

}  // namespace oxr::core
