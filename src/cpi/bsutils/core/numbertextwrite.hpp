#pragma once

#include <array>
#include <cstdint>

#include "core/digitvectors.hpp"

// Integers and doubles as text, written in place.
//
// Each number is first reduced to what its text is made of: a magnitude, or digits and an exponent. The length follows
// from that before the first unit is written, so that the caller can make exactly the room that is needed.
namespace oxr::core {

// The decimal digits of an integer, with "-" where it is negative.
//
// Example:
//   const IntegerText number(-12);
//   number.write(text.resizeForOverwrite(number.length()));  // "-12"
class IntegerText {
 public:
  // The magnitude is unsigned, so that the least value has one.
  explicit constexpr IntegerText(std::int64_t value)
      : magnitude_(value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value)),
        length_(digitCount(magnitude_) + (value < 0)),
        negative_(value < 0) {}

  std::uint32_t length() const { return length_; }
  void write(unsigned short* out) const;

  // Texts of up to kShortUnits are written at once, without a branch on a digit or on how many there are. REQUIRES:
  // such a text, and room for one unit more than kShortUnits, whatever the length.
  static constexpr std::uint32_t kShortUnits = 16;
  bool isShort() const { return length_ <= kShortUnits; }
  void writeShort(unsigned short* out) const;

  static constexpr std::uint32_t digitCount(std::uint64_t value);

 private:
  std::uint64_t magnitude_;
  std::uint32_t length_;
  bool negative_;
};

inline constexpr auto kPowersOfTen = [] {
  std::array<std::uint64_t, 20> powers{1};
  for (std::size_t i = 1; i < powers.size(); ++i)
    powers[i] = powers[i - 1] * 10;
  return powers;
}();

// The powers of ten that a double holds exactly.
inline constexpr auto kExactPowers = [] {
  std::array<double, 23> powers{1.0};
  for (std::size_t i = 1; i < powers.size(); ++i)
    powers[i] = powers[i - 1] * 10;
  return powers;
}();
static_assert(kExactPowers[22] == 1e22);

// 1233 / 4096 is a little below log10(2), near enough for 64 bits, so that the guess is the count or one less than it.
constexpr std::uint32_t IntegerText::digitCount(std::uint64_t value) {
  const auto bits = static_cast<std::uint32_t>(64 - __builtin_clzll(value | 1));
  const std::uint32_t guess = bits * 1233 >> 12;
  return guess + (value >= kPowersOfTen[guess]) + (value == 0);
}
static_assert(IntegerText::digitCount(0) == 1 && IntegerText::digitCount(9) == 1 && IntegerText::digitCount(10) == 2);
static_assert(IntegerText::digitCount(~0ull) == 20);

// The shortest digits that read back as the same finite double, in either notation. The point is always there:
//
//   value      plain       exponential
//   1500       1500.       1.5E+3
//   -0.025     -0.025      -2.5E-2
//   0          0.          0.E+0
class DoubleText {
 public:
  // REQUIRES: the value is finite.
  explicit DoubleText(double value);

  // Of the plain text.
  std::uint32_t length() const;
  void write(unsigned short* out) const;
  // The plain text of 0, and of a number from 10^-5 to below 10^15, is written at once, without a branch on how many
  // digits there are. REQUIRES: such a number, and room for kUsualUnits, whatever the length.
  static constexpr std::uint32_t kUsualUnits = 24;
  bool isUsual() const { return exponent_ >= -5 && exponent_ < 15; }
  void writeUsual(unsigned short* out) const;

  std::uint32_t exponentialLength() const;
  void writeExponential(unsigned short* out) const;

  // Whether the first fifteen digits are nines: the number is a little less than a power of ten.
  bool startsWithNines() const;

 private:
  static constexpr std::uint32_t kMaxDigits = 17;

  unsigned short* writeDigits(std::uint32_t first, std::uint32_t end, unsigned short* out) const;

  ByteVector first_;           // sixteen digits, as characters; zeros follow those that count
  unsigned short last_ = '0';  // and the seventeenth
  std::uint32_t count_ = 1;    // of digits; the last one is no zero unless it is the only one
  std::int32_t exponent_ = 0;  // of the first digit
  bool negative_;
};

}  // namespace oxr::core
