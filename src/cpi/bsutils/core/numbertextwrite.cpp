#include "core/numbertextwrite.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "core/digitvectors.hpp"
#include "core/shortestdecimal.hpp"

namespace oxr::core {

namespace {

constexpr unsigned short kZero = '0';

// Two digits as units, for 0 to 99.
using UnitPair = std::array<unsigned short, 2>;
constexpr std::array<UnitPair, 100> kPairs = [] {
  std::array<UnitPair, 100> pairs{};
  for (unsigned i = 0; i < 100; ++i)
    pairs[i] = {static_cast<unsigned short>('0' + i / 10), static_cast<unsigned short>('0' + i % 10)};
  return pairs;
}();

// The eight digits of a number below 10^8, a byte each, the first one lowest: two numbers of four digits, four of two,
// eight of one. 10486 / 2^20 and 103 / 2^10 divide by 100 and by 10 as far as is needed here.
constexpr std::uint64_t bytesOfEight(std::uint64_t number) {
  const std::uint64_t fours = number / 10'000 | number % 10'000 << 32;
  const std::uint64_t hundreds = fours * 10'486 >> 20 & 0x0000007F0000007Fu;
  const std::uint64_t pairs = hundreds | (fours - 100 * hundreds) << 16;
  const std::uint64_t tens = pairs * 103 >> 10 & 0x000F000F000F000Fu;
  return tens | (pairs - 10 * tens) << 8;
}
static_assert(bytesOfEight(12'345'678) == 0x0807060504030201u && bytesOfEight(99'999'999) == 0x0909090909090909u);

// A double's exponent has at most three digits.
std::uint32_t exponentDigits(std::uint32_t exponent) {
  return exponent < 10 ? 1 : exponent < 100 ? 2 : 3;
}

}  // namespace

void IntegerText::write(unsigned short* out) const {
  unsigned short* end = out + length_;
  *out = '-';  // a digit overwrites it where the number is not negative
  std::uint64_t rest = magnitude_;
  // From the end, two digits at a time, which halves the divisions.
  while (rest >= 100) {
    end -= 2;
    std::memcpy(end, &kPairs[rest % 100], sizeof(UnitPair));
    rest /= 100;
  }
  if (rest >= 10)
    std::memcpy(end - 2, &kPairs[rest], sizeof(UnitPair));
  else
    end[-1] = static_cast<unsigned short>('0' + rest);
}

// Zeros after the number bring its first digit to the front of the sixteen.
void IntegerText::writeShort(unsigned short* out) const {
  constexpr std::uint64_t kEight = 100'000'000;
  const std::uint64_t sixteen = magnitude_ * kPowersOfTen[kShortUnits + negative_ - length_];
  *out = '-';
  const WordVector digits{bytesOfEight(sixteen / kEight), bytesOfEight(sixteen % kEight)};
  writeSixteen(std::bit_cast<ByteVector>(digits) + '0', out + negative_);
}

DoubleText::DoubleText(double value) : first_(ByteVector{} + '0'), negative_(std::signbit(value)) {
  constexpr std::uint64_t kEight = 100'000'000;
  const double magnitude = std::abs(value);
  if (magnitude == 0) return;
  const auto [digits, exponent] = shortestDecimal(magnitude);
  const std::uint32_t given = IntegerText::digitCount(digits);
  exponent_ = exponent + static_cast<std::int32_t>(given) - 1;
  // Seventeen digits as one, eight and eight.
  const std::uint64_t all = digits * kPowersOfTen[kMaxDigits - given];
  const std::uint64_t nine = all / kEight;
  const std::uint64_t middle = bytesOfEight(nine % kEight), lower = bytesOfEight(all % kEight);
  first_ += std::bit_cast<ByteVector>(WordVector{middle << 8 | nine / kEight, lower << 8 | middle >> 56});
  last_ = static_cast<unsigned short>('0' + (lower >> 56));
  // Of the last digit that is no zero. Which word it lies in can't be foreseen: a mask instead of a branch.
  const std::uint64_t isLowerZero = lower == 0;
  const std::uint64_t word = lower | (middle & (0 - isLowerZero));
  const auto zeros = static_cast<std::uint32_t>(std::countl_zero(word | 1) / 8 + (word == 0) + 8 * isLowerZero);
  count_ = kMaxDigits - zeros;
}

unsigned short* DoubleText::writeDigits(std::uint32_t first, std::uint32_t end, unsigned short* out) const {
  for (std::uint32_t i = first; i < end; ++i)
    *out++ = i < kMaxDigits - 1 ? first_[i] : last_;
  return out;
}

bool DoubleText::startsWithNines() const {
  constexpr std::uint32_t kNines = 15;
  const auto nines = std::bit_cast<WordVector>((first_ ^ '9') & selectFirst(kNines));
  return (nines[0] | nines[1]) == 0;
}

std::uint32_t DoubleText::length() const {
  const auto distance = static_cast<std::uint32_t>(std::abs(exponent_));
  const std::uint32_t units = exponent_ < 0 ? distance + count_ : std::max(distance + 1, count_);
  return negative_ + units + 1;
}

void DoubleText::writeUsual(unsigned short* out) const {
  *out = '-';  // a digit overwrites it where the number is not negative
  out += negative_;
  if (exponent_ < 0) {
    std::fill_n(out, 8, kZero);  // one before the point and up to four after it
    out[1] = '.';
    out += 1 - exponent_;
    writeSixteen(first_, out);
    out[kMaxDigits - 1] = last_;
    return;
  }
  writePointedSixteen(first_, static_cast<std::uint32_t>(exponent_) + 1, out);
  out[kMaxDigits - 1] = first_[kMaxDigits - 2];  // the point took its place
  out[kMaxDigits] = last_;
}

// Below 1 the zeros after the point come from the exponent; from 1 on, zeros stand for digits that are not there.
void DoubleText::write(unsigned short* out) const {
  if (negative_) *out++ = '-';
  if (exponent_ < 0) {
    *out++ = kZero;
    *out++ = '.';
    writeDigits(0, count_, std::fill_n(out, -exponent_ - 1, kZero));
    return;
  }
  const auto whole = static_cast<std::uint32_t>(exponent_) + 1;
  const std::uint32_t wholeDigits = std::min(whole, count_);
  out = std::fill_n(writeDigits(0, wholeDigits, out), whole - wholeDigits, kZero);
  *out++ = '.';
  writeDigits(wholeDigits, count_, out);
}

std::uint32_t DoubleText::exponentialLength() const {
  return negative_ + count_ + 3 + exponentDigits(static_cast<std::uint32_t>(std::abs(exponent_)));
}

void DoubleText::writeExponential(unsigned short* out) const {
  if (negative_) *out++ = '-';
  writeDigits(0, 1, out++);
  *out++ = '.';
  out = writeDigits(1, count_, out);
  *out++ = 'E';
  *out++ = exponent_ < 0 ? u'-' : u'+';
  auto rest = static_cast<std::uint32_t>(std::abs(exponent_));
  for (std::uint32_t i = exponentDigits(rest); i-- != 0; rest /= 10)
    out[i] = static_cast<unsigned short>('0' + rest % 10);
}

}  // namespace oxr::core
