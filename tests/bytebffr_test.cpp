#include "bytebffr.hpp"

#include <gtest/gtest.h>

#include <climits>

namespace oxr::test {
namespace {

constexpr char kBytes[] = "message";
constexpr int kLength = 7;

TEST(ReadOnlyByteBuffer, IsBoundToBytesOnce) {
  ReadOnlyByteBuffer buffer;
  int remaining = 99;
  EXPECT_EQ(buffer.getLength(), 0);
  EXPECT_EQ(buffer.getData(0), nullptr);
  EXPECT_EQ(buffer.getData(&remaining, 3), nullptr);
  EXPECT_EQ(remaining, -3);
  EXPECT_TRUE(buffer.create(kBytes, kLength));
  EXPECT_FALSE(buffer.create(kBytes + 1, 2));
  EXPECT_EQ(buffer.getLength(), kLength);
  EXPECT_EQ(buffer.getData(0), kBytes);

  ReadOnlyByteBuffer ofNull;
  EXPECT_TRUE(ofNull.create(nullptr, 5));
  EXPECT_FALSE(ofNull.create(kBytes, kLength));
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
  EXPECT_TRUE(buffer.offsetAvailable(INT_MIN));
  EXPECT_FALSE(buffer.offsetAvailable(INT_MAX));

  KelBuffer* const first = buffer.getBuffer();
  KelBuffer* const second = buffer.getBuffer();  // one more: both live as long as the view
  EXPECT_NE(first, second);
  EXPECT_EQ(first->size(true), kLength);
  EXPECT_EQ(first->getData(0), second->getData(0));
}

TEST(BitstreamBufferReader, IsItsHostBuffer) {
  KelBuffer host(kBytes, kLength);
  const BitstreamBufferReader reader(&host);
  int remaining = 0;
  EXPECT_EQ(reader.getLength(), kLength);
  EXPECT_EQ(reader.getData(2), kBytes + 2);
  EXPECT_EQ(reader.getData(&remaining, 5), kBytes + 5);
  EXPECT_EQ(remaining, 2);
  EXPECT_TRUE(reader.offsetAvailable(6));
  EXPECT_FALSE(reader.offsetAvailable(7));
  EXPECT_FALSE(reader.offsetAvailable(-1));  // the host's bounds, unlike ReadOnlyByteBuffer's
  EXPECT_EQ(reader.getBuffer(), &host);
}

}  // namespace
}  // namespace oxr::test
