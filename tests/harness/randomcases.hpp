#pragma once

#include <cstdlib>
#include <string>

namespace oxr::test {

// How many random cases a differential test runs: `usual`, or what OXR_RANDOM_CASES says in the environment.
inline long randomCases(long usual) {
  const char* const wanted = std::getenv("OXR_RANDOM_CASES");
  return wanted != nullptr ? std::stol(wanted) : usual;
}

}  // namespace oxr::test
