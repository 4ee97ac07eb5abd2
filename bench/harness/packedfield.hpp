#pragma once

#include <array>
#include <cstddef>

namespace oxr::bench {

using PackedField = std::array<unsigned char, 16>;

// A positive number that fills `size` bytes; of 4 bytes it fits 32 bits.
inline PackedField packedFieldOf(std::size_t size) {
  PackedField field{};
  for (std::size_t i = 0; i < size; ++i)
    field[i] = static_cast<unsigned char>(i % 5 << 4 | (i + 3) % 10);
  field[size - 1] = static_cast<unsigned char>((field[size - 1] & 0xF0) | 0x0C);
  return field;
}

}  // namespace oxr::bench
