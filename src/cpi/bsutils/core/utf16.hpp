#pragma once

#include <span>

#include "core/advance.hpp"

// UTF-16 in either byte order, from and to units in this machine's order, as far as the text is well formed.
namespace oxr::core {

constexpr bool isSurrogate(unsigned unit) {
  return (unit & 0xF800) == 0xD800;
}
constexpr bool isLead(unsigned unit) {
  return (unit & 0xFC00) == 0xD800;
}
constexpr bool isTrail(unsigned unit) {
  return (unit & 0xFC00) == 0xDC00;
}
// A character above U+FFFF from its halves, and its halves.
constexpr unsigned pairOf(unsigned lead, unsigned trail) {
  return 0x10000 + ((lead & 0x3FF) << 10) + (trail & 0x3FF);
}
constexpr unsigned short leadOf(unsigned character) {
  return static_cast<unsigned short>(0xD800 + ((character - 0x10000) >> 10));
}
constexpr unsigned short trailOf(unsigned character) {
  return static_cast<unsigned short>(0xDC00 + (character & 0x3FF));
}

// Both stop before what is not a whole, well-formed character and before a character that finds no room. `swap`: the
// bytes are not in this machine's order. Read and written count bytes on one side, units on the other. The rest
// of the output may be overwritten, up to its end.
Advance decodeUtf16(std::span<const unsigned char> bytes, std::span<unsigned short> units, bool swap);
Advance encodeUtf16(std::span<const unsigned short> units, std::span<unsigned char> bytes, bool swap);

}  // namespace oxr::core
