#include "growingbytebuffer.hpp"

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <string>

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

TEST(GrowingByteBuffer, ShowsItsBytesToReaders) {
  GrowingByteBuffer buffer;
  EXPECT_TRUE(buffer.getData(0) == nullptr && buffer.getBuffer()->size(true) == 0);
  buffer.appendBytes("message", 7);
  KelBuffer* const host = buffer.getBuffer();
  EXPECT_EQ(host, buffer.getBuffer());
  EXPECT_EQ(std::string(host->getData(0), 7), "message");
  for (const int offset : {INT_MIN, -1, 0, 6, 7, 8, INT_MAX}) {
    int remaining = 99;
    EXPECT_EQ(buffer.getData(&remaining, offset), host->getData(offset));
    EXPECT_EQ(remaining, host->bytesAvailable(offset, true));
    EXPECT_EQ(buffer.offsetAvailable(offset), host->offsetAvailable(offset));
  }
  buffer.setLength(6);
  EXPECT_EQ(buffer.getBuffer()->size(true), 6);
}

TEST(GrowingByteBuffer, RefusesWhatNoMessageCanHold) {
  GrowingByteBuffer buffer;
  buffer.appendBytes("abc", 3);
  const int tooMuch = buffer.capacity() - 2;
  const Raised tooLong = conversionFailure(5507, {"CPI InputData Too Long", "2147483648"});
  const auto invalid = [](const std::string& operation) {
    return conversionFailure(5502, {"CPI Internal Error", "Invalid argument for GrowingByteBuffer::" + operation});
  };
  const std::pair<std::function<void()>, Raised> cases[] = {
      {[&] { buffer.setLength(-1); }, invalid("setLength")},
      {[&] { buffer.appendBytes("x", INT_MIN); }, invalid("appendBytes")},
      {[&] { buffer.insertBytesAt("x", 1, 4); }, invalid("insertBytesAt")},
      {[&] { buffer.insertBytesAt("x", 1, -1); }, invalid("insertBytesAt")},
      {[&] { buffer.insertBytesAt("x", -1, 0); }, invalid("insertBytesAt")},
      {[&] { buffer.writeBytesAt("x", 1, -1); }, invalid("writeBytesAt")},
      {[&] { buffer.reserveForAppend(-1); }, invalid("reserveForAppend")},
      {[&] { buffer.commitAppend(-1); }, invalid("commitAppend")},
      {[&] { buffer.commitAppend(tooMuch); }, invalid("commitAppend")},
      {[&] { buffer.reserveForAppend(INT_MAX - 2); }, tooLong},
      {[&] { buffer.writeBytesAt("x", 1, INT_MAX); }, tooLong},
  };
  for (const auto& [call, expected] : cases)
    EXPECT_EQ(raisedBy(call), expected);
  EXPECT_EQ(buffer.bytes(), "abc");
}

}  // namespace
}  // namespace oxr::test
