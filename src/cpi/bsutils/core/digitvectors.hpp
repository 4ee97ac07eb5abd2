#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "core/blocks.hpp"

// Sixteen digits at once: from half bytes to characters, and from characters to UTF-16 units, with or without a point
// among them. The vectors are the compilers' own, which every machine has; each function is a handful of instructions
// without a branch.
namespace oxr::core {

// The sixteen half bytes of eight bytes, each as the character of its digit.
inline ByteVector digitVector(std::uint64_t bytes) {
  const auto packed = std::bit_cast<ByteVector>(WordVector{bytes, 0});
  const ByteVector high = packed >> 4;
  const ByteVector low = packed & 0x0F;
  return '0' + __builtin_shufflevector(high, low, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
}

// Writes sixteen characters as units.
inline void writeSixteen(ByteVector characters, unsigned short* out) {
  const ByteVector none = {};
  const ByteVector first =
      __builtin_shufflevector(characters, none, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  const ByteVector last =
      __builtin_shufflevector(characters, none, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
  std::memcpy(out, &first, sizeof first);
  std::memcpy(out + 8, &last, sizeof last);
}

// Sixteen bytes from 16 - n on select the first n of a vector.
inline constexpr std::array<unsigned char, 32> kSelect = [] {
  std::array<unsigned char, 32> select{};
  std::fill_n(select.begin(), 16, static_cast<unsigned char>(0xFF));
  return select;
}();

// The first `count` bytes of a vector, 0 to 16.
inline ByteVector selectFirst(std::uint32_t count) {
  ByteVector selected;
  std::memcpy(&selected, kSelect.data() + 16 - count, sizeof selected);
  return selected;
}

// Writes the characters as units with a point after the first `whole` of them, 1 to 16: always 17 units. The last
// character is left out, unless the point follows it; such a point is there for the caller to write over.
inline void writePointedSixteen(ByteVector characters, std::uint32_t whole, unsigned short* out) {
  const ByteVector none = {};
  const ByteVector later =
      __builtin_shufflevector(none, characters, 0, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30);
  const ByteVector isWhole = selectFirst(whole);
  writeSixteen((characters & isWhole) | (later & ~isWhole), out);
  out[whole] = '.';
}

}  // namespace oxr::core
