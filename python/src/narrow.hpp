#pragma once

#include <cstddef>
#include <cstring>

#include "kelunits.hpp"

namespace oxr::python {

// Writes the low bytes of all units, eight at a time, and returns the bits that any unit has: below 0x80 the text is
// ASCII, below 0x100 Latin-1, and else what was written means nothing. `to` has room for seven bytes more than the
// text.
inline unsigned narrow(UnitView text, char* to) {
  using Units = unsigned short __attribute__((vector_size(16)));
  using Bytes = unsigned char __attribute__((vector_size(8)));
  constexpr std::size_t kLanes = 8;
  const unsigned short* const from = text.data();
  const std::size_t size = text.size();
  unsigned bits = 0;
  std::size_t at = 0;
  if (size >= kLanes) {
    Units all{};
    // The last block overlaps the one before it, so that no unit behind the text is read.
    for (bool isLast = false; !isLast; at += kLanes) {
      isLast = at + kLanes >= size;
      if (isLast) at = size - kLanes;
      Units units;
      std::memcpy(&units, from + at, sizeof units);
      all |= units;
      const auto bytes = __builtin_convertvector(units, Bytes);
      std::memcpy(to + at, &bytes, sizeof bytes);
    }
    for (std::size_t lane = 0; lane < kLanes; ++lane)
      bits |= all[lane];
  }
  for (; at < size; ++at) {
    bits |= from[at];
    to[at] = static_cast<char>(from[at]);
  }
  return bits;
}

// Without the blanks at its end.
inline UnitView trimmed(UnitView text) {
  std::size_t size = text.size();
  while (size != 0 && text[size - 1] == ' ')
    --size;
  return text.substr(0, size);
}

}  // namespace oxr::python
