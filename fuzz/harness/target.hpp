#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "fuzz/harness/choices.hpp"

namespace oxr::fuzz {

// The body of a fuzz target: runs a check on what the fuzzer found, and stops the process at a disagreement.
//
// Example:
//   extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
//     return oxr::fuzz::runTarget(oxr::fuzz::checkPacked, data, size);
//   }
inline int runTarget(void (*check)(Choices&), const std::uint8_t* data, std::size_t size) {
  try {
    Choices choices({data, size});
    check(choices);
  } catch (const Disagreement& disagreement) {
    std::fprintf(stderr, "%s\n", disagreement.what());
    std::abort();
  }
  return 0;
}

}  // namespace oxr::fuzz
