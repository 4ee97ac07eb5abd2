#pragma once

#include <bit>
#include <cstdint>

// Hexadecimal floats and IEEE 754 ones, as bit patterns in this machine's order.
//
//   hexadecimal   sign 1 | exponent 7, a power of 16, excess 64 | fraction 24 or 56, a number below 1
//   IEEE 754      sign 1 | exponent 8 or 11, a power of 2, excess 127 or 1023 | fraction 23 or 52, behind a hidden 1
//
// Both ways a value that does not fit is clamped and bits without a place are dropped; nothing is rounded but in one
// step of ieeeFromHex(uint64). The hexadecimal format has no infinity, no NaN and no hidden bit, and none of them is
// looked for on the way there: every IEEE exponent is an ordinary one with a hidden bit.
// The results are a contract, oddities included: what other systems stored must read back as it always did.
namespace oxr::core {

inline constexpr std::uint32_t kSign32 = 0x80000000u;
inline constexpr std::uint64_t kSign64 = std::uint64_t{1} << 63;
inline constexpr std::uint32_t kLargestFloat = 0x7F7FFFFFu;
// A fraction of all ones under the largest exponent.
inline constexpr std::uint32_t kLargestHex32 = 0x7FFFFFFFu;
inline constexpr std::uint64_t kLargestHex64 = 0x7FFFFFFF'FFFFFFFFu;

// A zero keeps its sign. A fraction of zero under another exponent counts as a 1 just above the fraction, so that
// 0x41000000 is 16.0: HexFloat.ConvertsKnownPatterns.
constexpr std::uint32_t ieeeFromHex(std::uint32_t hex) {
  constexpr int kHidden = 24;
  if ((hex & ~kSign32) == 0) return hex;
  const std::uint32_t sign = hex & kSign32;
  std::uint32_t fraction = hex & 0x00FFFFFFu;
  const int shift = fraction == 0 ? 0 : std::countl_zero(fraction) - (31 - kHidden);
  fraction <<= shift;
  const int biased = 4 * static_cast<int>(hex >> 24 & 0x7F) - 256 - shift + 127;
  if (biased > 254) return sign | kLargestFloat;
  if (biased < 1) return sign;  // no denormals
  return sign | static_cast<std::uint32_t>(biased) << 23 | (fraction & 0x00FFFFFFu) >> 1;
}

// A binary exponent as a power of 16 and what is left over for the fraction: to the left for an exponent of 0 or above,
// to the right below. Division goes towards zero on both sides.
struct HexExponent {
  int power;
  int left;
  int right;
};
constexpr HexExponent hexExponent(int binary) {
  if (binary >= 0) return {binary >> 2, binary & 3, 0};
  return {-(-binary >> 2), 0, -binary & 3};
}

constexpr std::uint32_t hexFromIeee(std::uint32_t ieee) {
  constexpr int kFractionBits = 24;
  if ((ieee & ~kSign32) == 0) return ieee;
  const std::uint32_t sign = ieee & kSign32;
  auto [power, left, right] = hexExponent(static_cast<int>(ieee >> 23 & 0xFF) - 127);
  std::uint32_t fraction = ((ieee & 0x007FFFFFu) << 1 | std::uint32_t{1} << kFractionBits) << left >> right;
  if (fraction >> kFractionBits != 0) {
    fraction >>= 4;
    ++power;
  }
  if (power + 64 > 127) return sign | kLargestHex32;
  if (power + 64 < 0) return sign;
  return sign | static_cast<std::uint32_t>(power + 64) << kFractionBits | fraction;
}

// Halves a mantissa of the 64-bit form, rounding up. When the low 32 bits are all ones the carry goes into the high
// part, and the top of the low part is taken from the high part as it was before: HexFloat.RoundsTheLastOfTheHalvings.
constexpr std::uint64_t halvedUp(std::uint64_t mantissa) {
  const auto low = static_cast<std::uint32_t>(mantissa);
  if (low != 0xFFFFFFFFu) return (mantissa + 1) >> 1;
  const std::uint64_t high = mantissa >> 32;
  return (high + 1) >> 1 << 32 | (high & 1) << 31;
}

// The 64-bit form. Only the high word tells a zero, whose low word goes through untouched; and a fraction with nothing
// but zeros in the high word is not normalised.
// No result needs clamping: the range of an IEEE double holds that of the exponents here with room to spare.
constexpr std::uint64_t ieeeFromHex(std::uint64_t hex) {
  constexpr int kHidden = 52;
  constexpr std::uint64_t kFraction = (std::uint64_t{1} << kHidden) - 1;
  if ((hex & ~kSign64) >> 32 == 0) return hex;
  int exponent = 4 * (static_cast<int>(hex >> 56 & 0x7F) - 64) - 4;
  std::uint64_t mantissa = hex & 0x00FFFFFF'FFFFFFFFu;
  if (mantissa >> 32 != 0) {
    // The mantissa has up to 56 bits, four of them for the first digit. Two are dropped, the next is rounded away.
    if (const int width = std::bit_width(mantissa); width > kHidden + 2) {
      mantissa >>= width - (kHidden + 2);
      exponent += width - (kHidden + 2);
    }
    while (mantissa >> (kHidden + 1) != 0) {  // twice when the rounding carries all the way up
      mantissa = halvedUp(mantissa);
      ++exponent;
    }
    const int shift = std::countl_zero(mantissa) - (63 - kHidden);
    mantissa <<= shift;
    exponent -= shift;
  }
  return (hex & kSign64) | static_cast<std::uint64_t>(exponent + 1023) << kHidden | (mantissa & kFraction);
}

constexpr std::uint64_t hexFromIeee(std::uint64_t ieee) {
  constexpr int kFractionBits = 56;
  constexpr std::uint64_t kIeeeFraction = (std::uint64_t{1} << 52) - 1;
  if ((ieee & ~kSign64) >> 32 == 0) return ieee;
  const std::uint64_t sign = ieee & kSign64;
  auto [power, left, right] = hexExponent(static_cast<int>(ieee >> 52 & 0x7FF) - 1023);
  std::uint64_t fraction = ((ieee & kIeeeFraction) << 4 | std::uint64_t{1} << kFractionBits) << left >> right;
  if (fraction >> kFractionBits != 0) {
    fraction >>= 4;
    ++power;
  }
  if (power + 64 > 127) return sign | kLargestHex64;
  if (power + 64 < 0) return sign;
  return sign | static_cast<std::uint64_t>(power + 64) << kFractionBits | fraction;
}

static_assert(ieeeFromHex(0x42640000u) == 0x42C80000u && hexFromIeee(0x42C80000u) == 0x42640000u);  // 100.0
static_assert(ieeeFromHex(0xC1100000'00000000u) == 0xBFF00000'00000000u);                           // -1.0
static_assert(hexFromIeee(0x7F800000u) == 0x61100000u);                                             // infinity

}  // namespace oxr::core
