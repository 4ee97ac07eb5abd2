#include "oxrrec/decode.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "harness/rows.hpp"
#include "oxrrec/runs.hpp"

namespace oxr::rec::test {
namespace {

using oxr::test::Row;
using oxr::test::rows;
using oxr::test::shown;
using testing::HasSubstr;
using testing::StartsWith;

TEST(Decode, GivesTheLinesOfTheBundledSamples) {
  const std::string folder = std::string(OXR_SAMPLES_DIR) + '/';
  const struct {
    const char* name;
    const char* input;
    const char* arguments;
  } samples[] = {{"customers", "customers.rdw.bin", "--ccsid 37 --rdw big"}, {"parts", "parts.bin", "--ccsid 819"}};
  for (const auto& [name, input, arguments] : samples) {
    const Outcome outcome =
        runProgram("decode --copybook " + folder + name + ".cob " + arguments + ' ' + folder + input);
    EXPECT_EQ(outcome.lines, contentOf(folder + name + ".expected.jsonl"));
    EXPECT_EQ(outcome.messages, "");
    EXPECT_EQ(outcome.code, kDone);
  }
}

// "*" in an expectation stands for any text.
std::string asPattern(std::string_view text) {
  std::string pattern = "^";
  for (const char c : text) {
    if (std::strchr(".()[]{}+?^$|\\", c) != nullptr) pattern += '\\';
    pattern += c == '*' ? std::string("(.|\n)*") : std::string(1, c);
  }
  return pattern;
}

// A picture, the bytes of a field of it, and the JSON of its value or, behind "!", what is told of it; further
// arguments. "*" stands for any text.
constexpr char kFieldCases[] =
    "X(4) C140C240 \"A_B\"; X(4) 40404040 \"\"; X(2) C100 \"A\\u0000\"; X(3) E4F6FC \"äöü\" --ccsid_819; "
    // a character that the field cuts off is left out
    "X(3) 41F090 \"A\" --ccsid_1208; X(6) 0041D8000042 \"A\uFFFDB\" --ccsid_1200; "
    "X(4) 41003DD8 \"A\" --ccsid_1200_--integers_little; X(6) 412241225C22 \"A\\\"A\\\"\\\\\\\"\" --ccsid_819; "
    "Z9.99- 40F14BF2F360 \"_1.23-\"; "
    // DISPLAY: a digit a byte.
    "9(3) F0F0F7 7; 9(3)V99 F0F0F0F0F5 0.05; 9(3)V99 F0F0F0F0F5 \"0.05\" --decimals_text; "
    "9(3) F0F0F7 7 --decimals_text; 9(3)V9 F1F2F3F0 123.0; S9(3) F1F2D3 -123; S9(3) F1F2C3 123; "
    "S9V9_SIGN_LEADING D1F2 -1.2; S99_SIGN_LEADING_SEPARATE 60F1F2 -12; S99_SIGN_TRAILING_SEPARATE F1F24E 12; "
    "S99 3172 -12 --ccsid_819; S99 314B -12 --ccsid_819_--ascii-signs_letters; SVPP99 F1D2 -0.0012; 99PPP F1F2 12000; "
    "9(2) 4040 !OXR5505:_; 9(2) F1C5 !OXR5505:_; 9(4)V9 F1C5F2F0F0 !OXR5505:_; 9(4)_BLANK_WHEN_ZERO 40404040 0; "
    "99V99_BLANK_WHEN_ZERO 40404040 0.00; 9(4) 31453035 !OXR5505:_*decimal*1E05 --ccsid_819; "
    // grouped, to a lenient reader
    "9(4) 312C3233 !\"1,23\"_is_no_number_of_digits --ccsid_819; "
    // COMP-3.
    "S9(5)_COMP-3 12345D -12345; 9(4)_COMP-3 00012F 12; S9(3)V99_COMP-3 00005D -0.05; SV9(3)_COMP-3 123D -0.123; "
    "SVP(3)9(3)_COMP-3 123D -0.000123; S9(3)P(3)_COMP-3 123D -123000; "
    "S9(18)V9(13)_COMP-3 9876543210987654321098765432101D -987654321098765432.1098765432101; "
    "9(3)_COMP-3 123D !OXR5505:_*packed_decimal,_negative_sign; "
    "9(3)_COMP-3 1A3C !OXR5505:_*packed_decimal,_non-numeric_data_found*0x1a3c; "
    // Binary.
    "S9(4)_COMP FFFE -2; 9(4)_COMP FFFE 65534; S9(9)_COMP-5 FEFFFFFF -2 --integers_little; "
    "S9(18)_COMP 8000000000000000 -9223372036854775808; 9(18)_BINARY FFFFFFFFFFFFFFFF 18446744073709551615; "
    "S9(16)V99_COMP 8000000000000000 -92233720368547758.08; S9(2)V99_COMP FFFB -0.05; "
    "SP(5)9(4)_COMP FFFB -0.000000005; 9(4)PP_COMP 0007 700";

TEST(Decode, ReadsEachKindOfField) {
  for (const Row& c : rows(kFieldCases)) {
    SCOPED_TRACE(shown(c));
    const Outcome outcome = decodeBytes("01 R. 05 F PIC " + c[0] + ".", fromHex(c[1]), c.size() > 3 ? c[3] : "");
    if (c[2][0] != '!') {
      EXPECT_EQ(outcome.lines, "{\"F\":" + c[2] + "}\n");
      EXPECT_EQ(outcome.messages, "");
    } else {
      EXPECT_EQ(outcome.lines, "");
      const std::string told = "oxrrec: standard input: record 1, byte 0, F: " + c[2].substr(1);
      EXPECT_THAT(outcome.messages, testing::ContainsRegex(asPattern(told)));
      EXPECT_EQ(outcome.code, kBadField);
    }
  }
}

// Layouts of ASCII text: what becomes of groups, arrays, FILLER and counts.
struct ShapeCase {
  const char* copybook;
  const char* records;
  const char* lines;
  const char* arguments = "";
};

const ShapeCase kShapeCases[] = {
    {"01 R. 05 G. 10 A PIC X. 10 H. 15 B PIC X. 05 C PIC X.", "abcdef",
     "{'G':{'A':'a','H':{'B':'b'}},'C':'c'}\n{'G':{'A':'d','H':{'B':'e'}},'C':'f'}\n"},
    {"01 R. 05 G. 10 A PIC X. 10 H. 15 B PIC X. 05 C PIC X.", "abc", "{'A':'a','B':'b','C':'c'}\n", "--flat"},
    {"01 R. 05 G OCCURS 2. 10 A PIC X. 10 H. 15 B PIC 9 OCCURS 2.", "a12b34",
     "{'G':[{'A':'a','B':[1,2]},{'A':'b','B':[3,4]}]}\n", "--flat"},
    {"01 R. 05 FILLER PIC X. 05 FILLER. 10 A PIC X. 10 FILLER PIC X(2). 05 B PIC X.", "-a--b", "{'A':'a','B':'b'}\n"},
    {"01 R. 05 A PIC X(2). 05 FILLER REDEFINES A. 10 B PIC X. 10 C PIC X. 05 D REDEFINES A. 10 E PIC X. 10 F PIC X.",
     "xy", "{'A':'xy','D':{'E':'x','F':'y'}}\n"},
    {"01 R. 05 FILLER OCCURS 2. 10 A PIC X. 05 FILLER OCCURS 2 PIC X. 05 B PIC X.", "ab--c",
     "{'FILLER':[{'A':'a'},{'A':'b'}],'B':'c'}\n"},
    {"01 R. 05 G. 10 A PIC X. 05 A PIC X. 05 H. 10 A PIC X.", "abc", "{'A':'a','A(2)':'b','A(3)':'c'}\n", "--flat"},
    {"01 R. 05 G. 10 FILLER PIC X.", "x", "{'G':{}}\n"},
    {"77 A PIC 99.", "1207", "{'A':12}\n{'A':7}\n"},
    // Counted arrays: what follows moves, unless they have their full size.
    {"01 R. 05 N PIC 9. 05 A PIC X OCCURS 0 TO 3 DEPENDING ON N. 05 B PIC X.", "0b2xyb3xyzb",
     "{'N':0,'A':[],'B':'b'}\n{'N':2,'A':['x','y'],'B':'b'}\n{'N':3,'A':['x','y','z'],'B':'b'}\n"},
    {"01 R. 05 N PIC 9. 05 A PIC X OCCURS 0 TO 3 DEPENDING ON N. 05 B PIC X.", "0---b2xy-b",
     "{'N':0,'A':[],'B':'b'}\n{'N':2,'A':['x','y'],'B':'b'}\n", "--odo fixed"},
    {"01 R. 05 N PIC 9. 05 FILLER PIC X OCCURS 0 TO 3 DEPENDING ON N. 05 B PIC X.", "2--b0b",
     "{'N':2,'B':'b'}\n{'N':0,'B':'b'}\n"},
    {"01 R. 05 N PIC 9. 05 G OCCURS 0 TO 2 DEPENDING ON N. 10 M PIC 9. 10 H OCCURS 0 TO 3 DEPENDING ON M. 15 F PIC X.",
     "01012AB21A2BC21A1B",
     "{'N':0,'G':[]}\n{'N':1,'G':[{'M':0,'H':[]}]}\n{'N':1,'G':[{'M':2,'H':[{'F':'A'},{'F':'B'}]}]}\n"
     "{'N':2,'G':[{'M':1,'H':[{'F':'A'}]},{'M':2,'H':[{'F':'B'},{'F':'C'}]}]}\n"
     "{'N':2,'G':[{'M':1,'H':[{'F':'A'}]},{'M':1,'H':[{'F':'B'}]}]}\n"},
    {"01 R. 05 N PIC 9. 05 G OCCURS 2. 10 A PIC X OCCURS 0 TO 2 DEPENDING ON N. 10 B PIC X. 05 C PIC X.",
     "1abcdE2abcdefG",
     "{'N':1,'G':[{'A':['a'],'B':'b'},{'A':['c'],'B':'d'}],'C':'E'}\n"
     "{'N':2,'G':[{'A':['a','b'],'B':'c'},{'A':['d','e'],'B':'f'}],'C':'G'}\n"},
    // The count lies in what is left out.
    {"01 R. 05 X PIC X. 05 FILLER REDEFINES X. 10 N PIC 9. 05 A PIC X OCCURS 1 TO 3 DEPENDING ON N.", "2ab1c",
     "{'X':'2','A':['a','b']}\n{'X':'1','A':['c']}\n"},
};

std::string doubleQuoted(std::string text) {
  std::replace(text.begin(), text.end(), '\'', '"');
  return text;
}

TEST(Decode, FollowsTheLayout) {
  for (const auto& [copybook, records, lines, arguments] : kShapeCases) {
    SCOPED_TRACE(copybook);
    const Outcome outcome = decodeBytes(copybook, records, "--ccsid 819 " + std::string(arguments));
    EXPECT_EQ(outcome.lines, doubleQuoted(lines));
    EXPECT_EQ(outcome.messages, "");
    EXPECT_EQ(outcome.code, kDone);
  }
}

// What is told, and what is written before it.
struct FaultCase {
  const char* copybook;
  const char* hex;
  const char* arguments;
  int code;
  const char* lines;
  const char* messages;  // without "oxrrec: standard input: " in front of each line
};

constexpr char kPair[] = "01 R. 05 A PIC X. 05 N PIC 9.";
constexpr char kCounted[] = "01 R. 05 N PIC 9. 05 A PIC X OCCURS 1 TO 3 DEPENDING ON N. 05 B PIC X.";
constexpr char kNested[] = "01 R. 05 A OCCURS 2. 10 B OCCURS 2. 15 C PIC S9 COMP-3.";

const FaultCase kFaultCases[] = {
    {kPair, "C1F1C240C3F3", "", 1, "{'A':'A','N':1}\n",
     "record 2, byte 3, N: OXR5505: CPI Converter Input Data Invalid"},
    {kPair, "C1F1C240C3F3", "--on-error null", 0, "{'A':'A','N':1}\n{'A':'B','N':null}\n{'A':'C','N':3}\n",
     "record 2, byte 3, N: OXR5505: *; bytes 40\n1 bad field in 1 of 3 records, written as null\n"},
    {kPair, "C1F1C240C3F3", "--on-error skip", 0, "{'A':'A','N':1}\n{'A':'C','N':3}\n",
     "record 2, byte 3, N: OXR5505: *; bytes 40\n1 bad field in 1 of 3 records, left out\n"},
    {kNested, "1C2C3CFF", "", 1, "",
     "record 1, byte 3, A(2).B(2).C: OXR5505: CPI Converter Input Data Invalid; packed decimal, non-numeric data "
     "found; "
     "0xff; bytes FF\n"},
    {kNested, "1CFE3C00", "--on-error null", 0, "{'A':[{'B':[{'C':1},{'C':null}]},{'B':[{'C':3},{'C':null}]}]}\n",
     "record 1, byte 1, A(1).B(2).C: *\nrecord 1, byte 3, A(2).B(2).C: *\n2 bad fields in 1 of 1 record, written as "
     "null\n"},
    // Records of one length, cut off.
    {kPair, "C1F1C2", "", 2, "{'A':'A','N':1}\n",
     "record 2 at byte 2: it has 2 bytes, but the input has only 1 left\n"},
    {kPair, "C1F1C2", "--on-error skip", 2, "{'A':'A','N':1}\n", "record 2 at byte 2: it has 2 bytes, *"},
    {kPair, "C140C2", "--on-error skip", 2, "", "record 1, byte 1, N: *record 2 at byte 2: it has 2 bytes, *"},
    {kPair, "", "", 0, "", ""},
    // Records with headers.
    {kPair, "00060000C1F1,00060000C2F2", "--rdw big", 0, "{'A':'A','N':1}\n{'A':'B','N':2}\n", ""},
    {kPair, "00000600C1F1,00000600C2F2", "--rdw little", 0, "{'A':'A','N':1}\n{'A':'B','N':2}\n", ""},
    {kPair, "00020000C1F1", "--rdw big --rdw-excludes-header", 0, "{'A':'A','N':1}\n", ""},
    {kPair, "00060000C1F1,0006", "--rdw big", 2, "{'A':'A','N':1}\n",
     "record 2 at byte 6: the input ends within its record header\n"},
    {kPair, "00060000C1F1,00070000C2F2", "--rdw big", 2, "{'A':'A','N':1}\n",
     "record 2 at byte 6: its header asks for 3 bytes, but the input has only 2 left\n"},
    {kPair, "00030000C1F1", "--rdw big", 2, "",
     "record 1 at byte 0: its header gives a length of 3, less than the header's own 4 bytes\n"},
    {kPair, "C1F1C2F2", "--rdw big", 2, "",
     "record 1 at byte 0: there is no record header: bytes 3 and 4 of one are zero\n"},
    {kPair, "C1F1C2F2", "--rdw little", 2, "",
     "record 1 at byte 0: there is no record header: bytes 1 and 2 of one are zero\n"},
    {kPair, "00050000C1", "--rdw big", 1, "",
     "record 1, byte 5, N: the record ends after 1 bytes, before the field does\n"},
    {kPair, "00050000C1,00040000", "--rdw big --on-error null", 0, "{'A':'A','N':null}\n{'A':null,'N':null}\n",
     "record 1, byte 5, N: *\nrecord 2, byte 9, A: *\n2 bad fields in 2 of 2 records, written as null\n"},
    {kPair, "00080000C1F10102", "--rdw big", 1, "",
     "record 1, byte 6: the record has 4 bytes, 2 more than its layout; bytes 01 02\n"},
    {kPair, "00080000C1F10102", "--rdw big --allow-extra", 0, "{'A':'A','N':1}\n", ""},
    {kPair, "00080000C1F10102,00060000C2F2", "--rdw big --on-error skip", 0, "{'A':'B','N':2}\n",
     "record 1, byte 6: *\n1 bad field in 1 of 2 records, left out\n"},
    // Counts.
    {kCounted, "F4C1C2C3C4", "", 1, "",
     "record 1, byte 0, N: the count is 4, not within 1 and 3 as A asks; bytes F4\n"},
    {kCounted, "F0C2", "--odo fixed --on-error null", 2, "", "record 1 at byte 0: it has 5 bytes, *"},
    {kCounted, "F0C1C2C3C4", "--odo fixed --on-error null", 0, "{'N':0,'A':null,'B':'D'}\n", "record 1, byte 0, N: *"},
    {kCounted, "F2C1C2C3,F9C1C2,F1C1C2", "--on-error skip", 2, "{'N':2,'A':['A','B'],'B':'C'}\n",
     "record 2, byte 4, N: the count is 9, *\nrecord 2 at byte 4: its length hangs on a count that cannot be read, so "
     "the next record cannot be found\n"},
    {kCounted, "00080000F2C1C2C3,00060000C1C2,00070000F1C1C2", "--rdw big --on-error null", 0,
     "{'N':2,'A':['A','B'],'B':'C'}\n{'N':null,'A':null,'B':null}\n{'N':1,'A':['A'],'B':'B'}\n",
     "record 2, byte 12, N: OXR5505: *1 bad field in 1 of 3 records, written as null\n"},
    {kCounted, "F3C1C2", "", 2, "", "record 1 at byte 0: it has 4 bytes, but the input has only 3 left\n"},
    {kCounted, "F2C1C2", "", 2, "", "record 1 at byte 0: it has 4 bytes, but the input has only 3 left\n"},
    {"01 R. 05 N PIC S9 COMP-3. 05 A PIC X OCCURS 0 TO 3 DEPENDING ON N.", "1D", "", 1, "",
     "record 1, byte 0, N: the count is no number of times, not within 0 and 3 as A asks; bytes 1D\n"},
};

TEST(Decode, TellsWhatIsWrongAndKeepsWholeLines) {
  for (const auto& [copybook, hex, arguments, code, lines, messages] : kFaultCases) {
    SCOPED_TRACE(std::string(copybook) + ' ' + hex + ' ' + arguments);
    Outcome outcome = decodeBytes(copybook, fromHex(hex), arguments);
    EXPECT_EQ(outcome.code, code);
    EXPECT_EQ(outcome.lines, doubleQuoted(lines));
    for (std::size_t at; (at = outcome.messages.find("oxrrec: standard input: ")) != std::string::npos;)
      outcome.messages.erase(at, std::strlen("oxrrec: standard input: "));
    const std::string pattern = *messages == 0 ? "^$" : asPattern(messages);
    EXPECT_THAT(outcome.messages, testing::ContainsRegex(pattern));
  }
}

TEST(Decode, CountsFaultsThatItNoLongerTells) {
  const Outcome outcome = decodeBytes("01 R. 05 N PIC 9.", std::string(30, '\x40'), "--on-error null");
  EXPECT_EQ(std::count(outcome.messages.begin(), outcome.messages.end(), '\n'), 22);
  EXPECT_THAT(outcome.messages, HasSubstr("more bad fields follow; they are only counted\n"));
  EXPECT_THAT(outcome.messages, HasSubstr("30 bad fields in 30 of 30 records, written as null\n"));
}

// What cannot be decoded at all is refused before the output is touched.
TEST(Decode, RefusesWhatItCannotDoBeforeTheFirstRecord) {
  const Folder folder;
  const std::string input = folder.write("in", "\xC1\xF1");
  const std::string output = folder.write("out", "as it was");
  const std::string good = folder.write("good", kPair);
  const std::string wide = folder.write("wide", "01 R.\n05 A PIC 9(20) COMP.\n05 F COMP-1.\n05 FILLER COMP-2.\n");
  const std::string bad = folder.write("bad", "01 R. 05 A PIC Q.");
  const struct {
    std::string arguments;
    std::string message;
  } cases[] = {
      {"--copybook " + wide + " --ccsid 37 " + input,
       wide + ":2: A: a binary number of 20 digits (9 bytes) is wider than the 8 bytes that can be decoded\n" + wide +
           ":3: F: a floating-point field (COMP-1, COMP-2) cannot be decoded yet\n"},
      {"--copybook " + bad + " --ccsid 37 " + input, bad + ":1:"},
      {"--copybook " + folder.path("none") + " --ccsid 37 " + input, folder.path("none")},
      {"--copybook " + good + " --ccsid 12345 " + input, "CCSID 12345: OXR2132: Invalid codepage (or missing table)"},
      {"--copybook " + good + " --ccsid 37 " + folder.path("none"),
       "cannot open " + folder.path("none") + ": No such file or directory\n"},
      {"--copybook " + good + " --ccsid 37 " + folder.path("."),
       "cannot read " + folder.path(".") + ": Is a directory\n"},
      {"--copybook " + good + " --ccsid 37 --record NONE " + input, good},
  };
  for (const auto& [arguments, message] : cases) {
    SCOPED_TRACE(arguments);
    const Outcome outcome = runProgram("decode --format free -o " + output + ' ' + arguments);
    EXPECT_EQ(outcome.code, kFailed);
    EXPECT_THAT(outcome.messages, StartsWith("oxrrec: " + message));
    EXPECT_EQ(contentOf(output), "as it was");
  }
}

TEST(Decode, RefusesArgumentsThatItDoesNotKnow) {
  for (const char* arguments :
       {"", "explain x", "decode", "decode --ccsid 37 x", "decode --copybook c x",
        "decode --copybook c --ccsid EBCDIC x", "decode --copybook c --ccsid -1 x",
        "decode --copybook c --ccsid 37 --rdw middle x", "decode --copybook c --ccsid 37 x y"}) {
    const Outcome outcome = runProgram(arguments);
    EXPECT_EQ(outcome.code, kFailed) << arguments;
    EXPECT_NE(outcome.messages, "") << arguments;
    EXPECT_EQ(outcome.lines, "") << arguments;
  }
  const Outcome help = runProgram("decode --help");
  EXPECT_EQ(help.code, kDone);
  EXPECT_THAT(help.lines, HasSubstr("--copybook"));
}

TEST(Decode, WritesToAFile) {
  const Folder folder;
  const std::string copybook = folder.write("c", kPair);
  const std::string input = folder.write("in", "\xC1\xF1");
  const std::string command = "decode --format free --ccsid 37 --copybook " + copybook + ' ';
  const std::string output = folder.write("out", "something longer than the line that takes its place");
  EXPECT_EQ(runProgram(command + "-o " + output + ' ' + input).code, kDone);
  EXPECT_EQ(contentOf(output), "{\"A\":\"A\",\"N\":1}\n");

  const Outcome onItself = runProgram(command + "-o " + input + ' ' + input);
  EXPECT_EQ(onItself.code, kFailed);
  EXPECT_EQ(onItself.messages, "oxrrec: cannot write " + input + ": it is the input\n");
  EXPECT_EQ(contentOf(input), "\xC1\xF1");

  const Outcome full = runProgram(command + "-o /dev/full " + input);
  EXPECT_EQ(full.code, kFailed);
  EXPECT_EQ(full.messages, "oxrrec: cannot write /dev/full: No space left on device\n");
  const std::string nowhere = folder.path("no/out");
  EXPECT_EQ(runProgram(command + "-o " + nowhere + ' ' + input).messages,
            "oxrrec: cannot write " + nowhere + ": No such file or directory\n");
}

TEST(Decode, TellsThatItsReaderWentAway) {
  const Folder folder;
  const std::string copybook = folder.write("c", kPair);
  const std::string input = folder.write("in", "\xC1\xF1");
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  ::close(ends[0]);
  const auto before = std::signal(SIGPIPE, SIG_IGN);
  std::ostringstream messages;
  const char* const arguments[] = {"decode", "--format",   "free",           "--ccsid",
                                   "37",     "--copybook", copybook.c_str(), input.c_str()};
  EXPECT_EQ(run(arguments, {0, ends[1], messages, false}), kFailed);
  EXPECT_EQ(messages.str(), "oxrrec: cannot write standard output: Broken pipe\n");
  std::signal(SIGPIPE, before);
  ::close(ends[1]);
}

}  // namespace
}  // namespace oxr::rec::test
