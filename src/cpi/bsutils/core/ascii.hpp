#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>

#include "core/blocks.hpp"
#include "core/words.hpp"

// ASCII between bytes and UTF-16 units, sixteen characters at a time. The last sixteen may overlap those before, so
// that a text of sixteen or more leaves no rest; a shorter one goes by eights and fours in the same way. All of it is
// inline: a field is as short as a call is long.
namespace oxr::core {

namespace ascii {

inline constexpr std::uint64_t kOtherBytes = 0x8080'8080'8080'8080;
inline constexpr std::uint64_t kOtherUnits = 0xFF80'FF80'FF80'FF80;

// Widens a block of sixteen bytes, eight or four. The result is the block, with zeros after it.
template <class Block>
ByteVector widen(const unsigned char* in, unsigned short* out) {
  const ByteVector none = {};
  const auto bytes = loadBlock<ByteVector, Block>(in);
  const ByteVector first = __builtin_shufflevector(bytes, none, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  std::memcpy(out, &first, std::min(2 * sizeof(Block), sizeof first));
  if constexpr (sizeof(Block) == sizeof bytes) {
    const ByteVector last =
        __builtin_shufflevector(bytes, none, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    std::memcpy(out + 8, &last, sizeof last);
  }
  return bytes;
}

// Narrows 16 units to their lower bytes. The result has all bits of the units.
inline UnitVector narrow(const unsigned short* in, unsigned char* out) {
  const auto first = load<UnitVector>(in), last = load<UnitVector>(in + 8);
  const auto bytes = __builtin_shufflevector(std::bit_cast<ByteVector>(first), std::bit_cast<ByteVector>(last), 0, 2, 4,
                                             6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
  std::memcpy(out, &bytes, sizeof bytes);
  return first | last;
}

}  // namespace ascii

// Whether all bytes are below 0x80, each a character by itself.
[[gnu::always_inline]] inline bool isAscii(std::span<const unsigned char> bytes) {
  const unsigned char* const in = bytes.data();
  if (bytes.size() >= 16) {
    ByteVector all = {};
    inBlocks<16>(bytes.size(), [&](std::size_t at) { all |= load<ByteVector>(in + at); });
    return !hasAny(all, ascii::kOtherBytes);
  }
  std::uint64_t all = 0;
  if (bytes.size() >= 8)
    inBlocks<8>(bytes.size(), [&](std::size_t at) { all |= load<std::uint64_t>(in + at); });
  else if (!bytes.empty())
    all = loadLowest(in, static_cast<std::uint32_t>(bytes.size()));
  return (all & ascii::kOtherBytes) == 0;
}

// Writes the units of bytes, one for each, by blocks of a kind if there are as many. The result has all bits of the
// bytes.
template <class Block>
[[gnu::always_inline]] inline ByteVector widenBlocks(std::span<const unsigned char> bytes, unsigned short* units) {
  ByteVector all = {};
  inBlocks<sizeof(Block)>(
      bytes.size(), [&](std::size_t at)
                        __attribute__((always_inline)) { all |= ascii::widen<Block>(bytes.data() + at, units + at); });
  return all;
}
[[gnu::always_inline]] inline ByteVector widenBytes(std::span<const unsigned char> bytes, unsigned short* units) {
  if (bytes.size() >= sizeof(ByteVector)) return widenBlocks<ByteVector>(bytes, units);
  if (bytes.size() >= sizeof(std::uint64_t)) return widenBlocks<std::uint64_t>(bytes, units);
  if (bytes.size() >= sizeof(std::uint32_t)) return widenBlocks<std::uint32_t>(bytes, units);
  unsigned char all = 0;
  for (std::size_t at = 0; at < bytes.size(); ++at)
    all |= static_cast<unsigned char>(units[at] = bytes[at]);
  return ByteVector{all};
}

// Writes the units of bytes if all of them are ASCII; else they are unspecified. What is not mostly begins early.
[[gnu::always_inline]] inline bool widenIfAscii(std::span<const unsigned char> bytes, unsigned short* units) {
  if (bytes.size() >= 8 && (load<std::uint64_t>(bytes.data()) & ascii::kOtherBytes) != 0) return false;
  return !hasAny(widenBytes(bytes, units), ascii::kOtherBytes);
}

// Writes the bytes of 16 units or more if all of them are ASCII; else, and of fewer, they are unspecified. Most text
// that is not ASCII shows it in the first block.
[[gnu::always_inline]] inline bool narrowAscii(std::span<const unsigned short> units, unsigned char* bytes) {
  if (units.size() < 16 || hasAny(ascii::narrow(units.data(), bytes), ascii::kOtherUnits)) return false;
  UnitVector all = {};
  inBlocks<16>(units.size(), [&](std::size_t at) { all |= ascii::narrow(units.data() + at, bytes + at); });
  return !hasAny(all, ascii::kOtherUnits);
}

}  // namespace oxr::core
