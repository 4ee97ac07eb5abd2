#include "bytebffr.hpp"

#include <gtest/gtest.h>

#include <climits>

namespace oxr::test {
namespace {

constexpr char kBytes[] = "message";
constexpr int kLength = 7;

TEST(ReadOnlyByteBuffer, IsBoundToBytesOnce) {
  ReadOnlyByteBuffer buffer, ofNull;
  int remaining = 99;
  EXPECT_TRUE(buffer.getLength() == 0 && buffer.getData(0) == nullptr && buffer.getData(&remaining, 3) == nullptr);
  EXPECT_EQ(remaining, -3);
  EXPECT_TRUE(buffer.create(kBytes, kLength) && !buffer.create(kBytes + 1, 2));
  EXPECT_TRUE(buffer.getLength() == kLength && buffer.getData(0) == kBytes);
  EXPECT_TRUE(ofNull.create(nullptr, 5) && !ofNull.create(kBytes, kLength));
  EXPECT_EQ(ofNull.getData(2), nullptr);
}

TEST(ReadOnlyByteBuffer, MeasuresWithoutABoundsCheck) {
  ReadOnlyByteBuffer buffer;
  buffer.create(kBytes, kLength);
  for (const int offset : {0, 6, 7}) {
    int remaining = 99;
    EXPECT_EQ(buffer.getData(&remaining, offset), kBytes + offset);
    EXPECT_EQ(remaining, kLength - offset);
    EXPECT_EQ(buffer.offsetAvailable(offset), offset < 7);
  }
  EXPECT_TRUE(buffer.offsetAvailable(INT_MIN) && !buffer.offsetAvailable(INT_MAX));

  KelBuffer* const first = buffer.getBuffer();
  KelBuffer* const second = buffer.getBuffer();  // one more: both live as long as the view
  EXPECT_NE(first, second);
  EXPECT_TRUE(first->size(true) == kLength && first->getData(0) == kBytes && second->getData(0) == kBytes);
}

TEST(BitstreamBufferReader, IsItsHostBuffer) {
  KelBuffer host(kBytes, kLength);
  const BitstreamBufferReader reader(&host);
  int remaining = 0;
  EXPECT_TRUE(reader.getBuffer() == &host && reader.getLength() == kLength && reader.getData(2) == kBytes + 2);
  EXPECT_EQ(reader.getData(&remaining, 5), kBytes + 5);
  EXPECT_EQ(remaining, 2);
  // The host's bounds, unlike ReadOnlyByteBuffer's.
  EXPECT_TRUE(reader.offsetAvailable(6) && !reader.offsetAvailable(7) && !reader.offsetAvailable(-1));
}

}  // namespace
}  // namespace oxr::test
