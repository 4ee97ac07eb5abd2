#include "cpalloc.hpp"

#include <cstdlib>

#include "kelabend.hpp"

namespace {

void* reported(void* block) {
  if (block == nullptr) KelAbend::newHandler();
  return block;
}

}  // namespace

void* cpMalloc(unsigned long size) {
  return reported(std::malloc(size));
}

void* cpRealloc(void* pointer, unsigned long size) {
  return reported(std::realloc(pointer, size));
}

void cpFree(void* pointer) {
  std::free(pointer);
}
