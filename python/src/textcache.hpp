#pragma once

#include <pybind11/pybind11.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "tape.hpp"

namespace oxr::python {

// The objects that texts become, so that one that comes again is not made again: columns of codes have few values. A
// column whose texts hardly ever come again is no longer looked up. To be used with the interpreter held.
class TextCache {
 public:
  // One of so many caches, which together have a bound.
  explicit TextCache(std::size_t caches) : most_(std::bit_floor(std::min(kSlots, kAllSlots / caches + 1))) {}

  // What newScalar makes of these.
  pybind11::object get(const Head& head, const char* bytes);

 private:
  static constexpr std::size_t kSlots = 2048, kAllSlots = std::size_t{1} << 18, kLongest = 24;
  struct Slot {
    char bytes[kLongest];
    std::size_t size = 0;
    pybind11::object text{};
  };
  std::size_t most_;  // a power of two
  std::vector<Slot> slots_;
  std::uint32_t hits_ = 0;
  std::uint32_t misses_ = 0;
};

}  // namespace oxr::python
