#pragma once

#include <unicode/uchar.h>

#include <array>

// Small tests of characters.
class KelUtility {
 public:
  // Properties of the code units up to U+00FF, a bit each. Bit 0: one of the digits 0 to 9.
  static constexpr std::array<unsigned char, 256> iCheckArray = [] {
    std::array<unsigned char, 256> properties{};
    for (std::size_t digit = '0'; digit <= '9'; ++digit)
      properties[digit] = 1;
    return properties;
  }();

  // True for "0" to "9", and above U+00FF for every decimal digit of Unicode.
  static bool isDigit(unsigned short c) { return c <= 0xFF ? (iCheckArray[c] & 1) != 0 : u_isdigit(c) != 0; }
};
