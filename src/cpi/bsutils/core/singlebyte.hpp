#pragma once

#include <array>
#include <cstddef>
#include <span>

// Text in code pages where each byte is one character, read through a table. Several times faster than a converter,
// which has to be ready for more.
namespace oxr::core {

// The code unit of each byte.
using SingleByteTable = std::array<unsigned short, 256>;

// Writes bytes.size() units to `out`.
inline void decodeSingleBytes(std::span<const unsigned char> bytes, const SingleByteTable& table, unsigned short* out) {
  for (const unsigned char byte : bytes)
    *out++ = table[byte];
}

}  // namespace oxr::core
