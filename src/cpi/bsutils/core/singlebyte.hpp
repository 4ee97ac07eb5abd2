#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <utility>

// Text in code pages where each byte is one character, read and written through tables. Several times faster than a
// converter, which has to be ready for more.
namespace oxr::core {

// The code unit of each byte.
using SingleByteTable = std::array<unsigned short, 256>;

// The byte of each code unit; kNoByte for a unit that is none by itself.
using UnitTable = std::array<unsigned short, 65536>;
inline constexpr unsigned kNoByte = 0x100;

// A number of look-ups, each written out, for compilers leave such loops rolled.
inline constexpr std::size_t kUnrolled = 8;
template <class LookUp>
[[gnu::always_inline]] inline void unrolled(LookUp lookUp) {
  [&]<std::size_t... kIndex>(std::index_sequence<kIndex...>) {
    (lookUp(kIndex), ...);
  }
  (std::make_index_sequence<kUnrolled>());
}

// Writes bytes.size() units to `out`.
inline void decodeSingleBytes(std::span<const unsigned char> bytes, const SingleByteTable& table, unsigned short* out) {
  const unsigned char* in = bytes.data();
  const unsigned char* const end = in + bytes.size();
  for (; end - in >= std::ptrdiff_t{kUnrolled}; in += kUnrolled, out += kUnrolled)
    unrolled([&](std::size_t i) { out[i] = table[in[i]]; });
  for (; in != end; ++in, ++out)
    *out = table[*in];
}

// Writes the bytes of `units` up to the first that the table does not hold; the result is their number. Up to
// units.size() bytes at `out` may be overwritten.
inline std::size_t encodeSingleBytes(std::span<const unsigned short> units, const UnitTable& table,
                                     unsigned char* out) {
  const unsigned short* in = units.data();
  const unsigned short* const end = in + units.size();
  for (; end - in >= std::ptrdiff_t{kUnrolled}; in += kUnrolled, out += kUnrolled) {
    unsigned all = 0;
    unrolled([&](std::size_t i) {
      const unsigned byte = table[in[i]];
      all |= byte;
      out[i] = static_cast<unsigned char>(byte);
    });
    if ((all & kNoByte) != 0) break;
  }
  for (; in != end; ++in, ++out) {
    const unsigned byte = table[*in];
    if ((byte & kNoByte) != 0) break;
    *out = static_cast<unsigned char>(byte);
  }
  return static_cast<std::size_t>(in - units.data());
}

}  // namespace oxr::core
