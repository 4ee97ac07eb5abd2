#include "cpalloc.hpp"

#include <gtest/gtest.h>

#include <cstring>

#include "harness/tracing.hpp"

// An address sanitizer ends the program where memory cannot be had, unless it is told otherwise.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options() {
  return "allocator_may_return_null=1";
}

namespace oxr::test {
namespace {

TEST(CpAlloc, TellsTheHostWhenThereIsNoMemory) {
  constexpr unsigned long kImpossible = ~0ul - 100;
  const char* const event = "KelAbend::newHandler: Out of memory\n";
  void* block = nullptr;
  EXPECT_EQ(tracedAt(0, [&] { block = cpRealloc(cpMalloc(3), 5000); }), "");
  std::memset(block, 0x5A, 5000);
  EXPECT_EQ(tracedAt(0, [] { EXPECT_EQ(cpMalloc(kImpossible), nullptr); }), event);
  EXPECT_EQ(tracedAt(0, [&] { EXPECT_EQ(cpRealloc(block, kImpossible), nullptr); }), event);
  EXPECT_EQ(static_cast<char*>(block)[4999], 0x5A);  // still the caller's
  cpFree(block);
  cpFree(nullptr);
}

}  // namespace
}  // namespace oxr::test
