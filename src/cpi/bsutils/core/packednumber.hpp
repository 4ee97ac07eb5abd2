#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "core/numbertextwrite.hpp"
#include "core/packedfield.hpp"

// Packed decimals of few digits as machine numbers, without a text in between. Half bytes become a number by joining
// neighbours, four steps for sixteen digits; a number becomes half bytes two digits at a time.
namespace oxr::core {

// The number of up to sixteen half bytes, the last digit lowest. Digits join to pairs, pairs to fours, fours to eights,
// eights to the whole: where a pair is 16 * a + b and should be 10 * a + b, 6 * a is too much, and so on upwards.
constexpr std::uint64_t numberOfHalfBytes(std::uint64_t halfBytes) {
  const std::uint64_t pairs = halfBytes - 6 * (halfBytes >> 4 & 0x0F0F0F0F0F0F0F0Fu);
  const std::uint64_t fours = pairs - 156 * (pairs >> 8 & 0x00FF00FF00FF00FFu);
  const std::uint64_t eights = fours - 55536 * (fours >> 16 & 0x0000FFFF0000FFFFu);
  return eights - 4194967296 * (eights >> 32);
}
static_assert(numberOfHalfBytes(0x9876543210987654u) == 9876543210987654u && numberOfHalfBytes(0x42) == 42);

// The half bytes of a number below 10^16.
constexpr std::uint64_t halfBytesOfNumber(std::uint64_t number) {
  std::uint64_t halfBytes = 0;
  for (unsigned shift = 0; number != 0; shift += 8, number /= 100) {
    const std::uint64_t pair = number % 100;
    halfBytes |= (pair + 6 * (pair / 10)) << shift;
  }
  return halfBytes;
}
static_assert(halfBytesOfNumber(9876543210987654u) == 0x9876543210987654u && halfBytesOfNumber(0) == 0);

struct PackedNumber {
  // The widest field whose digits fit 64 bits, all nines too.
  static constexpr std::uint32_t kMaxSize = 10;

  std::uint64_t magnitude;  // of all digits, wherever the point is
  bool negative;
  std::uint32_t digitCount;  // with leading zeros
};

// Reads a field of 1 to kMaxSize bytes. False for a bad field.
inline bool readPackedNumber(const unsigned char* bytes, std::uint32_t size, bool reversed, bool isSigned,
                             PackedNumber& number) {
  const std::uint32_t low = std::min(size, PackedWord::kMaxSize);
  const std::uint32_t high = size - low;
  // The first byte in normal order is the uppermost, which is how a reversed field is loaded.
  const auto load = [&](const unsigned char* from, std::uint32_t count) {
    const std::uint64_t loaded = loadLowest(from, count);
    return reversed ? loaded : reversedBytes(loaded, count);
  };
  const std::uint64_t last = load(reversed ? bytes : bytes + high, low);
  const auto sign = static_cast<unsigned>(last & 0x0F);
  // The sign, and no other half byte, is above 9.
  if (nonDigitHalfBytes(last) != 8 || signFault(sign, isSigned) != PackedFault::none) return false;
  number = {numberOfHalfBytes(last >> 4), sign == kPackedMinus, 2 * size - 1};
  if (high == 0) return true;
  const std::uint64_t first = load(reversed ? bytes + low : bytes, high);
  number.magnitude += numberOfHalfBytes(first) * kPowersOfTen[15];
  return nonDigitHalfBytes(first) == 0;
}

// The whole part of a number with so many places after the point, or, below 0, trailing zeros. False beyond 64 bits.
inline bool wholePart(std::uint64_t& magnitude, std::int32_t places) {
  constexpr auto kMost = static_cast<std::int32_t>(kPowersOfTen.size()) - 1;
  if (places == 0) return true;
  if (places > kMost) magnitude = 0;
  if (places > kMost || places < -kMost) return magnitude == 0;
  if (places < 0)
    return !__builtin_mul_overflow(magnitude, kPowersOfTen[static_cast<std::size_t>(-places)], &magnitude);
  magnitude /= kPowersOfTen[static_cast<std::size_t>(places)];
  return true;
}

// The magnitude with its sign, if an Integer holds it.
template <class Integer>
bool toInteger(std::uint64_t magnitude, bool negative, Integer& value) {
  if (magnitude > static_cast<std::uint64_t>(std::numeric_limits<Integer>::max()) + negative) return false;
  value = static_cast<Integer>(negative ? 0 - magnitude : magnitude);
  return true;
}

// The double nearest to a number with so many places after the point. False where one rounding does not give it: both
// operands must be exact.
inline bool toDouble(const PackedNumber& number, std::int32_t places, double& value) {
  constexpr auto kMost = static_cast<std::int32_t>(kExactPowers.size()) - 1;
  constexpr std::uint64_t kMostExact = std::uint64_t{1} << std::numeric_limits<double>::digits;
  if (places != 0 && (number.magnitude > kMostExact || places > kMost || places < -kMost)) return false;
  value = static_cast<double>(number.magnitude);
  if (places > 0) value /= kExactPowers[static_cast<std::size_t>(places)];
  if (places < 0) value *= kExactPowers[static_cast<std::size_t>(-places)];
  if (number.negative) value = -value;
  return true;
}

}  // namespace oxr::core
