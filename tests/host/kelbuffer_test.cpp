#include "kelbuffer.hpp"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <string_view>

namespace oxr::test {
namespace {

// The bytes that the window shows.
std::string shown(const KelBufferPointer& window) {
  const char* const start = window.getOffsetPointer(window.windowOffset());
  return start != nullptr ? std::string(start, window.getEndPointer()) : std::string();
}

TEST(KelBuffer, TellsWhatIsAvailable) {
  const std::string bytes = "0123456789";
  const KelBuffer buffer(bytes.data(), 10), empty(bytes.data(), 0), null(nullptr, 10), negative(bytes.data(), -3);
  EXPECT_EQ(buffer.size(true), 10);
  EXPECT_EQ(empty.size(false) + null.size(false) + negative.size(false), 0);
  const struct {
    int offset, remaining;
    bool available, hasPointer;
  } rows[] = {{0, 10, true, true},   {9, 1, true, true},         {10, 0, false, true},      {11, 0, false, false},
              {-1, 0, false, false}, {INT_MAX, 0, false, false}, {INT_MIN, 0, false, false}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.offset);
    EXPECT_EQ(buffer.offsetAvailable(row.offset), row.available);
    EXPECT_EQ(buffer.bytesAvailable(row.offset, false), row.remaining);
    int remaining = -1;
    EXPECT_EQ(buffer.getData(&remaining, row.offset), row.hasPointer ? bytes.data() + row.offset : nullptr);
    EXPECT_EQ(remaining, row.remaining);
    EXPECT_FALSE(empty.offsetAvailable(row.offset) || null.offsetAvailable(row.offset));
  }
  EXPECT_EQ(null.getData(0), nullptr);
}

TEST(KelBuffer, CountsLocksOfEachOffset) {
  KelBuffer buffer("0123", 4);
  for (const int offset : {1, 2, 1})
    buffer.lockOffset(offset);
  buffer.unlockOffset(1);
  buffer.unlockOffset(3);  // not held
  EXPECT_TRUE(buffer.isLocked(1) && buffer.isLocked(2));
  buffer.unlockOffset(1);
  EXPECT_FALSE(buffer.isLocked(1));
  EXPECT_TRUE(buffer.isLocked(2));
}

TEST(KelBufferPointer, MovesWhereBytesAreAndStaysWhereNot) {
  const struct {
    const char* what;
    int offset, length;
    bool acceptShorter, moved;
    std::string_view shows;
  } rows[] = {
      {"all there", 2, 3, false, true, "234"},
      {"up to the end", 7, 3, false, true, "789"},
      {"one too many", 7, 4, false, false, ""},
      {"shorter", 7, 400, true, true, "789"},
      {"shorter, nothing there", 10, 1, true, false, ""},
      {"nothing asked", 4, 0, false, true, ""},
      {"nothing asked at the end", 10, 0, false, true, ""},
      {"nothing asked behind the end", 11, 0, true, false, ""},
      {"negative length", 4, -1, true, false, ""},
      {"negative offset", -1, 2, true, false, ""},
      {"sum beyond an int", INT_MAX, INT_MAX, true, false, ""},
      {"length beyond any buffer", 1, INT_MAX, true, true, "123456789"},
  };
  KelBuffer buffer("0123456789", 10);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    KelBufferPointer window(&buffer);
    ASSERT_TRUE(window.moveOffsetWindow(5, 2, false));
    char *start = nullptr, *end = nullptr;
    EXPECT_EQ(window.moveOffsetWindow(row.offset, row.length, row.acceptShorter, &start, &end, false), row.moved);
    EXPECT_EQ(std::string_view(start, static_cast<std::size_t>(end - start)), row.shows);
    EXPECT_EQ(shown(window), row.moved ? row.shows : "56");
    EXPECT_EQ(window.windowOffset(), row.moved ? row.offset : 5);
  }
}

TEST(KelBufferPointer, GrowsAndShrinksAtItsEnd) {
  KelBuffer buffer("0123456789", 10);
  KelBufferPointer window(&buffer);
  EXPECT_EQ(shown(window), "");
  ASSERT_TRUE(window.moveOffsetWindow(4, 2, false));
  EXPECT_TRUE(window.extendLength(2, false));
  EXPECT_EQ(shown(window), "4567");
  EXPECT_FALSE(window.extendLength(3, false));
  EXPECT_FALSE(window.extendLength(-1, true));
  EXPECT_EQ(shown(window), "4567");
  EXPECT_TRUE(window.extendLength(INT_MAX, true));
  EXPECT_EQ(shown(window), "456789");
  EXPECT_FALSE(window.extendLength(1, true));  // not by a single byte
  EXPECT_TRUE(window.extendLength(0, false));
  EXPECT_TRUE(window.setLength(3, false));
  EXPECT_EQ(shown(window), "456");
  EXPECT_FALSE(window.setLength(7, false));
  EXPECT_EQ(window.windowLength(), 3);
  EXPECT_TRUE(window.setLength(7, true));
  EXPECT_EQ(window.windowLength(), 6);
  EXPECT_EQ(*window.getOffsetPointer(9), '9');
  for (const int outside : {3, 10, -1, INT_MAX, INT_MIN})
    EXPECT_EQ(window.getOffsetPointer(outside), window.getEndPointer());
}

TEST(KelBufferPointer, ABoundIsTheEndOfTheData) {
  KelBuffer buffer("0123456789", 10);
  KelBufferPointer window(&buffer, 3, 4, true);
  EXPECT_TRUE(window.isBounded() && buffer.isLocked(3));
  EXPECT_FALSE(window.hasNoLock());
  EXPECT_EQ(shown(window), "3456");
  EXPECT_EQ(window.boundStart(), 3);
  EXPECT_FALSE(window.moveOffsetWindow(5, 3, false));
  EXPECT_TRUE(window.moveOffsetWindow(5, 3, true));
  EXPECT_EQ(shown(window), "56");
  EXPECT_FALSE(window.extendLength(1, true));
  EXPECT_FALSE(window.moveOffsetWindow(7, 1, true));
  EXPECT_TRUE(window.moveOffsetWindow(0, 2, false));  // in front of the bound: offsets are those of the buffer
  EXPECT_EQ(window.boundEnd(), 7);                    // whatever the window shows
  EXPECT_TRUE(window.offsetAvailable(6));
  EXPECT_FALSE(window.offsetAvailable(7));
  const struct {
    int offset, distance;
    bool available;
  } rows[] = {{4, 2, true},   {4, 3, false}, {6, 0, true},   {7, 0, false},  {7, -1, true},
              {8, -1, false}, {0, -1, true}, {4, -2, false}, {-1, 1, false}, {INT_MAX, INT_MAX, false}};
  for (const auto& row : rows)
    EXPECT_EQ(window.offsetAvailable(row.offset, row.distance), row.available) << row.offset << ' ' << row.distance;

  const KelBufferPointer beyond(&buffer, 8, INT_MAX, false), behind(&buffer, 12, 5, false),
      before(&buffer, -4, -1, false);
  EXPECT_EQ(shown(beyond), "89");
  EXPECT_TRUE(beyond.hasNoLock());
  EXPECT_EQ(shown(behind) + shown(before), "");
  const KelBufferPointer open(&buffer);
  EXPECT_EQ(open.boundEnd(), 10);
  EXPECT_FALSE(open.isBounded());
}

TEST(KelBufferPointer, WithoutABufferNothingIsAvailable) {
  KelBufferPointer window(nullptr), bounded(nullptr, 2, 3, true);
  char *start = nullptr, *end = nullptr;
  EXPECT_FALSE(window.moveOffsetWindow(0, 1, true, &start, &end, false));
  EXPECT_EQ(start, end);
  EXPECT_TRUE(window.moveOffsetWindow(0, 0, false));
  EXPECT_FALSE(bounded.offsetAvailable(2));
  EXPECT_TRUE(bounded.hasNoLock());
  EXPECT_EQ(window.buffer(), nullptr);
}

}  // namespace
}  // namespace oxr::test
