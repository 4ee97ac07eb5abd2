// The page for a browser is used in one by tests/oxrrec/explain_page.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oxrrec/runs.hpp"

namespace oxr::rec::test {
namespace {

constexpr char kCopybook[] =
    "01 R. 05 N PIC 9. 05 G OCCURS 0 TO 2 DEPENDING ON N. 10 A PIC S99. 10 FILLER PIC X. 05 P PIC S9(3) COMP-3.";

// The number of the record, all records, what is told of the one, and the exit code.
const struct {
  const char* number;
  std::string_view records;
  const char* table;
  int code;
} kCases[] = {
    {"2",
     std::string_view("0\x12\x3C"
                      "11K-\x12\x3D",
                      9),
     "record 2 of standard input, R: 6 bytes from byte 3\n"
     "field        offset  length  picture       bytes  value\n"
     "N                 0       1  9             31     1\n"
     "G(1).A            1       2  S99           31 4B  ! * (OXR5505); -12 with --ascii-signs letters\n"
     "G(1).FILLER       3       1  X             2D     \"-\"\n"
     "P                 4       2  S9(3) COMP-3  12 3D  -123\n",
     kBadField},
    {"1", std::string_view("0\x12\x3C", 3),
     "record 1 of standard input, R: 3 bytes from byte 0\n"
     "field  offset  length  picture       bytes  value\n"
     "N           0       1  9             30     0\n"
     "P           1       2  S9(3) COMP-3  12 3C  123\n",
     kDone},
    {"3 --range 3-6 --first-record 3", std::string_view("xxx0\x12\x3C", 6),
     "record 3 of standard input, R: 3 bytes from byte 3\n"
     "field  offset  length  picture       bytes  value\n"
     "N           0       1  9             30     0\n"
     "P           1       2  S9(3) COMP-3  12 3C  123\n",
     kDone},
    {"2 --first-record 3", "0\x12\x3C", "oxrrec: standard input: the first record that is read is 3\n", kFailed},
    {"3", "0\x12\x3C", "oxrrec: standard input: there is 1 record\n", kFailed},
    {"1", "", "oxrrec: standard input: there are 0 records\n", kFailed},
    {"1 --records rdw", std::string_view("\0\x08\0\0000\x12\x3C!", 8),
     "record 1 of standard input, R: 4 bytes from byte 4\n"
     "field  offset  length  picture       bytes  value\n"
     "N           0       1  9             30     0\n"
     "P           1       2  S9(3) COMP-3  12 3C  123\n"
     "! the record has 4 bytes, 1 more than its layout\n",
     kBadField},
    {"1 --records rdw", std::string_view("\0\x06\0\0000\x12", 6),
     "record 1 of standard input, R: 2 bytes from byte 4\n"
     "field  offset  length  picture       bytes  value\n"
     "N           0       1  9             30     0\n"
     "P           1       2  S9(3) COMP-3  12     ! the record ends after 2 bytes, before the field does\n",
     kBadField},
    {"2",
     "0\x12\x3C"
     "9",
     "oxrrec: standard input: record 2 at byte 3: its length hangs on a count that cannot be read, so the next record "
     "cannot be found\n",
     kFailed},
};

TEST(Explain, ShowsTheFieldsOfOneRecord) {
  const Folder folder;
  const std::string copybook = folder.write("c", kCopybook);
  for (const auto& [number, records, table, code] : kCases) {
    const Outcome outcome =
        runProgram("explain --format free --ccsid 819 --copybook " + copybook + ' ' + number + " -", records);
    const std::string all = outcome.lines + outcome.messages;
    const std::size_t fault = all.find("! "), number5505 = all.find(" (OXR");
    const bool isBad = number5505 != std::string::npos;
    EXPECT_EQ(isBad ? all.substr(0, fault + 2) + '*' + all.substr(number5505) : all, table);
    EXPECT_EQ(outcome.code, code);
  }
}

// Where the bytes of a field are a value under other settings, they are named: two if neither helps alone.
TEST(Explain, NamesSettingsThatAcceptBytes) {
  constexpr const char* kAdvice[][3] = {
      {"05 A PIC S9(3).", "q12", "-112 with --field A:sign=leading"},
      {"05 A PIC S9(3) SIGN LEADING SEPARATE.", "123-", "-123 with --field A:sign=trailing"},
      {"05 A PIC S9(3) COMP-3.", "<C123>", "123 with --field A:packed-sign=leading"},
      {"05 G OCCURS 1. 10 A PIC S9(3).", "K12", "-212 with --ascii-signs letters --field G.A:sign=leading"},
      {"05 A PIC S9(3).", " 2K", "-22 with --lenient-numbers --ascii-signs letters"},
      {"05 FILLER PIC S9(3).", "q12", "no digit (OXR5505)"},
      {"05 A PIC X(8).", "        ", "null with --blank-numbers null"},
      {"05 A COMP-1.", "<7FC00000>", "not a number (NaN)"},
      {"05 A COMP-2.", "<7FF8000000000000>", "not a number (NaN)"},
      {"05 A PIC S9(2) SIGN TRAILING SEPARATE.", "-12", "-12 with --field A:sign=leading"},
      {"05 A COMP-1.", "<7FC00041>", "8.046996 with --floats ieee-le"},
      {"05 A COMP-1.", "<7FA04141>", "4.1016836 with --floats hex-le"},
  };
  for (const auto& [copybook, bytes, advice] : kAdvice) {
    const Folder folder;
    const std::string date = *bytes == ' ' && bytes[1] == ' ' ? " --field A:date=yyyyMMdd" : "";
    const Outcome outcome = runProgram("explain 1 - --format free --ccsid 819 --floats ieee-be" + date +
                                           " --copybook " + folder.write("c", std::string("01 R. ") + copybook),
                                       bytesOf(bytes));
    EXPECT_THAT(outcome.lines, testing::HasSubstr(advice + std::string("\n"))) << outcome.messages;
  }
}

TEST(Explain, CutsLongBytesAndNamesTheKindOfRecord) {
  const Folder folder;
  EXPECT_THAT(runProgram("explain 1 - --format free --ccsid 819 --copybook " + folder.write("c", "05 A PIC X(13)."),
                         "abcdefghijklm")
                  .lines,
              testing::HasSubstr("61 62 63 64 65 66 67 68 69 6A 6B 6C ...  \"abcdefghijklm\"\n"));
  const std::string kinds = folder.write("k", "01 A. 05 K PIC X. 05 N PIC S9(3). 01 B. 05 K PIC X. 05 N PIC S9(3).");
  EXPECT_THAT(
      runProgram("explain 1 - --format free --ccsid 819 --when K=a:A --when K=b:B --copybook " + kinds, "aq12").lines,
      testing::HasSubstr("; -112 with --field A.N:sign=leading\n"));
}

TEST(Explain, ShowsTheValueOfEachKind) {
  const Folder folder;
  const std::string book =
      folder.write("c", "01 R. 05 A PIC 9(3) COMP-6. 05 B COMP-2. 05 C POINTER. 05 D PIC S9(2) COMP-5.");
  EXPECT_EQ(runProgram("explain 1 - --format free --ccsid 819 --floats ieee-be --copybook " + book,
                       bytesOf("<01233FF800000000000000000000FFFE>"))
                .lines,
            "record 1 of standard input, R: 16 bytes from byte 0\n"
            "field  offset  length  picture       bytes                    value\n"
            "A           0       2  9(3) COMP-6   01 23                    123\n"
            "B           2       8  COMP-2        3F F8 00 00 00 00 00 00  1.5\n"
            "D          14       2  S9(2) COMP-5  FF FE                    -2\n");
}

// Whatever becomes of them elsewhere, records of no kind have their number and are shown.
TEST(Explain, ShowsRecordsOfNoKind) {
  const Folder folder;
  const std::string rest = " - --format free --ccsid 819 --when T=a:R --on-unknown skip --copybook " +
                           folder.write("c", "01 R. 05 T PIC X. 05 N PIC 9.");
  EXPECT_EQ(runProgram("explain 2" + rest,
                       "a1z\x02"
                       "a3")
                .lines,
            "record 2 of standard input, of no kind: 2 bytes from byte 2\n"
            "offset  bytes  characters\n"
            "     0  7A 02  z·\n"
            "! T: no condition (--when) holds for this value\n");
  EXPECT_THAT(runProgram("explain 3" + rest, "a1z2a3").lines, testing::EndsWith("9        33     3\n"));
}

}  // namespace
}  // namespace oxr::rec::test
