#include "kelalloc.hpp"

#include <algorithm>
#include <new>

#include "kelabend.hpp"

void* kelMalloc(unsigned long size) {
  void* const block = std::malloc(std::max(size, 1ul));
  if (block == nullptr) {
    KelAbend::newHandler();
    throw std::bad_alloc();
  }
  return block;
}
