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
  EXPECT_EQ(ofNull.getLength(), 5);
}

TEST(ReadOnlyByteBuffer, MeasuresWithoutABoundsCheck) {
  ReadOnlyByteBuffer buffer;
  buffer.create(kBytes, kLength);
  const struct {
    int offset, remaining;
    bool available;
  } cases[] = {{0, 7, true}, {6, 1, true}, {7, 0, false}};
  for (const auto& row : cases) {
    int remaining = 0;
    EXPECT_EQ(buffer.getData(&remaining, row.offset), kBytes + row.offset);
    EXPECT_EQ(remaining, row.remaining);
    EXPECT_EQ(buffer.offsetAvailable(row.offset), row.available);
  }
  EXPECT_TRUE(buffer.offsetAvailable(-1));
  EXPECT_TRUE(buffer.offsetAvailable(INT_MIN));
  EXPECT_FALSE(buffer.offsetAvailable(INT_MAX));
}

TEST(ReadOnlyByteBuffer, KeepsItsHostBuffersAliveWithIt) {
  ReadOnlyByteBuffer buffer;
  buffer.create(kBytes, kLength);
  KelBuffer* const first = buffer.getBuffer();
  KelBuffer* const second = buffer.getBuffer();
  EXPECT_NE(first, second);
  for (KelBuffer* const host : {first, second}) {
    EXPECT_EQ(host->size(true), kLength);
    EXPECT_EQ(host->getData(0), kBytes);
  }
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
  EXPECT_EQ(reader.getBuffer(), &host);
}

}  // namespace
}  // namespace oxr::test
