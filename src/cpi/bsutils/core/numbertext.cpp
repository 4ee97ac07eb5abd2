#include "core/numbertext.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

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

unsigned short* put(unsigned short* out, const char* digits, std::uint32_t count) {
  return std::copy_n(digits, count, out);
}

std::uint32_t exponentDigits(std::uint32_t exponent) {
  return exponent < 10 ? 1 : exponent < 100 ? 2 : 3;
}

}  // namespace

void IntegerText::write(unsigned short* out) const {
  unsigned short* end = out + length_;
  *out = '-';
  std::uint64_t rest = magnitude_;
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

DoubleText::DoubleText(double value) : negative_(std::signbit(value)) {
  char text[32];  // "d.ddddddddddddddddE-ddd", and room to spare
  const char* const end = std::to_chars(text, text + sizeof text, std::abs(value), std::chars_format::scientific).ptr;
  digits_[count_++] = text[0];
  const char* in = text + 1;
  if (*in == '.')
    while (*++in != 'e')
      digits_[count_++] = *in;
  const bool isSmall = *++in == '-';  // in front of the exponent there is always a sign
  while (++in != end)
    exponent_ = exponent_ * 10 + (*in - '0');
  if (isSmall) exponent_ = -exponent_;
}

std::uint32_t DoubleText::plainLength() const {
  const auto distance = static_cast<std::uint32_t>(std::abs(exponent_));
  const std::uint32_t units = exponent_ < 0 ? distance + count_ : std::max(distance + 1, count_);
  return negative_ + units + 1;
}

void DoubleText::writePlain(unsigned short* out) const {
  if (negative_) *out++ = '-';
  if (exponent_ < 0) {
    *out++ = kZero;
    *out++ = '.';
    put(std::fill_n(out, -exponent_ - 1, kZero), digits_, count_);
    return;
  }
  const auto whole = static_cast<std::uint32_t>(exponent_) + 1;
  const std::uint32_t front = std::min(whole, count_);
  out = std::fill_n(put(out, digits_, front), whole - front, kZero);
  *out++ = '.';
  put(out, digits_ + front, count_ - front);
}

std::uint32_t DoubleText::exponentialLength() const {
  return negative_ + count_ + 3 + exponentDigits(static_cast<std::uint32_t>(std::abs(exponent_)));
}

void DoubleText::writeExponential(unsigned short* out) const {
  if (negative_) *out++ = '-';
  *out++ = static_cast<unsigned short>(digits_[0]);
  *out++ = '.';
  out = put(out, digits_ + 1, count_ - 1);
  *out++ = 'E';
  *out++ = exponent_ < 0 ? '-' : '+';
  auto rest = static_cast<std::uint32_t>(std::abs(exponent_));
  for (std::uint32_t i = exponentDigits(rest); i-- != 0; rest /= 10)
    out[i] = static_cast<unsigned short>('0' + rest % 10);
}

}  // namespace oxr::core
