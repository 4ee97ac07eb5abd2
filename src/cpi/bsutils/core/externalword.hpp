#pragma once

#include <array>
#include <bit>
#include <cstdint>

#include "core/digitvectors.hpp"
#include "core/words.hpp"

// External decimals of few digits in registers, for code pages whose digits are the bytes F0 to F9 or 30 to 39.
namespace oxr::core {

// A field of 1 to 16 bytes, digits alone but for what its sign byte becomes.
class ZonedWord {
 public:
  static constexpr std::uint32_t kMaxSize = 16;

  // `zone`: F0 or 30.
  ZonedWord(const unsigned char* bytes, std::uint32_t size, unsigned char zone) {
    const std::uint64_t zones = 0x0101010101010101u * zone;
    const std::uint32_t last = size > 8 ? size - 8 : 0;  // bytes of the second half
    halves_[0] = loadLowest(bytes, size - last) ^ zones >> (64 - 8 * (size - last));
    halves_[1] = last == 0 ? 0 : loadLowest(bytes + 8, last) ^ zones >> (64 - 8 * last);
  }

  // Takes `from` for `to` at a position: what the sign byte holds for its plain digit.
  void replace(std::uint32_t position, unsigned char from, unsigned char to) {
    halves_[position / 8] ^= std::uint64_t{static_cast<unsigned char>(from ^ to)} << 8 * (position % 8);
  }
  // Each byte is now its digit, if it is one.
  bool isAllDigits() const { return aboveNines(halves_[0]) == 0 && aboveNines(halves_[1]) == 0; }
  unsigned digit(std::uint32_t position) const {
    return static_cast<unsigned>(halves_[position / 8] >> 8 * (position % 8)) & 0xFF;
  }

  // Always 16 units and a point behind the first `whole`, 1 to 16; what is behind the digits has no meaning.
  void writePointed(std::uint32_t whole, unsigned short* out) const {
    writePointedSixteen(std::bit_cast<ByteVector>(halves_) + '0', whole, out);
  }

 private:
  // Which bytes are more than 9, as their top bits.
  static constexpr std::uint64_t aboveNines(std::uint64_t bytes) {
    return (bytes | ((bytes & 0x7F7F7F7F7F7F7F7Fu) + 0x7676767676767676u)) & 0x8080808080808080u;
  }

  std::array<std::uint64_t, 2> halves_;
};

// Fills a field of 1 to 16 bytes with the lowest half bytes of `digits`, as many as it has bytes.
[[gnu::always_inline]] inline void writeZoned(std::uint64_t digits, unsigned char zone, unsigned char* field,
                                              std::uint32_t size) {
  const auto halves =
      std::bit_cast<std::array<std::uint64_t, 2>>((digitVector(__builtin_bswap64(digits)) & 0x0F) | zone);
  if (size <= 8) {
    storeLowest(halves[1] >> (64 - 8 * size), field, size);
    return;
  }
  storeLowest(halves[0] >> (128 - 8 * size), field, size - 8);
  storeLowest(halves[1], field + size - 8, 8);
}

// How many digits a number of half bytes has, at least one.
constexpr std::uint32_t significantDigits(std::uint64_t digits) {
  return (67 - static_cast<std::uint32_t>(std::countl_zero(digits | 1))) / 4;
}
static_assert(significantDigits(0) == 1 && significantDigits(0x10) == 2 && significantDigits(~0ull) == 16);

}  // namespace oxr::core
