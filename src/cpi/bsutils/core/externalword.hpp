#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "core/digitvectors.hpp"
#include "core/words.hpp"

// External decimals of up to 16 bytes, all digits at once. The digits of a code page are ten bytes with one upper half,
// their zone: F0 to F9 or 30 to 39. So a field is loaded into two registers, the zone is taken off each byte in one
// operation, and one more tells whether each byte that remains is a digit.
//
//   F1 F2 F3   less the zone F0   is   01 02 03
namespace oxr::core {

// The top bit of each of eight bytes that is more than 9.
constexpr std::uint64_t nonDigitBytes(std::uint64_t bytes) {
  // The sum of the lower seven bits and 76 reaches the top bit from 0A on, and never the next byte.
  return (bytes | ((bytes & 0x7F7F7F7F7F7F7F7Fu) + 0x7676767676767676u)) & 0x8080808080808080u;
}
static_assert(nonDigitBytes(0x0900010203040506u) == 0 && nonDigitBytes(0x0A090080FF7F0900u) == 0x8000008080800000u);

// A field of 1 to 16 bytes. They are digits alone, but for the byte of an included sign, which replace() makes one.
class ExternalWord {
 public:
  static constexpr std::uint32_t kMaxSize = 16;

  ExternalWord() = default;
  // `zone` is the byte of the digit 0, whose lower half is zero.
  ExternalWord(const unsigned char* bytes, std::uint32_t size, unsigned char zone) {
    const std::uint64_t zones = 0x0101010101010101u * zone;
    if (size <= 8) {
      halves_[0] = loadLowest(bytes, size) ^ zones >> (64 - 8 * size);
    } else {
      // Two loads that overlap unless there are sixteen.
      halves_[0] = loadLowest(bytes, 8) ^ zones;
      halves_[1] = (loadLowest(bytes + size - 8, 8) ^ zones) >> 8 * (kMaxSize - size);
    }
  }

  // Replaces the byte at a position, which was loaded as `from`, as if it had been loaded as `to`.
  void replace(std::uint32_t position, unsigned char from, unsigned char to) {
    const std::uint64_t change = std::uint64_t{static_cast<unsigned char>(from ^ to)} << 8 * (position % 8);
    // An index into the halves would send both through memory.
    (position < 8 ? halves_[0] : halves_[1]) ^= change;
  }
  // Whether each byte of the field is a digit.
  bool isAllDigits() const { return (nonDigitBytes(halves_[0]) | nonDigitBytes(halves_[1])) == 0; }
  // The value of the digit at a position.
  unsigned digit(std::uint32_t position) const {
    return static_cast<unsigned>((position < 8 ? halves_[0] : halves_[1]) >> 8 * (position % 8)) & 0xFF;
  }

  // How many zeros precede the other digits; kMaxSize if there is none of these.
  std::uint32_t leadingZeros() const {
    const auto bits = halves_[0] != 0 ? std::countr_zero(halves_[0]) : 64 + std::countr_zero(halves_[1]);
    return static_cast<std::uint32_t>(bits) / 8;
  }
  // Takes the first `count` digits off, 0 to 15.
  void dropFirst(std::uint32_t count) {
    __extension__ using Both = unsigned __int128;
    const Both rest = (Both{halves_[1]} << 64 | halves_[0]) >> 8 * count;
    halves_ = {static_cast<std::uint64_t>(rest), static_cast<std::uint64_t>(rest >> 64)};
  }

  // Writes the digits as units: always sixteen, what is beyond the field's end without meaning.
  void write(unsigned short* out) const { writeSixteen(characters(), out); }
  // The same with a point after the first `whole` digits, 1 to 15, and so 17 units.
  void writePointed(std::uint32_t whole, unsigned short* out) const { writePointedSixteen(characters(), whole, out); }

 private:
  ByteVector characters() const { return std::bit_cast<ByteVector>(WordVector{halves_[0], halves_[1]}) + '0'; }

  std::array<std::uint64_t, 2> halves_{};
};

// Fills a field of 1 to 16 bytes with the lowest half bytes of `digits`, as many as it has bytes. `zero` is the byte of
// the digit 0.
[[gnu::always_inline]] inline void writeDigitBytes(std::uint64_t digits, unsigned char zero, unsigned char* field,
                                                   std::uint32_t size) {
  const auto expanded = [&](std::uint64_t sixteen) __attribute__((always_inline)) {
    const auto toZero = static_cast<unsigned char>(zero - '0');
    return std::bit_cast<WordVector>(digitVector(__builtin_bswap64(sixteen)) + toZero);
  };
  if (size < 8) {
    storeLowest(expanded(digits << 32)[0] >> (64 - 8 * size), field, size);
    return;
  }
  // The first eight digits and the last eight, which overlap unless the field has sixteen.
  const std::uint32_t last = size - 8;
  const WordVector words = expanded(digits >> 4 * last << 32 | (digits & 0xFFFFFFFFu));
  const std::uint64_t first = words[0], second = words[1];
  std::memcpy(field, &first, sizeof first);
  std::memcpy(field + last, &second, sizeof second);
}

// How many digits a number of half bytes has, at least one.
constexpr std::uint32_t significantDigits(std::uint64_t digits) {
  return (67 - static_cast<std::uint32_t>(std::countl_zero(digits | 1))) / 4;
}
static_assert(significantDigits(0) == 1 && significantDigits(0x10) == 2 && significantDigits(~0ull) == 16);

}  // namespace oxr::core
