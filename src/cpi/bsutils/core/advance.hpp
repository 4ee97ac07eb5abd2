#pragma once

#include <cstddef>

namespace oxr::core {

// How far a conversion came: elements taken from its input and put to its output.
struct Advance {
  std::size_t read = 0;
  std::size_t written = 0;

  friend Advance operator+(const Advance& first, const Advance& rest) {
    return {first.read + rest.read, first.written + rest.written};
  }
};

}  // namespace oxr::core
