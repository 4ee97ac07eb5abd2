#pragma once

#include <array>
#include <bit>
#include <cstdint>

#include "core/numbertextwrite.hpp"

// The double nearest to a decimal of up to 19 digits, by one multiplication.
//
// The digits, as a whole number moved to the upper end of a register, are multiplied by the reciprocal of the power of
// ten, of which 63 bits are kept. Cutting those makes the upper half of the product less than one too small. So 61 bits
// or more of the quotient are known, a double takes 53 of them, and the rest tells which way to round, unless it lies
// right at the half: then the quotient may be on either side of it, and there is no result.
namespace oxr::core {

class RoundedDecimal {
 public:
  static constexpr std::uint32_t kMaxPlaces = 19;

  // `digits` less `places`, up to kMaxPlaces, after the point. False, seldom, where it is too near to the middle of two
  // doubles.
  static bool round(std::uint64_t digits, std::uint32_t places, double& value) {
    __extension__ using Product = unsigned __int128;
    constexpr int kDoubleBits = 53;
    if (digits == 0) {
      value = 0;
      return true;
    }
    const int free = std::countl_zero(digits);
    const auto [factor, exponent] = kReciprocals[places];
    const auto quotient = static_cast<std::uint64_t>(Product{digits << free} * factor >> 64);
    const int below = std::bit_width(quotient) - kDoubleBits;  // bits that the double has no room for
    const std::uint64_t half = std::uint64_t{1} << (below - 1);
    // The lowest bit is far below the half: it only tells that something follows. The conversion rounds.
    const auto rounded = static_cast<double>(static_cast<std::int64_t>(quotient | 1));
    value = rounded * std::bit_cast<double>(static_cast<std::uint64_t>(1023 + exponent - free) << 52);
    return (quotient & (2 * half - 1)) - (half - 1) > 1;
  }

 private:
  struct Reciprocal {
    std::uint64_t factor;  // from 2^62 on
    int exponent;          // of two: factor * 2^(exponent - 64) is a little less than the reciprocal
  };
  static constexpr auto kReciprocals = [] {
    __extension__ using Dividend = unsigned __int128;
    std::array<Reciprocal, kMaxPlaces + 1> all{};
    for (std::uint32_t places = 0; places <= kMaxPlaces; ++places) {
      const int bits = 62 + std::bit_width(kPowersOfTen[places]);
      all[places] = {static_cast<std::uint64_t>((Dividend{1} << bits) / kPowersOfTen[places]), 64 - bits};
    }
    return all;
  }();
  static_assert(kReciprocals[0].factor == std::uint64_t{1} << 63 && kReciprocals[0].exponent == 1);
};

}  // namespace oxr::core
