#pragma once

#include <cstdint>

// The float format routines a second time, slowly: on 32-bit words, a bit at a time, as a machine without longer words
// does them. What the library computes on whole patterns is held against this, bit for bit.
namespace oxr::fuzz::words {

using Word = std::uint32_t;

struct Double {
  Word high;
  Word low;
};
constexpr Double split(std::uint64_t bits) {
  return {static_cast<Word>(bits >> 32), static_cast<Word>(bits)};
}
constexpr std::uint64_t joined(const Double& value) {
  return std::uint64_t{value.high} << 32 | value.low;
}

constexpr bool bit(Word word, int place) {
  return (word >> place & 1) != 0;
}
constexpr int exponentField(Word word, Word mask, int place) {
  return static_cast<int>((word & mask) >> place);
}
// A mantissa over two words, by one bit.
constexpr void shiftRight(Double& m) {
  m.low = m.low >> 1 | (m.high & 1) << 31;
  m.high >>= 1;
}
constexpr void shiftLeft(Double& m) {
  m.high = m.high << 1 | m.low >> 31;
  m.low <<= 1;
}

constexpr Word ieeeFromHex(Word w) {
  if ((w & 0x7FFFFFFF) == 0) return w;
  const Word sign = w & 0x80000000;
  int exponent = 4 * exponentField(w, 0x7F000000, 24) - 256;
  Word fraction = w & 0x00FFFFFF;
  if (fraction != 0) {
    while (!bit(fraction, 24)) {
      fraction <<= 1;
      --exponent;
    }
  }
  const int biased = exponent + 127;
  if (biased > 254) return sign | 0x7F7FFFFF;
  if (biased < 1) return sign;
  return sign | static_cast<Word>(biased) << 23 | (fraction & 0x00FFFFFF) >> 1;
}

constexpr Word hexFromIeee(Word w) {
  if ((w & 0x7FFFFFFF) == 0) return w;
  const Word sign = w & 0x80000000;
  const int exponent = exponentField(w, 0x7F800000, 23) - 127;
  Word mantissa = (w & 0x007FFFFF) << 1 | 0x01000000;
  int power = 0;
  if (exponent >= 0) {
    mantissa <<= exponent & 3;
    power = exponent >> 2;
  } else {
    mantissa >>= -exponent & 3;
    power = -(-exponent >> 2);
  }
  if ((mantissa & 0x0F000000) != 0) {
    mantissa >>= 4;
    power += 1;
  }
  if (power + 64 > 127) return sign | 0x7FFFFFFF;
  if (power + 64 < 0) return sign;
  return sign | static_cast<Word>(power + 64) << 24 | mantissa;
}

constexpr Double ieeeFromHex(Double w) {
  if ((w.high & 0x7FFFFFFF) == 0) return w;
  const Word sign = w.high & 0x80000000;
  int exponent = 4 * (exponentField(w.high, 0x7F000000, 24) - 64) - 4;
  Double m = {w.high & 0x00FFFFFF, w.low};
  while ((m.high & ~Word{0x003FFFFF}) != 0) {
    shiftRight(m);
    ++exponent;
  }
  while (bit(m.high, 21)) {
    const Word oldHigh = m.high;
    Word low = 0;
    if (m.low == 0xFFFFFFFF)
      m.high += 1;
    else
      low = (m.low + 1) >> 1;
    m.low = (oldHigh & 1) << 31 | low;
    m.high >>= 1;
    ++exponent;
  }
  Word fraction = 0;
  if (m.high != 0) {
    while (!bit(m.high, 20)) {
      shiftLeft(m);
      --exponent;
    }
    fraction = m.high & 0x000FFFFF;
  }
  const int biased = exponent + 1023;
  if (biased > 2046) return {sign | 0x7FEFFFFF, 0xFFFFFFFF};
  if (biased < 1) return {sign, 0};
  return {sign | static_cast<Word>(biased) << 20 | fraction, m.low};
}

constexpr Double hexFromIeee(Double w) {
  if ((w.high & 0x7FFFFFFF) == 0) return w;
  const Word sign = w.high & 0x80000000;
  const int exponent = exponentField(w.high, 0x7FF00000, 20) - 1023;
  Double m = {w.high & 0x000FFFFF, w.low};
  for (int i = 0; i < 4; ++i)
    shiftLeft(m);
  m.high |= 0x01000000;
  int power = 0;
  if (exponent >= 0) {
    for (int i = 0; i < (exponent & 3); ++i)
      shiftLeft(m);
    power = exponent >> 2;
  } else {
    for (int i = 0; i < (-exponent & 3); ++i)
      shiftRight(m);
    power = -(-exponent >> 2);
  }
  if ((m.high & 0x0F000000) != 0) {
    for (int i = 0; i < 4; ++i)
      shiftRight(m);
    power += 1;
  }
  if (power + 64 > 127) return {sign | 0x7FFFFFFF, 0xFFFFFFFF};
  if (power + 64 < 0) return {sign, 0};
  return {sign | static_cast<Word>(power + 64) << 24 | m.high, m.low};
}

}  // namespace oxr::fuzz::words
