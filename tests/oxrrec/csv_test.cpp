// Records as rows: each case is a copybook, ASCII records, further arguments, and the rows with "|" for line ends.

#include <gtest/gtest.h>

#include "oxrrec/runs.hpp"

namespace oxr::rec::test {
namespace {

constexpr const char* kCases[][4] = {
    {"05 A PIC X(4). 05 N PIC S9V9 SIGN LEADING SEPARATE.", "a,b +12\"\"c -05   \n+00", "",
     "A,N|\"a,b\",1.2|\"\"\"\"\"c\",-0.5|\"   \n\",0.0|"},
    // Paths; an array has the columns of its largest size, and what there is not is empty.
    {"05 G. 10 A PIC X. 10 H. 15 A PIC X. 05 A PIC X.", "abc", "", "G.A,G.H.A,A|a,b,c|"},
    {"05 G. 10 A PIC X. 10 H. 15 A PIC X. 05 A PIC X.", "abc", "--flat", "A,A(2),A(3)|a,b,c|"},
    {"05 N PIC 9. 05 A PIC X OCCURS 0 TO 3 DEPENDING ON N. 05 B PIC X.", "2xyb0 ", "",
     "N,A(1),A(2),A(3),B|2,x,y,,b|0,,,,\"\"|"},
    {"05 N PIC 9. 05 A PIC X OCCURS 0 TO 3 DEPENDING ON N. 05 B PIC X.", "9xyzb", "--odo fixed --on-error null",
     "N,A(1),A(2),A(3),B|9,,,,b|"},
    {"05 A OCCURS 2. 10 B OCCURS 2. 15 C PIC 9. 15 D PIC X.", "1a2b3c4d", "",
     "A(1).B(1).C,A(1).B(1).D,A(1).B(2).C,A(1).B(2).D,A(2).B(1).C,A(2).B(1).D,A(2).B(2).C,A(2).B(2).D|1,a,2,b,3,c,4,"
     "d|"},
    // A bad field is empty, its record left out with "skip".
    {"05 A PIC X. 05 N PIC 9.", "A1Bx", "--on-error null", "A,N|A,1|B,|"},
    {"05 A PIC X. 05 N PIC 9.", "A1Bx", "--on-error skip", "A,N|A,1|"},
    {"05 A PIC X. 05 N PIC 9.", "A1Bx", "", "A,N|A,1|"},
    // A record of no kind has no column.
    {"01 C. 05 T PIC X. 05 N PIC 9. 01 D. 05 T PIC X.", "C1Z2D ", "--when T=C:C --when T=D:D --on-error null",
     "T,N|C,1|,|D,|"},
    {"01 C. 05 T PIC X. 05 N PIC 9. 01 D. 05 T PIC X.", "C1Z2D ", "--when T=C:C --when T=D:D --on-error skip",
     "T,N|C,1|D,|"},
    {"05 FILLER PIC X.", "ab", "", "|||"},
    {"05 A PIC X OCCURS 70000.", "", "", ""},
};

TEST(Csv, HasAColumnForEachField) {
  for (const auto& [copybook, records, arguments, rows] : kCases) {
    SCOPED_TRACE(copybook);
    const Outcome outcome = decodeBytes(copybook, records, std::string("--to csv --ccsid 819 ") + arguments);
    EXPECT_EQ(replaced(outcome.lines, "\n", "|"), replaced(rows, "\n", "|")) << outcome.messages;
  }
}

}  // namespace
}  // namespace oxr::rec::test
