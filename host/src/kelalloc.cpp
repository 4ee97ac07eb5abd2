#include "kelalloc.hpp"

#include <algorithm>
#include <new>

#include "kelabend.hpp"

void* kelMalloc(unsigned long size) {
  // For no bytes malloc may answer null, which would look like a want of memory.
  void* const block = std::malloc(std::max(size, 1ul));
  if (block == nullptr) {
    KelAbend::newHandler();
    throw std::bad_alloc();
  }
  return block;
}
