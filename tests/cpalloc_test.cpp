#include "cpalloc.hpp"

#include <gtest/gtest.h>

#include <cstring>

#include "support/tracing.hpp"

// An address sanitizer ends the program where memory cannot be had, unless it is told otherwise.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options() {
  return "allocator_may_return_null=1";
}

namespace oxr::test {
namespace {

TEST(CpAlloc, GrowsABlockAndKeepsItsBytes) {
  void* block = cpRealloc(nullptr, 3);
  std::memcpy(block, "abc", 3);
  block = cpRealloc(block, 5000);
  EXPECT_EQ(std::memcmp(block, "abc", 3), 0);
  cpFree(block);
  cpFree(nullptr);
}

TEST(CpAlloc, TellsTheHostWhenThereIsNoMemory) {
  constexpr unsigned long kImpossible = ~0ul - 100;
  const char* const event = "KelAbend::newHandler: Out of memory\n";
  void* block = nullptr;
  EXPECT_EQ(tracedAt(0, [&] { block = cpMalloc(16); }), "");
  EXPECT_EQ(tracedAt(0, [] { EXPECT_EQ(cpMalloc(kImpossible), nullptr); }), event);
  EXPECT_EQ(tracedAt(0, [&] { EXPECT_EQ(cpRealloc(block, kImpossible), nullptr); }), event);
  std::memset(block, 0x5A, 16);  // still the caller's
  cpFree(block);
}

}  // namespace
}  // namespace oxr::test
