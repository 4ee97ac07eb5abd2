#pragma once

#include <cstddef>

namespace oxr::python {

// Beyond these a number may pass 64 bits.
inline constexpr int kDigitsOfInteger = 18;

constexpr bool isDigit(unsigned short unit) {
  return unit >= '0' && unit <= '9';
}

}  // namespace oxr::python
