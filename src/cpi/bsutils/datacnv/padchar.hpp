#pragma once

#include <array>
#include <string>

#include "cputils.hpp"
#include "dataconv.hpp"
#include "support/support.hpp"

// A pad character comes as 16 bits and a flag: it is a code unit of the text, or a value in the code page. The families
// that trim and pad share what becomes of a value in the code page.
namespace oxr {

// The two bytes of such a value as a code page reads them, low byte first on every machine; zeros follow.
constexpr std::array<unsigned char, 20> padCharBytes(unsigned short padChar) {
  return {static_cast<unsigned char>(padChar & 0xFF), static_cast<unsigned char>(padChar >> 8)};
}
// Those two in hex digits, as failures show them.
inline std::string padCharDump(unsigned short padChar) {
  return CPUtils::binaryDump(padCharBytes(padChar).data(), 2);
}

// The code unit of a pad that is a value in the code page. The checked form reads as many bytes as the page's shortest
// character has and refuses a pad that these do not hold; the unchecked one reads the low byte, whatever is above it.
// Which of the two a member takes is a part of what it promises: Padding.ExtendsTexts,
// Trimming.RefusesABadPadForEveryTrimType.
unsigned short checkedPadUnit(DataCnv& cnv, unsigned short padChar, const FailureSite& site);
unsigned short uncheckedPadUnit(DataCnv& cnv, unsigned short padChar);

}  // namespace oxr
