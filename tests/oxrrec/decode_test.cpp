#include "oxrrec/decode.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "harness/hex.hpp"
#include "harness/rows.hpp"
#include "oxrrec/runs.hpp"

namespace oxr::rec::test {
namespace {

using oxr::test::fromHex;
using oxr::test::Row;
using oxr::test::rows;
using oxr::test::shown;
using testing::ContainsRegex;
using testing::HasSubstr;

TEST(Decode, GivesTheLinesOfTheBundledSamples) {
  const std::string folder = std::string(OXR_SAMPLES_DIR) + '/';
  for (const Row& c : rows("customers customers.rdw.bin --ccsid_37_--records_rdw; parts parts.bin --ccsid_819; "
                           "customers customers.rdw.bin --ccsid_37_--records_rdw_--check")) {
    const Outcome outcome = runProgram("decode --copybook " + folder + c[0] + ".cob " + c[2] + ' ' + folder + c[1]);
    EXPECT_EQ(outcome.messages + outcome.lines, contentOf(folder + c[0] + ".expected.jsonl"));
  }
}

// A picture, the bytes of a field of it, and the JSON of its value or, after "!", what is told of it; further
// arguments. "*" stands for any text.
constexpr char kFieldCases[] =
    "X(2) C19A \"Aª\" --ccsid_Cp037; X(2) C1AD \"A[\" --ccsid_IBM-1047; X(2) C3A4 \"ä\" --ccsid_UTF-8; "
    "X(2) 4101 \"A\\u0001\" --ccsid_UTF-8; "
    "X(2) 41E4 \"Aä\" --ccsid_latin-1; X(2) 4180 \"A€\" --ccsid_windows-1252; X(1) 41 \"A\" --ccsid_us-ascii; "
    "X(4) C140C240 \"A_B\"; X(4) 40404040 \"\"; X(2) C100 \"A\\u0000\"; "
    "X(9) C1C2C3C4C5C6C7C800 \"ABCDEFGH\\u0000\"; "
    // a character that the field cuts off is left out
    "X(3) 41F090 \"A\" --ccsid_1208; X(6) 0041D8000042 \"A\uFFFDB\" --ccsid_1200; "
    "X(4) 41003DD8 \"A\" --ccsid_1200_--integers_little; X(6) 412241225C22 \"A\\\"A\\\"\\\\\\\"\" --ccsid_819; "
    "Z9.99- 40F14BF2F360 \"_1.23-\"; "
    // DISPLAY: a digit a byte.
    "9(3) F0F0F7 7; 9(3)V99 F0F0F0F0F5 0.05; 9(3)V99 F0F0F0F0F5 \"0.05\" --decimals_text; "
    "9(3) F0F0F7 7 --decimals_text; S9(3) F1F2D3 -123; S9V9_SIGN_LEADING D1F2 -1.2; "
    "S99_SIGN_LEADING_SEPARATE 60F1F2 -12; S99_SIGN_TRAILING_SEPARATE F1F24E 12; S99 3172 -12 --ccsid_819; "
    "S99 314B -12 --ccsid_819_--ascii-signs_letters; SVPP99 F1D2 -0.0012; 99PPP F1F2 12000; 9(2) 4040 !*OXR5505*; "
    "9(4)V9 F1C5F2F0F0 !*OXR5505*; 9(4)_BLANK_WHEN_ZERO 40404040 0; 99V99_BLANK_WHEN_ZERO 40404040 0.00; "
    "9(4) 31453035 !*OXR5505*31_45 --ccsid_819; "
    // characters of two bytes: a blank or a NUL in one is no padding, and a point is one
    "9(4) 31003200 12 --ccsid_1200_--integers_little_--lenient-numbers; "
    "S9(3).99 003100320000 !*reads_\"12·\"* --ccsid_1200_--edited_number; "
    "S9(4).9 00310032002E 12 --ccsid_1200_--edited_number; S9(3).99 0031002E0035 1.5 --ccsid_1200_--edited_number; "
    // grouped, to a lenient reader; and control characters, which no message shows
    "9(4) 312C3233 !not_a_number:_byte_2_of_4_is_2C_(\",\"),_no_digit --ccsid_819; "
    "9(4) 311B7F33 !not_a_number:_byte_2_of_4_is_1B,_no_digit_(OXR5505)*31_1B_7F_33 --ccsid_819; "
    // COMP-3.
    "9(4)_COMP-3 00012F 12; S9(3)V99_COMP-3 00005D -0.05; SVP(3)9(3)_COMP-3 123D -0.000123; "
    "S9(3)P(3)_COMP-3 123D -123000; "
    "S9(18)V9(13)_COMP-3 9876543210987654321098765432101D -987654321098765432.1098765432101; "
    "9(3)_COMP-3 123D !*OXR5505*12_3D; "
    "9(3)_COMP-3 1A3C !*OXR5505*1A_3C; "
    // Binary.
    "S9(4)_COMP FFFE -2; 9(4)_COMP FFFE 65534; S9(9)_COMP-5 FEFFFFFF -2 --integers_little; "
    "S9(18)_COMP 8000000000000000 -9223372036854775808; 9(18)_BINARY FFFFFFFFFFFFFFFF 18446744073709551615; "
    "S9(16)V99_COMP 8000000000000000 -92233720368547758.08; S9(2)V99_COMP FFFB -0.05; "
    "SP(5)9(4)_COMP FFFB -0.000000005; 9(4)PP_COMP 0007 700; "
    "S9(20)_COMP FF38000000000000FF -14411518807585586945; 9(37)V9_COMP FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF "
    "34028236692093846346337460743176821145.5; S9(5)_COMP FE7960 -100000 --binary-sizes_1-8; "
    "S9(5)_COMP 6079FE -100000 --binary-sizes_1-8_--integers_little; "
    // COMP-6, and a sign in front.
    "9(3)V9_COMP-6 1234 123.4; 9(4)_COMP-6 1A34 !not_a_packed_number_without_a_sign:_half_byte_A_in_byte_1_of_2; "
    "S9(3)_COMP-3 D123 -123 --field_F:packed-sign=leading; S99 D1F2 -12 --field_F:sign=leading; "
    // National and double-byte text, line ends in it.
    "N(2)_NATIONAL 004100DF \"A\u00DF\"; N(3)_NATIONAL 008520282029 \"\\u0085\\u2028\\u2029\"; "
    "G(2)_DISPLAY-1 42C142C2 \"\uFF21\uFF22\" --ccsid_930; G(1)_DISPLAY-1 42C1 !*_no_double-byte_characters:_page_37; "
    // Blanks, NULs and padding for numbers.
    "9(3) 404040 null --blank-numbers_null; S9(3)V9_COMP-3 404040 0.0 --blank-numbers_zero; 9(3) 000000 null "
    "--low-values_null; 9(3) 000000 !*OXR5505*00_00_00 --blank-numbers_null; 9(4)_COMP 4040 16448 "
    "--blank-numbers_null; "
    "9(4) 40F1F200 12 --lenient-numbers; S9(3)_SIGN_LEADING_SEPARATE 6040F1F2 -12 --lenient-numbers; "
    "S9(3) 40F1D2 -12 --field_F:lenient-numbers=yes; 9(2) 4040 !*OXR5505* --lenient-numbers; 9(3) F140F2 !*OXR5505* "
    "--lenient-numbers; "
    // Edited numbers.
    "ZZ9.99- 40F1F24BF5F060 -12.50 --edited_number; $$$9.99DB "
    "40405BF74BF5F0C4C2 -7.50 --edited_number; Z(3) 404040 0 --edited_number; Z(2)9 4040C1 "
    "!no_edited_number:_byte_3_of_3_is_C1 "
    "--edited_number; +9(2)V99 4EF1F2F3F4 12.34 --edited_number; S9(2).99 F1F24BF3D4 -12.34 --edited_number; "
    // Dates. Two digits tell a year from 1953 to 2052.
    "9(6) F5F2F1F2F3F1 \"2052-12-31\" --field_F:date=yyMMdd; 9(6) F5F3F0F1F0F1 \"1953-01-01\" --field_F:date=yyMMdd; "
    "9(8) F2F0F2F6F1F1F2F2 \"2026-11-22\" --field_F:date=yyyyMMdd; X(8) F2F24BF1F14BF2F6 \"2026-11-22\" "
    "--field_F:date=dd.MM.yy; 9(7)_COMP-3 0261122F \"2026-11-22\" --field_F:date=yyMMdd; 9(9)_COMP 0001E240 "
    "\"12:34:56\" --field_F:date=HHmmss; 9(8) F2F0F2F6F1F3F2F2 !*OXR5540* --field_F:date=yyyyMMdd; X(8) "
    "4040404040404040 null --field_F:date=yyyyMMdd_--blank-numbers_null";

// Floats have a usage and no picture.
constexpr char kFloatCases[] =
    "1 434D2000 1234; 1 C11921FB -1.570796; 2 4110000000000000 1; 1 40490FDB 3.1415927 ieee-be; 1 7FC00000 "
    "!not_a_number "
    "ieee-be; 2 000000000000F07F !an_infinite_number ieee-le; 2 3FB999999999999A 0.1 ieee-be; 1 00204D43 1234 hex-le; "
    "1 7F100000 4.523128485832664e+74; 1 1F100000 1.1479437019748901e-41; 1 4A000000 0; 2 4000000000000001 "
    "1.3877787807814457e-17; 1 00000100 !a_number_too_small";

TEST(Decode, ReadsFloats) {
  for (const Row& c : rows(kFloatCases)) {
    SCOPED_TRACE(shown(c));
    const std::string form = c.size() > 3 ? "--floats " + c[3] : "";
    const Outcome outcome = decodeBytes("01 R. 05 F COMP-" + c[0] + ".", fromHex(c[1]), form);
    const bool isGood = c[2][0] != '!';
    EXPECT_EQ(outcome.lines, isGood ? "{\"F\":" + c[2] + "}\n" : "");
    EXPECT_THAT(outcome.messages, HasSubstr(isGood ? "" : c[2].substr(1)));
  }
}

TEST(Decode, ReadsEachKindOfField) {
  for (const Row& c : rows(kFieldCases)) {
    SCOPED_TRACE(shown(c));
    const Outcome outcome = decodeBytes("01 R. 05 F PIC " + c[0] + ".", fromHex(c[1]), c.size() > 3 ? c[3] : "");
    const bool isGood = c[2][0] != '!';
    const std::string told = std::string(kStart) + "record 1, byte 0, F: " + c[2].substr(1);
    EXPECT_EQ(outcome.lines, isGood ? "{\"F\":" + c[2] + "}\n" : "");
    EXPECT_THAT(outcome.messages, ContainsRegex(isGood ? "^$" : asPattern(told)));
    EXPECT_EQ(outcome.code, isGood ? kDone : kBadField);
  }
}

constexpr char kPair[] = "01 R. 05 A PIC X. 05 N PIC 9.";
constexpr char kCounted[] = "01 R. 05 N PIC 9. 05 A PIC X OCCURS 1 TO 3 DEPENDING ON N. 05 B PIC X.";
constexpr char kNested[] = "01 R. 05 A OCCURS 2. 10 B OCCURS 2. 15 C PIC S9 COMP-3.";
constexpr char kGroups[] = "05 G. 10 A PIC X. 10 H. 15 B PIC X. 05 C PIC X.";
constexpr char kKinds[] = "01 CUST. 05 T PIC X. 05 N PIC XX. 01 ORD. 05 T PIC X. 05 Q PIC X(4).";
constexpr char kAreas[] = "05 T PIC 9. 05 A PIC X. 05 B REDEFINES A. 10 Q PIC X.";
constexpr char kMoving[] = "05 N PIC 9. 05 A PIC X OCCURS 0 TO 3 DEPENDING ON N. 05 B PIC X.";

const struct {
  const char* copybook;
  const char* records;  // ASCII, and bytes in hexadecimal between "<" and ">"
  const char* arguments;
  const char* result;  // the lines without quotes; each message after "|", a record's after "| #"
  int code = kDone;
} kRecordCases[] = {
    // Groups, arrays and FILLER.
    {kGroups, "abc", "", "{G:{A:a,H:{B:b}},C:c}"},
    {kGroups, "abc", "--flat", "{A:a,B:b,C:c}"},
    {"05 G OCCURS 2. 10 A PIC X. 10 H. 15 B PIC 9 OCCURS 2.", "a12b34", "--flat", "{G:[{A:a,B:[1,2]},{A:b,B:[3,4]}]}"},
    {"05 FILLER PIC X. 05 FILLER. 10 A PIC X. 10 FILLER PIC X(2). 05 B PIC X.", "-a--b", "", "{A:a,B:b}"},
    {"05 A PIC XX. 05 FILLER REDEFINES A. 10 B PIC X. 05 D REDEFINES A. 10 E PIC XX.", "xy", "", "{A:xy,B:x,D:{E:xy}}"},
    {"05 FILLER OCCURS 2. 10 A PIC X. 05 B PIC X.", "abc", "", "{FILLER:[{A:a},{A:b}],B:c}"},
    {"05 G. 10 A PIC X. 05 A PIC X. 05 H. 10 A PIC X.", "abc", "--flat", "{A:a,A(2):b,A(3):c}"},
    {"05 G. 10 FILLER PIC X.", "x", "", "{G:{}}"},
    {"05 FILLER OCCURS 2. 10 FILLER PIC X. 05 B PIC X.", "--b", "", "{B:b}"},
    {"77 A PIC 99.", "1207", "", "{A:12} {A:7}"},
    // Counted arrays: what follows moves, unless they have their full size.
    {kMoving, "0b2xyb3xyzb", "", "{N:0,A:[],B:b} {N:2,A:[x,y],B:b} {N:3,A:[x,y,z],B:b}"},
    {kMoving, "0---b2xy-b", "--odo fixed", "{N:0,A:[],B:b} {N:2,A:[x,y],B:b}"},
    {"05 N PIC 9. 05 FILLER PIC X OCCURS 0 TO 3 DEPENDING ON N. 05 B PIC X.", "2--b0b", "", "{N:2,B:b} {N:0,B:b}"},
    {"05 N PIC 9. 05 G OCCURS 2 DEPENDING N. 10 M PIC 9. 10 H OCCURS 3 DEPENDING M. 15 F PIC X.", "01012AB21A2BC", "",
     "{N:0,G:[]} {N:1,G:[{M:0,H:[]}]} {N:1,G:[{M:2,H:[{F:A},{F:B}]}]} {N:2,G:[{M:1,H:[{F:A}]},{M:2,H:[{F:B},{F:C}]}]}"},
    {"05 N PIC 9. 05 G OCCURS 2. 10 A PIC X OCCURS 0 TO 2 DEPENDING ON N. 10 B PIC X. 05 C PIC X.", "1abcdE2abcdefG",
     "", "{N:1,G:[{A:[a],B:b},{A:[c],B:d}],C:E} {N:2,G:[{A:[a,b],B:c},{A:[d,e],B:f}],C:G}"},
    {"05 G. 10 N PIC 9. 05 N PIC 9. 05 A PIC X OCCURS 3 DEPENDING N OF G.", "21xy", "", "{G:{N:2},N:1,A:[x,y]}"},
    {"05 X PIC X. 05 FILLER REDEFINES X. 10 N PIC 9. 05 A PIC X OCCURS 3 DEPENDING N.", "1a", "", "{X:1,N:1,A:[a]}"},
    // Records and areas of several kinds.
    {kKinds, "Cab12Oxxxx", "--when T=C:CUST --when T=O:ORD", "{T:C,N:ab} {T:O,Q:xxxx}"},
    {kKinds, "Cab12Oxxxx", "--when T=B-C:CUST --when T=*:ORD", "{T:C,N:ab} {T:O,Q:xxxx}"},
    {kKinds, "CabZxx", "",
     "{T:C,N:ab} {T:Z,N:xx} *: all records are read as CUST; --record or --when chooses others: ORD"},
    {kKinds, "CabZxx", "--when T=C:CUST",
     "{T:C,N:ab} | #2, byte 3, T: no condition (--when) holds for this value; bytes 5A", 1},
    {kKinds, "CabZxxC12", "--when T=C:CUST --on-unknown skip", "{T:C,N:ab} {T:C,N:12}"},
    {kKinds, "Zxx", "--when T=C:CUST --on-unknown skip", ""},
    {kKinds, "CabZxx", "--when T=C:CUST --on-unknown raw", "{T:C,N:ab} {RAW:5A7878}"},
    {kAreas, "1a2b", "--when T=1:A --when T=2-3:B", "{T:1,A:a} {T:2,B:{Q:b}}"},
    {kAreas, "2b3c9d", "--when T='1','2':A --when T=3:B --on-error null",
     "{T:2,A:b} {T:3,B:{Q:c}} {RAW:3964} | #3, byte 4, T: no condition (--when) holds for this value; bytes 39 | 1 bad "
     "*",
     1},
    {"05 T PIC S9V9. 05 A PIC X. 05 B REDEFINES A PIC 9.", "1ux057159", "--when T=-2--1.05:A --when T=+.50,1.5-1.5:B",
     "{T:-1.5,A:x} {T:0.5,B:7} {T:1.5,B:9}"},
    {kKinds, "'abxx-12xxOxxxx", "--when T='''','-':CUST --when T=\"O\":ORD", "{T:',N:ab} {T:-,N:12} {T:O,Q:xxxx}"},
    {kAreas, "1a", "--flat --when T=1:B", "{T:1,Q:a}"},
    {"05 G OCCURS 3. 10 T PIC X. 10 A PIC X. 10 B REDEFINES A PIC 9.", "Axb1A3", "--when T=A:A --when T=b:B",
     "{G:[{T:A,A:x},{T:b,B:1},{T:A,A:3}]}"},
    {"05 G OCCURS 2. 10 T PIC X. 10 A PIC X. 10 B REDEFINES A PIC 9.", "A1cx", "--when T=A:A --on-unknown raw",
     "{G:[{T:A,A:1},{T:c,RAW:78}]}"},
    {"05 N PIC 9. 05 L PIC X OCCURS 0 TO 3 DEPENDING N. 05 T PIC X. 05 A PIC X. 05 B REDEFINES A PIC 9.", "2xyAz0B7",
     "--when T=A:A --when T=*:B", "{N:2,L:[x,y],T:A,A:z} {N:0,L:[],T:B,B:7}"},
    // The field behind the area moves with it, whatever follows in its own group.
    {"05 N PIC 9. 05 L PIC X OCCURS 0 TO 3 DEPENDING N. 05 A PIC X. 05 B REDEFINES A PIC 9. 05 G. 10 T PIC X. 10 M PIC "
     "X"
     " OCCURS 0 TO 3 DEPENDING N.",
     "1x7Bm0yA", "--when T=A:A --when T=B:B", "{N:1,L:[x],B:7,G:{T:B,M:[m]}} {N:0,L:[],A:y,G:{T:A,M:[]}}"},
    {"05 N PIC 9. 05 A PIC X(4). 05 B REDEFINES A. 10 L PIC X OCCURS 0 TO 3 DEPENDING N. 10 C PIC X. 05 D PIC X.",
     "1abcde", "", "{N:1,A:abcd,B:{L:[a],C:b},D:e}"},
    {kAreas, "<00060000>1a<00050000>2", "--records rdw --when T=1:A --when T=2:B --on-error null",
     "{T:1,A:a} {T:2,B:{Q:null}} | #2, byte 11, B.Q: the record ends after 1 byte, before the field does | 1 bad *", 1},
    // What there is of a text that the record cuts off, and settings of a group.
    {"05 A PIC X(4). 05 B PIC X(4). 05 C PIC 9.", "<00060000>ab<000A0000>abcdef", "--records rdw --on-error null",
     "{A:ab,B:null,C:null} {A:abcd,B:ef,C:null} | #1, byte 8, B: the record ends after 2 bytes, before the field does "
     "| #2, "
     "byte 18, C: the record ends * | 2 bad *",
     1},
    {"05 G. 10 A PIC 9(6). 10 B PIC 9(6). 05 C PIC 9(6).", "261122261123261124", "--field G:date=yyMMdd",
     "{G:{A:2026-11-22,B:2026-11-23},C:261124}"},
    {"05 P POINTER. 05 A PIC X.", "ppppA", "", "{A:A}"},
    // The whole path of an item, before those that leave groups out.
    {"01 R. 05 G. 10 T PIC 9. 05 T PIC 9.", " 1", "--field R.T:lenient-numbers=yes --field G.T:blank-numbers=zero",
     "{G:{T:0},T:1}"},
    {"01 R. 05 G. 10 T PIC X. 05 T PIC X. 05 A PIC X. 05 B REDEFINES A PIC 9.", "ab2", "--when R.T=a:A --when T=b:B",
     "{G:{T:a},T:b,B:2}"},
    // Fields that cannot be read.
    {kPair, "A1B C3", "", "{A:A,N:1} | #2, byte 3, N: *(OXR5505); bytes 20", 1},
    {kPair, "A1B C3", "--on-error null",
     "{A:A,N:1} {A:B,N:null} {A:C,N:3} | #2, byte 3, N: *; bytes 20 | 1 bad field in 1 of 3 records, written as null"},
    {kPair, "A1B C3", "--on-error skip",
     "{A:A,N:1} {A:C,N:3} | #2, byte 3, N: *OXR5505*; bytes 20 | 1 bad field in 1 of 3 records, left out"},
    {kNested, "<1CFE3C00>", "--on-error null",
     "{A:[{B:[{C:1},{C:null}]},{B:[{C:3},{C:null}]}]} | #1, byte 1, A(1).B(2).C: *; bytes FE | #1, byte 3, "
     "A(2).B(2).C: * | 2 bad *"},
    {"05 G. 10 FILLER. 15 A PIC 9(66).", "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx7yy", "",
     "| #1, byte 0, G.A: *OXR5505*78 37 ... (66 in all)", 1},
    // Records of one length, cut off.
    {kPair, "A1B", "", "{A:A,N:1} | #2 at byte 2: it has 2 bytes, but the input has only 1 left", 2},
    {kPair, "A B", "--on-error skip", "| #1, byte 1, N: * | #2 at byte 2: it has 2 bytes, *", 2},
    {kPair, "", "", ""},
    // Records with headers.
    {kPair, "<00060000>A1<00060000>B2", "--records rdw", "{A:A,N:1} {A:B,N:2}"},
    {kPair, "<00000600>A1<00000600>B2", "--records rdw-le", "{A:A,N:1} {A:B,N:2}"},
    {kPair, "<00020000>A1", "--records rdw --length-includes-header no", "{A:A,N:1}"},
    {kPair, "<00060000>A1<0006>", "--records rdw", "{A:A,N:1} | #2 at byte 6: the input ends within its record header",
     2},
    {kPair, "<00070000>B2", "--records rdw",
     "| #1 at byte 0: its header asks for 3 bytes, but the input has only 2 left", 2},
    {kPair, "<00030000>A1", "--records rdw",
     "| #1 at byte 0: its header gives a length of 3, less than the header's own 4 bytes", 2},
    {kPair, "A1B2", "--records rdw", "| #1 at byte 0: there is no record header: bytes 3 and 4 of one are zero", 2},
    {kPair, "A1B2", "--records rdw-le", "| #1 at byte 0: there is no record header: bytes 1 and 2 of one are zero", 2},
    {kPair, "<00050000>A<00040000>", "--records rdw --on-error null",
     "{A:A,N:null} {A:null,N:null} | #1, byte 5, N: the record ends after 1 byte, before the field does "
     "| #2, byte 9, A: * | 2 bad fields in 2 of *"},
    {kPair, "<00070000>A1x", "--records rdw", "| #1, byte 6: the record has 3 bytes, 1 more than its layout; bytes 78",
     1},
    {kPair, "<00070000>A1x", "--records rdw --allow-extra", "{A:A,N:1}"},
    // Counts.
    {kCounted, "4ABCD", "", "| #1, byte 0, N: the count is 4, not within 1 and 3 as A asks; bytes 34", 1},
    {kCounted, "0ABCD", "--odo fixed --on-error null", "{N:0,A:null,B:D} | #1, byte 0, N: *"},
    {kCounted, "2ABC9AB1AB", "--on-error skip",
     "{N:2,A:[A,B],B:C} | #2, * | #2 at byte 4: its length hangs on a count that cannot be read, so the next record "
     "cannot be found",
     2},
    {kCounted, "<00080000>2ABC<00060000>AB<00070000>1AB", "--records rdw --on-error null",
     "{N:2,A:[A,B],B:C} {N:null,A:null,B:null} {N:1,A:[A],B:B} | #2, byte 12, N: * | 1 bad field in 1 of *"},
    {kCounted, "3AB", "", "| #1 at byte 0: it has 4 bytes, but the input has only 3 left", 2},
    {"05 N PIC S9 COMP-3. 05 A PIC X OCCURS 0 TO 3 DEPENDING ON N.", "<1D>", "",
     "| #1, byte 0, N: the count is no number of times, not within 0 and 3 as A asks; bytes 1D", 1},
};

TEST(Decode, FollowsTheLayoutAndTellsWhatIsWrong) {
  for (const auto& [copybook, records, arguments, result, code] : kRecordCases) {
    SCOPED_TRACE(std::string(copybook) + ' ' + records + ' ' + arguments);
    const Outcome outcome = decodeBytes(copybook, bytesOf(records), std::string("--ccsid 819 ") + arguments);
    const std::string given = inShort(outcome);
    EXPECT_THAT(given, ContainsRegex(asPattern(result) + (given.empty() ? "$" : " $")));
    const bool hasBadField = std::strstr(result, "| #") != nullptr;
    EXPECT_EQ(outcome.code, code == kDone && hasBadField ? kBadField : code);
  }
}

TEST(Decode, CountsFaultsThatItNoLongerTells) {
  const Outcome outcome = decodeBytes("01 R. 05 N PIC 9.", std::string(30, '\x40'), "--on-error null");
  EXPECT_EQ(std::count(outcome.messages.begin(), outcome.messages.end(), '\n'), 22);
  EXPECT_THAT(outcome.messages, HasSubstr("more bad fields follow; they are only counted\n"));
  EXPECT_THAT(outcome.messages, HasSubstr("30 bad fields in 30 of 30 records, written as null\n"));
}

// The arguments that follow those of a good decode, and what is told. "@" begins the name of a file of the test.
constexpr const char* kRefusals[][2] = {
    // What cannot be decoded is refused before the output is touched.
    {"-o @out --copybook @signs --ccsid 37 @in",
     "@signs:2: A: the picture S9.9 has an S among editing symbols*\n@signs:3: B: the picture S9,9 *"},
    {"--copybook @kinds --ccsid 37 --field T @in", "--field T: this is not PATH:key=value\n"},
    {"--copybook @kinds --ccsid 37 --field T:datum=y @in",
     "--field T:datum=y: there is no setting datum; there are: date, *"},
    {"--copybook @kinds --ccsid 37 --field T:sign=left @in", "--field T:sign=left: sign is leading or trailing\n"},
    {"--copybook @kinds --ccsid 37 --field G.FF:sign=leading @in",
     "--field G.FF:*: there is no item G.FF; is F meant?\n"},
    // What would have no effect, or could be two things.
    {"--copybook @kinds --ccsid 37 --field T:sign=leading @in",
     "--field T:sign=leading: this is only for DISPLAY numbers with a sign\n"},
    {"--copybook @kinds --ccsid 37 --field G:floats=hex @in", "--field G:*: this is only for COMP-1 and COMP-2\n"},
    {"--copybook @kinds --ccsid 37 --fields @settings @in",
     "@settings:3: A:integers=little: this is only for binary numbers and UTF-16\n"},
    {"--copybook @twice --ccsid 37 --field U:ccsid=37 @in",
     "--field U:*: U: several items have that name: G.U (@twice:2) and H.U (@twice:3)\n"},
    {"--copybook @twice --ccsid 37 --when R.U=1:A @in",
     "--when R.U=1:A: R.U: several items have that name: G.U (@twice:2) and H.U (@twice:3)\n"},
    {"--copybook @kinds --ccsid 37 --field T:date=MMdd @in", "--field *: the pattern MMdd has no year (y)\n"},
    {"--copybook @kinds --ccsid 37 --field T:date=yyyydd @in", "--field *: the pattern yyyydd has no month (M)\n"},
    {"--copybook @kinds --ccsid 37 --field T:date=yyyywwW @in", "--field *: the pattern yyyywwW has no day (d)\n"},
    {"--copybook @kinds --ccsid 37 --field T:date=CyyMMdd @in",
     "--field *: the pattern CyyMMdd has C, which stands for nothing; text goes between single quotes\n"},
    {"--copybook @kinds --ccsid 37 --field T:date=HH'h @in", "--field *: the pattern HH'h has a quote that is not *"},
    {"--copybook @kinds --ccsid 37 --field T:date=HHUmm @in", "--field *: the pattern HHUmm has a U that is not *"},
    {"--copybook @kinds --ccsid 37 --field T:date=hhmmss @in",
     "--field *: the pattern hhmmss has hours up to 12 (h, K) and no half of the day (a); H counts up to 23\n"},
    {"--copybook @kinds --ccsid 37 --field T:date=yyyyMMd @in",
     "--field *: the pattern yyyyMMd has d right behind other digits, where that is 1 digit; it takes dd\n"},
    {"--copybook @kinds --ccsid 37 --field T:date=ddMMyyy @in", "--field *: * 3 digits; it takes yy or yyyy\n"},
    {"--copybook @packed --ccsid 37 --field P:date=dd.MM.yy @in", "--field P:*: this is only for text, *"},
    {"--copybook @kinds --ccsid 37 --field T:date=yyyyMMdd @in", "--field T:*: this is only for text, *"},
    {"--copybook @kinds --ccsid 37 --length-includes-header yes @in", "--length-includes-header: this is for forms *"},
    {"--copybook @kinds --ccsid 37 --on-unknown raw @in", "--on-unknown: without --when no record is *"},
    {"--copybook @kinds --ccsid 37 --to csv --when T=1:A --on-unknown raw @in",
     "--on-unknown raw is not for --to csv*"},
    {"--copybook @kinds --ccsid 37 --to csv --decimals text @in", "--decimals text is not for --to csv*"},
    {"--copybook @kinds --ccsid 37 --fields @none @in", "*the settings of fields in @none cannot be read*"},
    {"-o @out --copybook @bad --ccsid 37 @in", "@bad:1:16: unknown symbol in the picture\n*"},
    {"-o @out --copybook @none --ccsid 37 @in", "@none: the copybook can't be read: No such file or directory\n"},
    {"-o @out --copybook @good --ccsid 12345 @in", "CCSID 12345: Invalid codepage (or missing table)*"},
    {"-o @out --copybook @good --ccsid 37 @none", "cannot open @none: No such file or directory\n"},
    {"-o @out --copybook @good --ccsid 37 @.", "cannot read @.: Is a directory\n"},
    {"-o @out --copybook @good --ccsid 37 --record NONE @in", "@good: no record is named NONE*"},
    {"-o @in --copybook @good --ccsid 37 @in", "cannot write @in: it is the input\n"},
    {"-o @no/out --copybook @good --ccsid 37 @in", "cannot write @no/out: No such file or directory\n"},
    {"-o @out --errors @out --copybook @good --ccsid 37 @in", "--errors @out: the lines go there already\n"},
    {"-o @out --errors @good --copybook @good --ccsid 37 @in", "cannot write @good: it is an input, too\n"},
    {"-o /dev/full --copybook @good --ccsid 37 @in", "cannot write /dev/full: No space left on device\n"},
    {"--copybook @kinds --ccsid 37 --when T=1 @in", "--when T=1: this is not FIELD=VALUE:NAME\n"},
    {"--copybook @kinds --ccsid 37 --when T=1,:A @in", "--when T=1,:A: a value is missing\n"},
    {"--copybook @kinds --ccsid 37 --when T='1:A @in", "--when T='1:A: a quoted value has no end\n"},
    {"--copybook @kinds --ccsid 37 --when T:A=1 @in", "--when T:A=1: this is not FIELD=VALUE:NAME\n"},
    {"--copybook @kinds --ccsid 37 --when T=1-:A @in", "--when T=1-:A: a value is missing\n"},
    {"--copybook @kinds --ccsid 37 --when T='1'2:A @in", "--when T='1'2:A: a \",\" is missing between two values\n"},
    {"--copybook @kinds --ccsid 37 --when T=.:A @in", "--when T=.:A: . is no number, as the field's values are\n"},
    {"--copybook @kinds --ccsid 37 --when G=1:A @in", "--when G=1:A: G is no text and no integer or decimal number\n"},
    {"--copybook @twice --ccsid 37 --when R.A=1:L @in",
     "--when R.A=1:L: L: several items have that name: G.L (@twice:2), H.L (@twice:3) and J.L (@twice:4)\n"},
    {"--copybook @kinds --ccsid 37 --when T=9-1:A @in", "--when T=9-1:A: the range 9-1 ends before it begins\n"},
    {"--copybook @kinds --ccsid 37 --when T=1,X:A @in", "--when T=1,X:A: X is no number, as the field's values are\n"},
    {"--copybook @kinds --ccsid 37 --when TT=1:A @in", "--when TT=1:A: there is no item TT; is T meant?\n"},
    {"--copybook @kinds --ccsid 37 --when T=1:C @in", "--when T=1:C: there is no record C, and no such item in R*"},
    {"--copybook @several --ccsid 37 --when T=1:B --when T=2:N @in",
     "--when T=2:N: there is no record N, and no such item in B*"},
    {"--copybook @kinds --ccsid 37 --when T=1:T @in",
     "--when T=1:T: T is no record, and neither redefines an item nor *"},
    {"--copybook @kinds --ccsid 37 --when F=1:A @in", "--when F=1:A: F has no fixed place to look at\n"},
    {"--copybook @moves --ccsid 37 --when T=1:A @in", "--when T=1:A: T has no fixed place to look at\n"},
    {"--copybook @behind --ccsid 37 --when T=1:A @in", "--when T=1:A: T has no fixed place to look at\n"},
    {"--copybook @kinds --ccsid 37 --record R --when T=1:R @in",
     "--record cannot be said where --when names records\n"},
    // Arguments that are not known, or missing.
    {"--ccsid 37 @in", "*--copybook is required*"},
    {"--copybook @good @in", "*--ccsid is required*"},
    {"--copybook @good --ccsid -1 @in",
     "--ccsid: -1 is neither the number of a code page nor a usual name of one (oxrrec decode --help *"},
    {"--copybook @good --ccsid cp03x @in", "--ccsid: cp03x is neither *"},
    {"--copybook @good --ccsid 99999999999999 @in", "--ccsid: 99999999999999 is neither *"},
    {"--copybook @good --odo 1 --ccsid 37 @in", "--odo: 1 is none of fixed|variable (oxrrec *"},
    {"--copybook @good --ccsid 37 --records middle @in", "*middle*"},
};

TEST(Decode, RefusesWhatItCannotDo) {
  const Folder folder;
  folder.write("in", "\xC1\xF1");
  folder.write("out", "as it was");
  folder.write("good", kPair);
  folder.write("signs", "01 R.\n05 A PIC S9.9.\n05 B PIC S9,9.\n05 FILLER PIC S9.9.\n");
  folder.write("kinds", "01 R. 05 T PIC 9. 05 A PIC X. 05 B REDEFINES A PIC X. 05 G OCCURS 2. 10 F PIC X.");
  folder.write("several", "01 A. 05 T PIC 9. 05 N PIC 9. 01 B. 05 T PIC 9.");
  folder.write("bad", "01 R. 05 A PIC Q.");
  folder.write("packed", "01 R. 05 P PIC 9(7) COMP-3.");
  folder.write("twice",
               "01 R.\n05 G. 10 U PIC 9. 10 L REDEFINES U PIC X.\n05 H. 10 U PIC 9. 10 L REDEFINES U PIC X.\n"
               "05 J. 10 V PIC 9. 10 L REDEFINES V PIC X. 05 A PIC X. 05 B REDEFINES A PIC X.");
  folder.write("moves",
               "01 R. 05 N PIC 9. 05 G OCCURS 0 TO 2 DEPENDING N. 10 A PIC X. 10 B REDEFINES A PIC 9. 05 T PIC 9.");
  folder.write("behind",
               "01 R. 05 N PIC 9. 05 L PIC X OCCURS 0 TO 2 DEPENDING N. 05 A PIC X. 05 B REDEFINES A PIC 9."
               " 05 M PIC X OCCURS 0 TO 2 DEPENDING N. 05 T PIC 9.");
  folder.write("settings", "# of fields\n\nA:integers=little\n");
  for (const auto& [arguments, messages] : kRefusals) {
    SCOPED_TRACE(arguments);
    const Outcome outcome = runProgram("decode --format free " + replaced(arguments, "@", folder.path("")));
    EXPECT_EQ(outcome.code, kFailed);
    const std::string told = replaced(replaced(outcome.messages, folder.path(""), "@"), "oxrrec: ", "");
    EXPECT_THAT(told, ContainsRegex(asPattern(messages) + '$'));
    EXPECT_EQ(outcome.lines + contentOf(folder.path("out")) + contentOf(folder.path("in")), "as it was\xC1\xF1");
  }
  EXPECT_EQ(runProgram("").code, kFailed);
  EXPECT_EQ(runProgram("explain x").code, kFailed);
}

TEST(Decode, WritesHelpToTheOutputAndLinesToAFile) {
  const Outcome help = runProgram("decode --help");
  EXPECT_EQ(help.code, kDone);
  EXPECT_THAT(help.lines, HasSubstr("--copybook"));
  const Folder folder;
  const std::string output = folder.write("out", "something longer than the line that takes its place");
  EXPECT_EQ(decodeBytes(kPair, "\xC1\xF1", "-o " + output).code, kDone);
  EXPECT_EQ(contentOf(output), "{\"A\":\"A\",\"N\":1}\n");
}

// The file system gives no room for the last line: a limit of the process stands for it.
TEST(Decode, LeavesNoFileWhereThereIsNoRoomForAll) {
  const Folder folder;
  const std::string output = folder.path("out");
  const std::string files = folder.write("c", kPair) + " -o " + output + ' ' + folder.write("in", "A1B2C3");
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  rlimit old;
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old), 0);
  const rlimit small{40, old.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  EXPECT_EQ(runProgram("decode --ccsid 819 --copybook " + files).code, kFailed);
  ::setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, before);
  EXPECT_EQ(folder.names(), "c in");
}

TEST(Decode, TellsThatStandardOutputIsFull) {
  const Folder folder;
  const std::string files = folder.write("c", kPair) + ' ' + folder.write("in", "A1");
  for (const std::string& arguments : {"decode --format free --ccsid 819 --copybook " + files, std::string("--help")}) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> full(std::fopen("/dev/full", "wb"), std::fclose);
    std::ostringstream messages;
    EXPECT_EQ(runOn({0, ::fileno(full.get()), messages, false}, arguments), kFailed);
    EXPECT_EQ(messages.str(), "oxrrec: cannot write standard output: No space left on device\n");
  }
}

}  // namespace
}  // namespace oxr::rec::test
