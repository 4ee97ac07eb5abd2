#include "core/numbertextwrite.hpp"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

#include "core/digitvectors.hpp"

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

// The exponent of the power of two that a normal number is at least.
std::int32_t binaryExponent(double magnitude) {
  return static_cast<std::int32_t>(std::bit_cast<std::uint64_t>(magnitude) >> 52) - 1023;
}

// Divides a number by a power of ten if nothing is left over.
template <std::uint32_t kZeros>
void dropZeros(std::uint64_t& number) {
  constexpr std::uint64_t kPower = kPowersOfTen[kZeros];  // a constant: division by it is a multiplication
  if (number % kPower == 0) number /= kPower;
}

// Takes the trailing zeros off a number of 1 to 16 digits: eight of them, then four, two and one are at most fifteen.
std::uint64_t withoutTrailingZeros(std::uint64_t number) {
  dropZeros<8>(number);
  dropZeros<4>(number);
  dropZeros<2>(number);
  dropZeros<1>(number);
  return number;
}

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

DoubleText::DoubleText(double value) : negative_(std::signbit(value)) {
  const double magnitude = std::abs(value);
  if (!takeShort(magnitude)) takeAny(magnitude);
}

// Serves numbers of up to 15 digits and of usual size. No two of them are the same double, so that the one that reads
// back as the double is its shortest text. Scaled to 15 digits before the point, such a number is off by less than a
// quarter after the multiplication, and the division, of two exact numbers, is what reading does.
bool DoubleText::takeShort(double magnitude) {
  constexpr double kLimit = 1e15;
  constexpr double kHalf = 0.5;
  if (magnitude == 0) {
    digits_[count_++] = kZero;
    return true;
  }
  if (magnitude < 1e-7 || magnitude >= kLimit) return false;
  // The guess is the number of places that fit or one more, and 22 at most.
  std::int32_t places = 14 - (binaryExponent(magnitude) * 1233 >> 12);
  double scaled = magnitude * kExactPowers[static_cast<std::size_t>(places)];
  if (scaled >= kLimit) scaled = magnitude * kExactPowers[static_cast<std::size_t>(--places)];
  // Where this is not the nearest integer, the division tells.
  const auto number = static_cast<std::int64_t>(scaled + kHalf);
  if (static_cast<double>(number) / kExactPowers[static_cast<std::size_t>(places)] != magnitude) return false;
  exponent_ = static_cast<std::int32_t>(IntegerText::digitCount(static_cast<std::uint64_t>(number))) - 1 - places;
  const IntegerText digits(static_cast<std::int64_t>(withoutTrailingZeros(static_cast<std::uint64_t>(number))));
  count_ = digits.length();
  digits.write(digits_);  // by pairs: what is copied from here next would wait for a vector
  return true;
}

// Serves every number: the standard library finds the shortest digits, and its text is taken apart.
void DoubleText::takeAny(double magnitude) {
  char text[32];  // "d.ddddddddddddddddE-ddd", and room to spare
  const char* const end = std::to_chars(text, text + sizeof text, magnitude, std::chars_format::scientific).ptr;
  digits_[count_++] = static_cast<unsigned char>(text[0]);
  const char* in = text + 1;
  if (*in == '.')
    while (*++in != 'e')
      digits_[count_++] = static_cast<unsigned char>(*in);
  const bool isSmall = *++in == '-';  // there is always a sign
  while (++in != end)
    exponent_ = exponent_ * 10 + (*in - '0');
  if (isSmall) exponent_ = -exponent_;
}

bool DoubleText::startsWithNines() const {
  constexpr std::uint32_t kNines = 15;
  return count_ >= kNines && std::all_of(digits_, digits_ + kNines, [](unsigned short digit) { return digit == '9'; });
}

std::uint32_t DoubleText::plainLength() const {
  const auto distance = static_cast<std::uint32_t>(std::abs(exponent_));
  const std::uint32_t units = exponent_ < 0 ? distance + count_ : std::max(distance + 1, count_);
  return negative_ + units + 1;
}

// Below 1 the zeros after the point come from the exponent; from 1 on, zeros stand for digits that are not there.
void DoubleText::writePlain(unsigned short* out) const {
  if (negative_) *out++ = '-';
  if (exponent_ < 0) {
    *out++ = kZero;
    *out++ = '.';
    std::copy_n(digits_, count_, std::fill_n(out, -exponent_ - 1, kZero));
    return;
  }
  const auto whole = static_cast<std::uint32_t>(exponent_) + 1;
  const std::uint32_t wholeDigits = std::min(whole, count_);
  out = std::fill_n(std::copy_n(digits_, wholeDigits, out), whole - wholeDigits, kZero);
  *out++ = '.';
  std::copy_n(digits_ + wholeDigits, count_ - wholeDigits, out);
}

std::uint32_t DoubleText::exponentialLength() const {
  return negative_ + count_ + 3 + exponentDigits(static_cast<std::uint32_t>(std::abs(exponent_)));
}

void DoubleText::writeExponential(unsigned short* out) const {
  if (negative_) *out++ = '-';
  *out++ = digits_[0];
  *out++ = '.';
  out = std::copy_n(digits_ + 1, count_ - 1, out);
  *out++ = 'E';
  *out++ = exponent_ < 0 ? u'-' : u'+';
  auto rest = static_cast<std::uint32_t>(std::abs(exponent_));
  for (std::uint32_t i = exponentDigits(rest); i-- != 0; rest /= 10)
    out[i] = static_cast<unsigned short>('0' + rest % 10);
}

}  // namespace oxr::core
