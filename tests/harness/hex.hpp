#pragma once

#include <string>
#include <string_view>

namespace oxr::test {

// The bytes of "C1 C2,F0": blanks and commas do not count.
inline std::string fromHex(std::string_view digits) {
  std::string bytes, pair;
  for (const char c : digits) {
    if (c == ' ' || c == ',') continue;
    pair += c;
    if (pair.size() < 2) continue;
    bytes += static_cast<char>(std::stoi(pair, nullptr, 16));
    pair.clear();
  }
  return bytes;
}

// "C1C2F0" for the bytes.
inline std::string toHex(std::string_view bytes) {
  std::string digits;
  for (const char byte : bytes) {
    digits += "0123456789ABCDEF"[static_cast<unsigned char>(byte) >> 4];
    digits += "0123456789ABCDEF"[byte & 15];
  }
  return digits;
}

}  // namespace oxr::test
