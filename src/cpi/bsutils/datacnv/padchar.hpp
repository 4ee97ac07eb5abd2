#pragma once

#include <array>
#include <string>

#include "cputils.hpp"

namespace oxr {

// The two bytes of a pad character as a code page reads them, low byte first on every machine; zeros behind.
constexpr std::array<unsigned char, 20> padCharBytes(unsigned short padChar) {
  return {static_cast<unsigned char>(padChar & 0xFF), static_cast<unsigned char>(padChar >> 8)};
}
inline std::string padCharDump(unsigned short padChar) {
  return CPUtils::binaryDump(padCharBytes(padChar).data(), 2);
}

}  // namespace oxr
