#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>

#include "core/advance.hpp"

// UTF-8 and UTF-16 in this machine's order, one into the other, as far as the text is well formed. Several times faster
// than a converter, which has to be ready for any code page, state and fault.
//
// Both stop before what is not a whole, well-formed character and before a character that finds no room. The rest of
// the output may be overwritten, up to its end.
namespace oxr::core {

// Whether all bytes are below 0x80, each a character by itself.
inline bool isAscii(std::span<const unsigned char> bytes) {
  using Word = std::uint64_t;
  const auto word = [&](std::size_t at) {
    Word value;
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return value;
  };
  if (bytes.size() < sizeof(Word)) return std::ranges::all_of(bytes, [](unsigned char byte) { return byte < 0x80; });
  Word all = word(bytes.size() - sizeof(Word));  // may overlap the one before
  for (std::size_t at = 0; at + sizeof(Word) <= bytes.size(); at += sizeof(Word))
    all |= word(at);
  return (all & 0x8080'8080'8080'8080) == 0;
}

// The units of ASCII, one for each byte, to `units`.
void widenAscii(std::span<const unsigned char> bytes, unsigned short* units);

Advance decodeUtf8(std::span<const unsigned char> bytes, std::span<unsigned short> units);
Advance encodeUtf8(std::span<const unsigned short> units, std::span<unsigned char> bytes);

}  // namespace oxr::core
