#pragma once

#include <string>
#include <string_view>

namespace oxr::test {

// The bytes of "C1C2F0".
inline std::string fromHex(std::string_view digits) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
    bytes += static_cast<char>(std::stoi(std::string(digits.substr(i, 2)), nullptr, 16));
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
