#pragma once

#include <array>
#include <string>

#include "cputils.hpp"
#include "dataconv.hpp"
#include "support/support.hpp"

namespace oxr {

// The two bytes of a pad character as a code page reads them, low byte first on every machine; zeros behind.
constexpr std::array<unsigned char, 20> padCharBytes(unsigned short padChar) {
  return {static_cast<unsigned char>(padChar & 0xFF), static_cast<unsigned char>(padChar >> 8)};
}
inline std::string padCharDump(unsigned short padChar) {
  return CPUtils::binaryDump(padCharBytes(padChar).data(), 2);
}

// The code unit of a pad that is a value in the code page. The checked form reads as many bytes as the page's shortest
// character has and refuses a pad that this does not hold; the unchecked one reads the low byte, whatever is above it.
unsigned short checkedPadUnit(DataCnv& cnv, unsigned short padChar, const FailureSite& site);
unsigned short uncheckedPadUnit(DataCnv& cnv, unsigned short padChar);

}  // namespace oxr
