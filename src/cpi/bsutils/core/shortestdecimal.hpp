#pragma once

#include <cstdint>

namespace oxr::core {

// digits * 10^exponent.
struct Decimal {
  std::uint64_t digits = 0;  // up to 17 of them, the last ones may be zeros
  std::int32_t exponent = 0;
};

// The decimal of the fewest digits that reads back as the same double, and of several such the nearest to it.
// REQUIRES: finite and above zero.
Decimal shortestDecimal(double value);

}  // namespace oxr::core
