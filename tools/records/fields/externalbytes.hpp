#pragma once

#include <cstdint>
#include <cstring>

#include "dataconv.hpp"

// Numbers in DISPLAY usage as bytes: a quick look that knows the good ones, in code pages where a digit is a byte. It
// comes before each conversion, so that this lets no point, comma or second sign pass that a picture has no place for.

namespace oxr::rec {

// Whether `size` bytes are digits, `zero` being that of the digit 0.
inline bool areDigits(const unsigned char* bytes, std::uint32_t size, unsigned char zero) {
  constexpr std::uint64_t kEach = 0x0101010101010101U;
  // A digit is 0 to 9 once the zero is taken off bit by bit. Added to 0x76 it stays below 0x80.
  const auto notDigits = [zeros = kEach * zero](std::uint64_t eight) {
    const std::uint64_t digits = eight ^ zeros;
    return (digits | (digits + 0x76 * kEach)) & 0x80 * kEach;
  };
  const auto eightAt = [](const unsigned char* at) {
    std::uint64_t eight;
    std::memcpy(&eight, at, sizeof eight);
    return eight;
  };
  const auto fourAt = [](const unsigned char* at) {
    std::uint32_t four;
    std::memcpy(&four, at, sizeof four);
    return std::uint64_t{four};
  };
  if (size >= 8) {
    std::uint64_t bad = notDigits(eightAt(bytes + size - 8));
    for (std::uint32_t i = 0; i + 8 < size; i += 8)
      bad |= notDigits(eightAt(bytes + i));
    return bad == 0;
  }
  // Loads that overlap look at a byte twice.
  if (size >= 4) return notDigits(fourAt(bytes) | fourAt(bytes + size - 4) << 32) == 0;
  for (std::uint32_t i = 0; i < size; ++i)
    if (static_cast<unsigned char>(bytes[i] ^ zero) > 9) return false;
  return true;
}

// The bytes of a code page that such numbers are made of.
struct ExternalBytes {
  unsigned char zero = 0;  // of the digit 0; 0 where digits are no bytes
  unsigned char plus = 0;
  unsigned char minus = 0;
  // A bit for each upper half byte that a digit may have which carries a sign. None: its letters are all for the
  // conversion to tell.
  std::uint16_t signZones = 0;

  // True for a number that is good. False for one that is not, or that needs a closer look.
  [[gnu::noinline]] bool areGood(const unsigned char* bytes, std::uint32_t size, ESign sign) const {
    if (zero == 0) return false;
    switch (sign) {
      case eSignLeadingIncluded:
        return mayCarrySign(bytes[0]) && areDigits(bytes + 1, size - 1, zero);
      case eSignTrailingIncluded:
        return mayCarrySign(bytes[size - 1]) && areDigits(bytes, size - 1, zero);
      case eSignLeadingSeparate:
        return size > 1 && isSign(bytes[0]) && areDigits(bytes + 1, size - 1, zero);
      case eSignTrailingSeparate:
        return size > 1 && isSign(bytes[size - 1]) && areDigits(bytes, size - 1, zero);
      default:
        return areDigits(bytes, size, zero);
    }
  }

 private:
  bool isSign(unsigned char byte) const { return byte == plus || byte == minus; }
  bool mayCarrySign(unsigned char byte) const {
    return signZones == 0 || ((signZones >> (byte >> 4) & 1) != 0 && (byte & 15) <= 9);
  }
};

}  // namespace oxr::rec
