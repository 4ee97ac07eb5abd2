#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kelunits.hpp"

// Almost all texts of records consist of characters that stand in a JSON string as they are: ASCII but for control
// characters, the quote and the backslash. Such a text is narrowed to bytes in blocks of vectors and tested on the way;
// any other one goes character by character. The last block overlaps the one before it, so that no unit outside the
// text is touched.

namespace oxr::rec::narrowing {

using Units = short __attribute__((vector_size(16)));
using Bytes = signed char __attribute__((vector_size(16)));
inline constexpr std::size_t kLanes = 8;  // units of a vector

struct Halves {
  std::uint64_t low, high;
};

template <class Vector>
Halves halvesOf(Vector vector) {
  Halves halves;
  static_assert(sizeof halves == sizeof vector);
  std::memcpy(&halves, &vector, sizeof halves);
  return halves;
}

template <class Vector>
bool isAny(Vector lanes) {
  const auto [low, high] = halvesOf(lanes);
  return (low | high) != 0;
}

inline Units load(const unsigned short* units) {
  Units loaded;
  std::memcpy(&loaded, units, sizeof loaded);
  return loaded;
}

// Four units from each of two places.
inline Units loadHalves(const unsigned short* low, const unsigned short* high) {
  Halves halves;
  std::memcpy(&halves.low, low, sizeof halves.low);
  std::memcpy(&halves.high, high, sizeof halves.high);
  Units loaded;
  std::memcpy(&loaded, &halves, sizeof loaded);
  return loaded;
}

inline Bytes lowBytes(Units front, Units back) {
  return __builtin_shufflevector(reinterpret_cast<Bytes>(front), reinterpret_cast<Bytes>(back), 0, 2, 4, 6, 8, 10, 12,
                                 14, 16, 18, 20, 22, 24, 26, 28, 30);
}

// The low bytes of 16 units, and lanes that are all 0 if each of the units stands in a string as that byte.
struct Block {
  Block(Units front, Units back)
      : bytes(lowBytes(front, back)),
        // A byte from 0x80 on is below the blank as a signed number.
        refused((bytes < ' ') | (bytes == '"') | (bytes == '\\') |
                reinterpret_cast<Bytes>((front | back) & static_cast<short>(~0xFF))) {}
  Bytes bytes;
  Bytes refused;
};

[[gnu::noinline]] inline bool narrowLong(UnitView text, char* to) {
  const unsigned short* const from = text.data();
  Bytes refused{};
  for (std::size_t at = 0;; at = at + 4 * kLanes <= text.size() ? at + 2 * kLanes : text.size() - 2 * kLanes) {
    const Block block(load(from + at), load(from + at + kLanes));
    std::memcpy(to + at, &block.bytes, sizeof block.bytes);
    refused |= block.refused;
    if (at + 2 * kLanes == text.size()) return !isAny(refused);
  }
}

// Of one to three units.
inline bool narrowFew(UnitView text, char* to) {
  bool isRefused = false;
  for (const unsigned short unit : text) {
    isRefused |= unit < ' ' || unit >= 0x80 || unit == '"' || unit == '\\';
    *to++ = static_cast<char>(unit);
  }
  return !isRefused;
}

// Writes the text as bytes; false if a unit of it needs more than that, and `to` then holds nothing of use.
[[gnu::always_inline]] inline bool narrow(UnitView text, char* to) {
  const unsigned short* const from = text.data();
  const std::size_t size = text.size();
  if (size > 2 * kLanes) return narrowLong(text, to);
  if (size >= kLanes) {
    const Block block(load(from), load(from + size - kLanes));
    const auto [front, back] = halvesOf(block.bytes);
    std::memcpy(to, &front, sizeof front);
    std::memcpy(to + size - kLanes, &back, sizeof back);
    return !isAny(block.refused);
  }
  if (size < kLanes / 2) return narrowFew(text, to);
  const Units ends = loadHalves(from, from + size - kLanes / 2);
  const Block block(ends, ends);
  const std::uint64_t both = halvesOf(block.bytes).low;
  const auto front = static_cast<std::uint32_t>(both), back = static_cast<std::uint32_t>(both >> 32);
  std::memcpy(to, &front, sizeof front);
  std::memcpy(to + size - kLanes / 2, &back, sizeof back);
  return !isAny(block.refused);
}

}  // namespace oxr::rec::narrowing
