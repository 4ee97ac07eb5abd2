#include "kelbuffer.hpp"

#include <gtest/gtest.h>

namespace oxr::test {
namespace {

constexpr char kBytes[] = "0123456789";

// Windows are held against a model: fuzz/host/kelbuffer_check.hpp.
TEST(KelBuffer, CountsLocksOfEachOffset) {
  KelBuffer buffer(kBytes, 10);
  for (const int offset : {1, 2, 1})
    buffer.lockOffset(offset);
  for (const int offset : {1, 3, 2})  // 3 is not held
    buffer.unlockOffset(offset);
  EXPECT_TRUE(buffer.isLocked(1) && !buffer.isLocked(2));
  EXPECT_EQ(buffer.bytesAvailable(4, true), 6);
}

TEST(KelBufferPointer, SeesBytesBeforeItsBoundAndNoneWithoutABuffer) {
  KelBuffer buffer(kBytes, 10);
  KelBufferPointer bounded(&buffer, 3, 4, false), none(nullptr, 2, 3, true);
  EXPECT_TRUE(bounded.moveOffsetWindow(0, 2, false) && bounded.getOffsetPointer(1) == kBytes + 1);
  EXPECT_TRUE(none.hasNoLock() && !none.offsetAvailable(2) && !none.moveOffsetWindow(0, 1, true));
  EXPECT_TRUE(none.moveOffsetWindow(0, 0, false) && none.getEndPointer() == nullptr);
}

}  // namespace
}  // namespace oxr::test
