#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oxrrec/runs.hpp"

namespace oxr::rec::test {
namespace {

using testing::HasSubstr;

constexpr char kCopybook[] =
    "01 R. 05 N PIC 9. 05 A OCCURS 0 TO 2 DEPENDING ON N. 10 P PIC S9V99 COMP-3. 10 D PIC S99. 05 B PIC 99 BLANK ZERO.";
// ASCII; the sign of the last record is that of a translated file.
constexpr std::string_view kRecords(
    "0  "
    "1\x10\x5D"
    "1q12"
    "2\x00\x0C"
    "02\x12\x3F\0\0"
    "99"
    "1\0\0"
    "1K77",
    28);

TEST(Profile, TellsWhatTheBytesOfFieldsAre) {
  const Folder folder;
  const std::string arguments = "--format free --ccsid 819 --records fixed --copybook " + folder.write("c", kCopybook);
  const Outcome table = runProgram("profile " + arguments + " -", kRecords);
  EXPECT_EQ(table.code, kBadField) << table.messages;
  EXPECT_THAT(table.lines, HasSubstr("4 records\n"));
  EXPECT_THAT(table.lines, HasSubstr("N      9                 4    0     0      0    0  "));
  EXPECT_THAT(table.lines,
              HasSubstr("A.P    S9V99 COMP-3      4    1     0      0    1  0: 1, C: 1, D: 1, F: 1  -1.05"));
  EXPECT_THAT(table.lines, HasSubstr("A.D    S99               4    2     0      0    1  0: 1, 3: 1, 4: 1, 7: 1  -11"));
  EXPECT_THAT(table.lines, HasSubstr("--ascii-signs letters --low-values null makes bad values readable of: A.D\n"));
  const Outcome lines = runProgram("profile --to json " + arguments + " -", kRecords);
  EXPECT_THAT(lines.lines, HasSubstr("\"path\":\"B\",\"picture\":\"99\",\"count\":4,\"bad\":0,\"null\":0,\"blank\":1,"
                                     "\"nul\":0,\"signs\":{},\"smallest\":0,\"largest\":99,"));
  EXPECT_THAT(lines.lines, HasSubstr("\"suggestion\":\"--ascii-signs letters --low-values null\""));
  // A file that cannot be read to its end is told of as far as it goes.
  const Outcome cut = runProgram("profile " + arguments + " -", kRecords.substr(0, 12));
  EXPECT_EQ(cut.code, kFailed);
  EXPECT_THAT(cut.lines, HasSubstr("3 records\n"));
}

TEST(Profile, ComparesValuesByWhatTheyAre) {
  constexpr const char* kCases[][3] = {
      // The second one is beyond what an integer holds.
      {"9(18) COMP", "<0000000000000001FFFFFFFFFFFFFFFF0000000000000002>",
       "\"smallest\":1,\"largest\":18446744073709551615"},
      {"S99V9 SIGN TRAILING SEPARATE", "095-100-005+000-100+", "\"smallest\":-10.0,\"largest\":10.0"},
      {"S99 SIGN LEADING", "q1r212", "\"signs\":{\"3\":1,\"7\":2},\"smallest\":-22,\"largest\":12"},
      {"XX", "B1A9", "\"smallest\":\"A9\",\"largest\":\"B1\""},
  };
  for (const auto& [picture, records, extremes] : kCases) {
    const Folder folder;
    const std::string book = folder.write("c", std::string("01 R. 05 N PIC ") + picture + '.');
    const Outcome outcome =
        runProgram("profile --to json --format free --ccsid 819 --copybook " + book + " -", bytesOf(records));
    EXPECT_THAT(outcome.lines, HasSubstr(extremes)) << outcome.messages;
  }
}

// Options that bad values need together; and of floats the form that most of all values look like.
TEST(Profile, SuggestsWhatMakesValuesReadable) {
  constexpr const char* kCases[][3] = {
      {"05 A PIC S9(3).", " 2K 3L", "--lenient-numbers --ascii-signs letters makes bad values readable of: A\n"},
      {"05 A PIC 9(2).", "    <0000> 1",
       "--blank-numbers null --lenient-numbers --low-values null makes bad values readable of: A\n"},
      {"05 A COMP-1.", "<7FC00040000000400000004041800000>", "--floats ieee-le makes bad values readable of: A\n"},
      {"05 A PIC S9(2) SIGN LEADING.", "K1K2", "--ascii-signs letters makes bad values readable of: A\n"},
      {"05 A COMP-1.", "<7FC000400000004000000040000000004180000041800000>",
       "--floats ieee-le makes bad values readable of: A\n"},
      {"05 A COMP-2.", "<7FF80000000000003FF0000000000000>", "A: 1 time not a number (NaN)\n"},
      {"05 A COMP-1.", "<7FC0C03F41800000418000007FC00000>", "A: 2 times not a number (NaN)\n"},
  };
  for (const auto& [copybook, bytes, told] : kCases) {
    const Folder folder;
    const Outcome outcome = runProgram("profile - --format free --ccsid 819 --floats ieee-be --copybook " +
                                           folder.write("c", std::string("01 R. ") + copybook),
                                       bytesOf(bytes));
    EXPECT_THAT(outcome.lines, testing::EndsWith(told)) << outcome.messages;
  }
}

// A picture, records and arguments; and what is told.
TEST(Profile, CountsNullsLeadingSignsAndWhatIsWrongWithRecords) {
  constexpr const char* kCases[][4] = {
      {"9(2)", "<2020>", "--to json --blank-numbers null",
       "\"null\":1,\"blank\":1,\"nul\":0,\"signs\":{},\"smallest\":null"},
      {"S9(3) COMP-3", "<D123C012>", "--to json --field N:packed-sign=leading",
       "\"signs\":{\"C\":1,\"D\":1},\"smallest\":-123,\"largest\":12,"},
      {"9. 05 A PIC X OCCURS 3 DEPENDING N", "<00050000>9<00060000>1x", "--records rdw",
       "(record): 1 time N, the count is not within its bounds\n"},
      {"9. 05 A PIC X", "<00070000>1xy", "--records rdw", "(record): 1 time the record is longer than its layout\n"},
      {"ZZ9", "   ", "--edited number", "--blank-numbers null makes bad values readable of: N\n"},
  };
  for (const auto& [picture, records, arguments, told] : kCases) {
    const Folder folder;
    const std::string book = folder.write("c", "01 R. 05 N PIC " + std::string(picture) + '.');
    const Outcome outcome =
        runProgram("profile --format free --ccsid 819 - --copybook " + book + ' ' + arguments, bytesOf(records));
    EXPECT_THAT(outcome.lines, HasSubstr(told)) << outcome.messages;
  }
}

TEST(Profile, TellsTheFieldsOfKindsApart) {
  const Folder folder;
  const std::string book = folder.write("c", "01 A. 05 K PIC X. 05 N PIC 9. 01 B. 05 K PIC X. 05 N PIC 9.");
  const Outcome outcome =
      runProgram("profile --format free --ccsid 819 --when K=a:A --when K=b:B --copybook " + book + " -", "a1b2b4");
  EXPECT_THAT(outcome.lines, HasSubstr("A.N    9            1    0     0      0    0         1         1\n"));
  EXPECT_THAT(outcome.lines, HasSubstr("B.N    9            2    0     0      0    0         2         4\n"));
}

}  // namespace
}  // namespace oxr::rec::test
