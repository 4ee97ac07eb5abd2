#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oxrrec/runs.hpp"

namespace oxr::rec::test {
namespace {

using testing::MatchesRegex;

constexpr char kCounted[] = "05 N PIC 9. 05 A PIC X OCCURS 0 TO 3 DEPENDING ON N. 05 B PIC 9. 05 C PIC 9.";
constexpr char kSecond[] =
    R"(\{"record":2,"offset":5,"faults":\[\{"path":"B","offset":7,"reason":"not a number: byte 1 of 1 is 71 .*5505.","bytes":"71"\},)"
    R"(\{"path":"C","offset":8,[^]]*\],"raw":"317A7172"\})";

// The raw bytes are those of the record, although its length shows only at its end.
TEST(BadRecords, AreCollectedWithTheirBytes) {
  const Folder folder;
  const std::string file = folder.path("e");
  for (const char* const onError : {"null", "skip"}) {
    const std::string arguments = "--ccsid 819 --on-error " + std::string(onError) + " --errors " + file;
    EXPECT_EQ(decodeBytes(kCounted, "2xy111zqr000", arguments).code, kBadField);
    EXPECT_THAT(contentOf(file), MatchesRegex(std::string(kSecond) + "\n"));
  }
  // Where the work ends at once, the length is not known.
  EXPECT_EQ(decodeBytes(kCounted, "2xy111zqr000", "--ccsid 819 --errors " + file).code, kBadField);
  EXPECT_THAT(contentOf(file), MatchesRegex(R"(.*"path":"B".*"raw":"317A71723030"\})"
                                            "\n"));
  EXPECT_EQ(decodeBytes(kCounted, "011", "--ccsid 819 --errors " + file).code, kDone);
  EXPECT_EQ(contentOf(file), "");
}

}  // namespace
}  // namespace oxr::rec::test
