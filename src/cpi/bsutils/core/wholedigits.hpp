#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "kelunits.hpp"

// The digits of the whole number that remains of a canonical decimal when its point moves to the right and the rest is
// cut: what a field without a point of its own takes. Text is read once, from the front, and nothing is copied but
// digits.
//
//   "-12.345", 2 places   ->   1234, negative
namespace oxr::core {

struct IntegerDigits {
  bool negative;
  UnitView digits;      // without leading zeros
  std::uint64_t count;  // of all digits; where there are more than `digits` shows, those are zeros without room
};
using DigitBuffer = std::array<unsigned short, 64>;

// Moves the point by `places` and cuts the rest. `text` is zero-terminated; the digits go to `buffer`. False for text
// that is not canonical (a sign, digits, one point) or too long for the buffer.
inline bool integerDigits(const unsigned short* text, int places, DigitBuffer& buffer, IntegerDigits& number) {
  constexpr std::size_t kNoPoint = ~std::size_t{0};
  const bool minus = *text == '-';
  if (minus || *text == '+') ++text;
  std::size_t count = 0;
  std::size_t point = kNoPoint;
  for (; *text != 0; ++text) {
    if (static_cast<unsigned>(*text) - '0' <= 9 && count < buffer.size()) {
      buffer[count++] = *text;
    } else {
      if (*text != '.' || point != kNoPoint) return false;
      point = count;
    }
  }
  const std::int64_t kept = static_cast<std::int64_t>(point != kNoPoint ? point : count) + places;
  // A sign is a position like any other when the point moves to the left: where it falls after the point it is cut.
  number.negative = minus && kept >= 0;
  const std::size_t whole = kept <= 0 ? 0 : static_cast<std::size_t>(kept);
  std::size_t used = std::min(count, whole);
  std::size_t zeros = 0;
  while (zeros < used && buffer[zeros] == '0')
    ++zeros;
  number.count = zeros == used ? 0 : whole - zeros;
  if (number.count != 0)
    while (used < whole && used < buffer.size())
      buffer[used++] = '0';
  number.digits = UnitView(buffer.data() + zeros, used - zeros);
  return true;
}

}  // namespace oxr::core
