#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Short runs of bytes or units, a vector of 16 bytes at a time. The last block may overlap the one before it, so that a
// run of a block or more leaves no rest. The vectors are the compilers' own, which every machine has.
namespace oxr::core {

using ByteVector [[gnu::vector_size(16)]] = unsigned char;
using UnitVector [[gnu::vector_size(16)]] = unsigned short;
using WordVector [[gnu::vector_size(16)]] = std::uint64_t;

// Calls `step(at)` for blocks of `kSize` elements from the start on, and for the last ones of `count`, which is kSize
// or more.
template <std::size_t kSize, class Step>
[[gnu::always_inline]] inline void inBlocks(std::size_t count, Step step) {
  for (std::size_t at = 0; count - at > kSize; at += kSize)
    step(at);
  step(count - kSize);
}

template <class Block, class Element>
Block load(const Element* from) {
  Block block;
  std::memcpy(&block, from, sizeof block);
  return block;
}
// The same in a vector, with zeros after a block that is shorter.
template <class Vector, class Block, class Element>
Vector loadBlock(const Element* from) {
  if constexpr (sizeof(Block) == sizeof(Vector))
    return load<Vector>(from);
  else
    return std::bit_cast<Vector>(WordVector{load<Block>(from), 0});
}

// Whether a vector has any of these bits, which are the same in each word.
template <class Vector>
bool hasAny(Vector vector, std::uint64_t bits) {
  const auto words = std::bit_cast<WordVector>(vector);
  return ((words[0] | words[1]) & bits) != 0;
}

}  // namespace oxr::core
