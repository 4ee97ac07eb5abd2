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

}  // namespace oxr::test
