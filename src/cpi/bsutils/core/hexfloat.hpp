#pragma once

#include <bit>
#include <cstdint>

// Hexadecimal floats and IEEE 754 ones, as bit patterns in this machine's order.
//
//   hexadecimal   sign 1 | exponent 7, a power of 16, excess 64 | fraction 24 or 56, a number below 1
//   IEEE 754      sign 1 | exponent 8 or 11, a power of 2, excess 127 or 1023 | fraction 23 or 52, after a hidden 1
//
// In both directions a value that does not fit is clamped, and bits without a place are dropped; nothing is rounded but
// the last bit of a double that becomes an IEEE one. The hexadecimal format has no infinity, no NaN and no hidden bit,
// and none of them is looked for on the way there: every IEEE exponent, the least and the greatest too, is taken to
// stand before a fraction with a hidden bit.
// The results are a contract, oddities included: what other systems stored must read back as it always did.
//
// A mantissa that still has its leading 1 is added to an exponent that is one too small, so that the carry of that bit
// makes it right.
namespace oxr::core {

inline constexpr std::uint32_t kSign32 = 0x80000000u;
inline constexpr std::uint64_t kSign64 = std::uint64_t{1} << 63;

// A fraction of zero under an exponent counts as a 1 just above the fraction, so that 0x41000000 is 16.0:
// HexFloat.ConvertsKnownPatterns.
constexpr std::uint32_t ieeeFromHex(std::uint32_t hex) {
  constexpr std::uint32_t kLargest = 0x7F7FFFFFu;
  const std::uint32_t sign = hex & kSign32;
  // A power of 2, excess 126. What is too small for a float wraps around to a value far above all that fit.
  std::uint32_t exponent = 4 * (hex >> 24 & 0x7F) - 131;
  std::uint32_t fraction = hex << 8;
  if (fraction == 0) [[unlikely]] {
    if (hex == sign) return sign;
    fraction = kSign32;
    ++exponent;
  }
  const auto zeros = static_cast<unsigned>(std::countl_zero(fraction));
  exponent -= zeros;
  if (exponent < 254) [[likely]]
    return (sign | exponent << 23) + (fraction << zeros >> 8);
  return static_cast<std::int32_t>(exponent) < 0 ? sign : sign | kLargest;  // no denormals
}

// Only the high word tells a zero, whose low word goes through untouched; and a fraction with nothing but zeros in the
// high word is not normalised. No result needs clamping: an IEEE double reaches further than any exponent here.
constexpr std::uint64_t ieeeFromHex(std::uint64_t hex) {
  const std::uint64_t sign = hex & kSign64;
  std::uint64_t exponent = 4 * (hex >> 56 & 0x7F) + 765;  // excess 1022
  std::uint64_t mantissa = hex << 8;
  if (mantissa >> 40 == 0) [[unlikely]]
    return (hex & ~kSign64) >> 32 == 0 ? hex : sign | (exponent - 2) << 52 | static_cast<std::uint32_t>(hex);
  const auto zeros = static_cast<unsigned>(std::countl_zero(mantissa));
  exponent -= zeros;
  // Of 56 bits two are dropped, the next is rounded away. Shorter fractions have zeros there.
  mantissa = mantissa << zeros >> 10;
  std::uint64_t rounded = (mantissa + 1) >> 1;
  if (static_cast<std::uint32_t>(mantissa) == 0xFFFFFFFFu) [[unlikely]] {
    // Here the carry goes into the high word, while the top of the low one is taken from the high one as it was. All
    // the way up it makes a bit too many, and calls for a rounding more: HexFloat.ConvertsKnownPatterns.
    const std::uint64_t high = mantissa >> 32;
    rounded = (high + 1) >> 1 << 32 | (high & 1) << 31;
    if (rounded >> 53 != 0) {
      rounded = (rounded + 1) >> 1;
      ++exponent;
    }
  }
  return (sign | exponent << 52) + rounded;
}

// No result needs clamping: the exponents of a float lie within those of the hexadecimal format.
constexpr std::uint32_t hexFromIeee(std::uint32_t ieee) {
  if ((ieee & ~kSign32) == 0) return ieee;
  const std::uint32_t exponent = (ieee >> 23 & 0xFF) + 1;  // a power of 2, excess 128
  const std::uint32_t mantissa = (ieee & 0x007FFFFFu) << 1 | 0x01000000u;
  return (ieee & kSign32) | ((exponent >> 2) + 33) << 24 | mantissa << (exponent & 3) >> 4;
}

// Only the high word tells a zero, as above.
constexpr std::uint64_t hexFromIeee(std::uint64_t ieee) {
  constexpr std::uint64_t kFraction = (std::uint64_t{1} << 52) - 1;
  constexpr std::uint64_t kLargest = ~kSign64;  // unlike the largest of a float: a fraction of all ones
  if ((ieee & ~kSign64) >> 32 == 0) return ieee;
  const std::uint64_t sign = ieee & kSign64;
  const std::uint64_t exponent = (ieee >> 52 & 0x7FF) + 1;  // a power of 2, excess 1024
  const std::uint64_t power = exponent >> 2;                // of 16, excess 255
  if (power < 191) return sign;
  if (power > 191 + 127) return sign | kLargest;
  const std::uint64_t mantissa = (ieee & kFraction) << 4 | std::uint64_t{1} << 56;
  return sign | (power - 191) << 56 | mantissa << (exponent & 3) >> 4;
}

static_assert(ieeeFromHex(0x42640000u) == 0x42C80000u && hexFromIeee(0x42C80000u) == 0x42640000u);  // 100.0
static_assert(ieeeFromHex(0xC1100000'00000000u) == 0xBFF00000'00000000u);                           // -1.0
static_assert(hexFromIeee(0x7F800000u) == 0x61100000u);                                             // infinity

}  // namespace oxr::core
