#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace oxr::rec {

// "1 record", "2 records".
inline std::string counted(std::uint64_t count, std::string_view one) {
  return std::to_string(count) + ' ' + std::string(one) + (count == 1 ? "" : "s");
}

}  // namespace oxr::rec
