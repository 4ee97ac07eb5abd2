#pragma once

#include <cstdint>

#include "support/fastway.hpp"

namespace oxr::test {

// How often `call` was sent a general way: 0 says that every guard it passed let it go fast.
template <class Call>
std::uint64_t generalWays(Call call) {
  const std::uint64_t before = generalWaysTaken();
  call();
  return generalWaysTaken() - before;
}

}  // namespace oxr::test
