#pragma once

#include <span>
#include <string>

namespace oxr::rec {

// "00A0005C"; with a separator "00 A0 00 5C".
inline std::string hexText(std::span<const unsigned char> bytes, const char* separator = "") {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const unsigned char byte : bytes) {
    if (!text.empty()) text += separator;
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

}  // namespace oxr::rec
