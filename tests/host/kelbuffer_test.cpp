#include "kelbuffer.hpp"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <string_view>

namespace oxr::test {
namespace {

constexpr char kBytes[] = "0123456789";

// The bytes that the window shows.
std::string shown(const KelBufferPointer& window) {
  const char* const start = window.getOffsetPointer(window.windowOffset());
  return start != nullptr ? std::string(start, window.getEndPointer()) : std::string();
}

TEST(KelBuffer, TellsWhatIsAvailableAndCountsLocks) {
  KelBuffer buffer(kBytes, 10), null(nullptr, 10), negative(kBytes, -3);
  EXPECT_TRUE(buffer.size(true) == 10 && null.size(false) + negative.size(false) == 0 && null.getData(0) == nullptr);
  for (const int offset : {0, 9, 10, 11, -1, INT_MAX, INT_MIN}) {
    const bool available = offset >= 0 && offset < 10;
    int remaining = -1;
    EXPECT_EQ(buffer.getData(&remaining, offset), available || offset == 10 ? kBytes + offset : nullptr);
    EXPECT_TRUE(remaining == (available ? 10 - offset : 0) && buffer.offsetAvailable(offset) == available) << offset;
  }
  for (const int offset : {1, 2, 1})
    buffer.lockOffset(offset);
  for (const int offset : {1, 3, 2})  // 3 is not held
    buffer.unlockOffset(offset);
  EXPECT_TRUE(buffer.isLocked(1) && !buffer.isLocked(2));
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
      {"nothing asked at the end", 10, 0, false, true, ""},
      {"nothing asked past the end", 11, 0, true, false, ""},
      {"negative length", 4, -1, true, false, ""},
      {"negative offset", -1, 2, true, false, ""},
      {"sum beyond an int", INT_MAX, INT_MAX, true, false, ""},
      {"length beyond any buffer", 1, INT_MAX, true, true, "123456789"},
  };
  KelBuffer buffer(kBytes, 10);
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
  KelBuffer buffer(kBytes, 10);
  KelBufferPointer window(&buffer);
  ASSERT_TRUE(window.moveOffsetWindow(4, 2, false));
  const struct {
    bool grows;  // by the length; else the length is set
    int length;
    bool acceptShorter, done;
    std::string_view shows;
  } steps[] = {
      {true, 2, false, true, "4567"},        {true, 3, false, false, "4567"},  {true, -1, true, false, "4567"},
      {true, INT_MAX, true, true, "456789"}, {true, 1, true, false, "456789"}, {true, 0, false, true, "456789"},
      {false, 3, false, true, "456"},        {false, 7, false, false, "456"},  {false, 7, true, true, "456789"},
  };
  for (const auto& [grows, length, acceptShorter, done, shows] : steps) {
    EXPECT_EQ(grows ? window.extendLength(length, acceptShorter) : window.setLength(length, acceptShorter), done);
    EXPECT_EQ(shown(window), shows);
  }
  for (const int outside : {3, 10, -1, INT_MAX, INT_MIN})
    EXPECT_EQ(window.getOffsetPointer(outside), window.getEndPointer());
}

TEST(KelBufferPointer, ABoundIsTheEndOfTheData) {
  KelBuffer buffer(kBytes, 10);
  KelBufferPointer window(&buffer, 3, 4, true), open(&buffer);
  EXPECT_TRUE(window.isBounded() && !window.hasNoLock() && buffer.isLocked(3) && window.boundStart() == 3);
  EXPECT_EQ(shown(window), "3456");
  EXPECT_TRUE(!window.moveOffsetWindow(5, 3, false) && window.moveOffsetWindow(5, 3, true));
  EXPECT_TRUE(shown(window) == "56" && !window.extendLength(1, true) && !window.moveOffsetWindow(7, 1, true));
  EXPECT_TRUE(window.moveOffsetWindow(0, 2, false));  // before the bound: offsets are those of the buffer
  EXPECT_TRUE(window.boundEnd() == 7 && window.offsetAvailable(6) && !window.offsetAvailable(7));
  const struct {
    int offset, distance;
    bool available;
  } rows[] = {{4, 2, true},   {4, 3, false}, {6, 0, true},   {7, 0, false},  {7, -1, true},
              {8, -1, false}, {0, -1, true}, {4, -2, false}, {-1, 1, false}, {INT_MAX, INT_MAX, false}};
  for (const auto& [offset, distance, available] : rows)
    EXPECT_EQ(window.offsetAvailable(offset, distance), available) << offset << ' ' << distance;
  EXPECT_TRUE(open.boundEnd() == 10 && !open.isBounded() && open.hasNoLock());
  EXPECT_EQ(shown(KelBufferPointer(&buffer, 8, INT_MAX, false)), "89");
  EXPECT_EQ(shown(KelBufferPointer(&buffer, 12, 5, false)) + shown(KelBufferPointer(&buffer, -4, -1, false)), "");

  KelBufferPointer none(nullptr, 2, 3, true);  // without a buffer nothing is available
  EXPECT_TRUE(none.hasNoLock() && !none.offsetAvailable(2) && !none.moveOffsetWindow(0, 1, true));
  EXPECT_TRUE(none.moveOffsetWindow(0, 0, false) && shown(none).empty());
}

}  // namespace
}  // namespace oxr::test
