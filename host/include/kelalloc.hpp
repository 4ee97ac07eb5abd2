#pragma once

#include <cstdlib>
#include <memory>
#include <type_traits>

#include "kelexport.hpp"

// A block of at least `size` bytes for scratch text; release it with free. Never null: without memory,
// KelAbend::newHandler() is called and std::bad_alloc thrown.
KELHOST_EXPORT void* kelMalloc(unsigned long size);

namespace oxr {

// How a KelBlock gives its block back.
struct FreeBlock {
  // Takes null too, and then does nothing.
  void operator()(void* block) const noexcept { std::free(block); }
};
// Owns a block of kelMalloc. release() hands it to a taker that calls free.
template <class T>
using KelBlock = std::unique_ptr<T[], FreeBlock>;

// A block for `count` objects of a plain type, uninitialised. `count` times the size must fit an unsigned long.
//
// Example:
//   oxr::KelBlock<unsigned short> units = oxr::allocateBlock<unsigned short>(length);
template <class T>
KelBlock<T> allocateBlock(unsigned long count) {
  static_assert(std::is_trivially_default_constructible_v<T> && std::is_trivially_destructible_v<T>);
  return KelBlock<T>(static_cast<T*>(kelMalloc(count * sizeof(T))));
}

}  // namespace oxr
