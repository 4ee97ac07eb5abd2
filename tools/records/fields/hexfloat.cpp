#include "records/fields/hexfloat.hpp"

#include <cstdint>

// Sign and exponent, by which 16 is raised, are the first byte; each zero digit that the fraction begins with goes for
// one of the exponent.

namespace oxr::rec {

std::optional<LongFloat> normalized(std::span<const unsigned char> bytes, bool isLittle) {
  constexpr unsigned kFractionBits = 56, kDigitBits = 4, kByteBits = 8;
  std::uint64_t fraction = 0;
  for (std::size_t i = 1; i < sizeof fraction; ++i)
    fraction = fraction << kByteBits | (i < bytes.size() ? bytes[isLittle ? bytes.size() - 1 - i : i] : 0U);
  unsigned first = isLittle ? bytes.back() : bytes.front();
  if (fraction == 0) first &= 0x80;
  for (; fraction != 0 && fraction >> (kFractionBits - kDigitBits) == 0; --first) {
    if ((first & 0x7F) == 0) return std::nullopt;
    fraction <<= kDigitBits;
  }
  LongFloat number{static_cast<unsigned char>(first)};
  for (std::size_t i = number.size() - 1; i > 0; --i, fraction >>= kByteBits)
    number[i] = static_cast<unsigned char>(fraction);
  return number;
}

}  // namespace oxr::rec
