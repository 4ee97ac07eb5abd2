#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>

#include "core/advance.hpp"
#include "core/blocks.hpp"

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

namespace utf16 {

// Which side of a conversion is in this machine's order. Where it is one alone, the other is in the opposite order.
enum class Order { both, input, output };

template <Order kOrder, class Units>
Units swapped(Units units) {
  return kOrder == Order::both ? units : static_cast<Units>(units << 8 | units >> 8);
}

// Copies a text of any length if all of it is below the surrogates; else the copy is unspecified. Of each place in a
// vector the largest byte is kept, which is looked at once, at the end.
template <Order kOrder>
[[gnu::always_inline]] inline bool copyPlain(const unsigned char* in, unsigned char* out, std::size_t count) {
  ByteVector largest = {};
  const auto copied = [&]<class Block>(Block) __attribute__((always_inline)) {
    constexpr std::size_t kSize = sizeof(Block) / 2;  // units
    if (count < kSize) return false;
    inBlocks<kSize>(
        count, [&](std::size_t at) __attribute__((always_inline)) {
          const auto units = loadBlock<UnitVector, Block>(in + 2 * at);
          const auto bytes = std::bit_cast<ByteVector>(units);
          largest = largest > bytes ? largest : bytes;  // unreached: a choice in each byte is no branch
          const UnitVector ordered = swapped<kOrder>(units);
          std::memcpy(out + 2 * at, &ordered, sizeof(Block));
        });
    return true;
  };
  static_cast<void>(copied(UnitVector{}) || copied(std::uint64_t{}) || copied(std::uint32_t{}) ||
                    copied(std::uint16_t{}));
  constexpr std::uint64_t kUpper = kOrder == Order::output ? 0x00FF'00FF'00FF'00FF : 0xFF00'FF00'FF00'FF00;
  return !hasAny(static_cast<ByteVector>(largest >= 0xD8), kUpper);
}

// Copies a text of any length and contents. The result is the number of units of whole characters.
template <Order kOrder>
std::size_t copyGeneral(const unsigned char* in, unsigned char* out, std::size_t count);

template <Order kOrder>
[[gnu::always_inline]] inline std::size_t copy(const unsigned char* in, unsigned char* out, std::size_t count) {
  constexpr std::size_t kShort = 64;  // units; more are worth a call for wider vectors
  return count <= kShort && copyPlain<kOrder>(in, out, count) ? count : copyGeneral<kOrder>(in, out, count);
}

}  // namespace utf16

// Both stop before what is not a whole, well-formed character and before a character that finds no room. `kSwap`: the
// bytes are not in this machine's order. Read and written count bytes on one side, units on the other. The rest
// of the output may be overwritten, up to its end.
template <bool kSwap>
[[gnu::always_inline]] inline Advance decodeUtf16(std::span<const unsigned char> bytes,
                                                  std::span<unsigned short> units) {
  constexpr auto kOrder = kSwap ? utf16::Order::output : utf16::Order::both;
  const std::size_t count = std::min(bytes.size() / 2, units.size());
  const std::size_t done = utf16::copy<kOrder>(bytes.data(), reinterpret_cast<unsigned char*>(units.data()), count);
  return {2 * done, done};
}
// Decodes a whole text if it has no surrogates; else the units are unspecified.
template <bool kSwap>
[[gnu::always_inline]] inline bool decodePlainUtf16(std::span<const unsigned char> bytes, unsigned short* units) {
  constexpr auto kOrder = kSwap ? utf16::Order::output : utf16::Order::both;
  return utf16::copyPlain<kOrder>(bytes.data(), reinterpret_cast<unsigned char*>(units), bytes.size() / 2);
}
template <bool kSwap>
[[gnu::always_inline]] inline Advance encodeUtf16(std::span<const unsigned short> units,
                                                  std::span<unsigned char> bytes) {
  constexpr auto kOrder = kSwap ? utf16::Order::input : utf16::Order::both;
  const std::size_t count = std::min(bytes.size() / 2, units.size());
  const std::size_t done =
      utf16::copy<kOrder>(reinterpret_cast<const unsigned char*>(units.data()), bytes.data(), count);
  return {done, 2 * done};
}

}  // namespace oxr::core
