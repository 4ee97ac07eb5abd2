#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>

#include "bytebffr.hpp"
#include "growingbytebuffer.hpp"
#include "harness/failures.hpp"

namespace oxr::test {
namespace {

TEST(GrowingByteBuffer, GrowsSeldom) {
  GrowingByteBuffer buffer;
  int growths = 0;
  for (int i = 0, room = 0; i < 1 << 20; ++i, room = buffer.capacity()) {
    buffer.appendBytes("x", 1);
    growths += buffer.capacity() != room;
  }
  EXPECT_TRUE(growths <= 13 && buffer.capacity() <= 2 << 20) << growths << ' ' << buffer.capacity();
  const char* const storage = buffer.getData(0);
  buffer.setLength(0);
  EXPECT_EQ(buffer.reserveForAppend(1 << 20), storage);
}

constexpr char kBytes[] = "message";
constexpr int kLength = 7;

std::string shownAt(const BitstreamBuffer& buffer, int offset) {
  int remaining = 99;
  const char* const bytes = buffer.getData(&remaining, offset);
  EXPECT_EQ(buffer.getData(offset), bytes);
  return (bytes == nullptr ? "null" : bytes) + std::string(buffer.offsetAvailable(offset) ? "+" : "-") +
         std::to_string(remaining);
}

TEST(BitstreamBuffers, ShowTheirBytes) {
  GrowingByteBuffer growing;
  EXPECT_TRUE(growing.getData(0) == nullptr && growing.getBuffer()->size(true) == 0);
  growing.appendBytes(kBytes, kLength + 1);
  growing.setLength(kLength);
  KelBuffer* const host = growing.getBuffer();
  const BitstreamBufferReader reader(host);
  EXPECT_TRUE(growing.getBuffer() == host && reader.getBuffer() == host && reader.getLength() == kLength);
  ReadOnlyByteBuffer view;
  view.create(kBytes, kLength);
  for (const auto& [offset, expected] : {std::pair(0, "message+7"), std::pair(6, "e+1"), std::pair(7, "-0")})
    EXPECT_TRUE(shownAt(reader, offset) == expected && shownAt(view, offset) == expected) << offset;
  // The host's bounds; a read-only view has none.
  for (const int offset : {INT_MIN, -1, 0, 6, 7, 8, INT_MAX})
    EXPECT_EQ(shownAt(growing, offset), shownAt(reader, offset)) << offset;
  EXPECT_TRUE(view.offsetAvailable(INT_MIN) && !view.offsetAvailable(INT_MAX));
  growing.setLength(6);
  EXPECT_EQ(growing.getBuffer()->size(true), 6);
  const KelBuffer* const first = view.getBuffer();
  const KelBuffer* const second = view.getBuffer();  // one more: both live as long as the view
  EXPECT_TRUE(first != second && first->size(true) == kLength);
  EXPECT_TRUE(first->getData(0) == kBytes && second->getData(0) == kBytes);
}

TEST(ReadOnlyByteBuffer, IsBoundToBytesOnce) {
  ReadOnlyByteBuffer buffer, ofNull;
  EXPECT_TRUE(buffer.getLength() == 0 && shownAt(buffer, 3) == "null--3");
  EXPECT_TRUE(buffer.create(kBytes, kLength) && !buffer.create(kBytes + 1, 2));
  EXPECT_TRUE(buffer.getLength() == kLength && buffer.getData(0) == kBytes);
  EXPECT_TRUE(ofNull.create(nullptr, 5) && !ofNull.create(kBytes, kLength) && ofNull.getData(2) == nullptr);
}

TEST(GrowingByteBuffer, RefusesWhatNoMessageCanHold) {
  GrowingByteBuffer buffer;
  buffer.appendBytes("abc", 3);
  const int tooMuch = buffer.capacity() - 2;
  const std::pair<const char*, std::function<void()>> cases[] = {
      {"setLength", [&] { buffer.setLength(-1); }},
      {"appendBytes", [&] { buffer.appendBytes("x", INT_MIN); }},
      {"insertBytesAt", [&] { buffer.insertBytesAt("x", 1, 4); }},
      {"insertBytesAt", [&] { buffer.insertBytesAt("x", 1, -1); }},
      {"insertBytesAt", [&] { buffer.insertBytesAt("x", -1, 0); }},
      {"writeBytesAt", [&] { buffer.writeBytesAt("x", 1, -1); }},
      {"reserveForAppend", [&] { buffer.reserveForAppend(-1); }},
      {"commitAppend", [&] { buffer.commitAppend(-1); }},
      {"commitAppend", [&] { buffer.commitAppend(tooMuch); }},
  };
  for (const auto& [name, call] : cases)
    EXPECT_EQ(raisedBy(call),
              conversionFailure(
                  5502, {"CPI Internal Error", std::string("Invalid argument for GrowingByteBuffer::") + name}));
  const Raised tooLong = conversionFailure(5507, {"CPI InputData Too Long", "2147483648"});
  EXPECT_EQ(raisedBy([&] { buffer.reserveForAppend(INT_MAX - 2); }), tooLong);
  EXPECT_EQ(raisedBy([&] { buffer.writeBytesAt("x", 1, INT_MAX); }), tooLong);
  EXPECT_EQ(buffer.bytes(), "abc");
}

}  // namespace
}  // namespace oxr::test
