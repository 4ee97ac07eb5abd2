// encode and verify through the program. Records of all kinds are held against decode in
// fuzz/records/roundtrip_check.hpp.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "oxrrec/runs.hpp"

namespace oxr::rec::test {
namespace {

// encode of `lines` by `copybook`, free format, with further arguments, in CCSID 819 unless they name another.
Outcome encodeLines(std::string_view copybook, std::string_view lines, const std::string& arguments = {}) {
  const Folder folder;
  const std::string page = arguments.find("--ccsid") == std::string::npos ? " --ccsid 819 " : " ";
  return runProgram("encode --format free --copybook " + folder.write("c", copybook) + page + arguments + " -", lines);
}

constexpr char kFields[] =
    "01 R. 05 T PIC X(3). 05 J PIC X(3) JUST RIGHT. 05 Z PIC S9(2)V9. 05 P PIC S9(3) COMP-3. 05 U PIC 9(3) COMP-3."
    " 05 B PIC S9(4) COMP. 05 L PIC 99PP. 05 S PIC S9 SIGN LEADING SEPARATE. 05 K PIC 99 BLANK WHEN ZERO.";

TEST(Encode, WritesEachKindOfField) {
  const Outcome outcome = encodeLines(
      kFields,
      "{\"T\":\"a\",\"J\":\"b\",\"Z\":-1.5,\"P\":-7,\"U\":\"12\",\"B\":-2,\"L\":1200,\"S\":3,\"K\":0}\n"
      "\r\n{\"K\":5, \"S\":-3, \"L\":0, \"B\":1.2e2, \"U\":999, \"P\":0, \"Z\":99.90, \"J\":\"bcd\", \"T\":\"\"}");
  EXPECT_EQ(outcome.code, kDone) << outcome.messages;
  EXPECT_EQ(outcome.lines, std::string("a    b01u\0\x7D\x01\x2F\xFF\xFE"
                                       "12+3  "
                                       "   bcd999\0\x0C\x99\x9F\0\x78"
                                       "00-305",
                                       42));
}

// By the pattern of the field; and by pictures, of which more are in cobolrecords_test.cpp.
TEST(Encode, WritesDatesAndEditedNumbersThatReadAsGiven) {
  constexpr struct {
    const char* clauses;
    const char* setting;  // of A
    const char* value;
    const char* bytes;  // or the message
  } kCases[] = {
      {"PIC X(10)", "date=dd.MM.yyyy", "\"2026-11-22\"", "22.11.2026"},
      {"PIC X(10)", "date=yyMMdd", "\"1999-01-02\"", "990102    "},
      {"PIC X(6)", "date=HHmmss", "\"12:34:56\"", "123456"},
      {"PIC X(14)", "date=yyyyMMddHHmmss", "\"2026-11-22T12:34:56\"", "20261122123456"},
      {"PIC 9(6)", "date=ddMMyy", "\"2004-02-01\"", "010204"},
      {"PIC S9(7) COMP-3", "date=yyyyDDD", "\"2026-01-31\"", "<2026031C>"},
      {"PIC 9(9) COMP", "date=yyyyMMdd", "\"2026-11-22\"", "<01352902>"},
      {"PIC X(6)", "date=yyMMdd", "\"1826-11-22\"",
       "1826-11-22 is none of the dates that yyMMdd has: it reads as 2026-11-22"},
      {"PIC X(6)", "date=yyMMdd", "261122", "a date is wanted, in quotes"},
      {"PIC X(6)", "date=yyMMdd", "null", "null cannot be stored"},
      {"PIC Z9-", "edited=number", "-123", "-123 needs 3 digits, and the field has 2"},
      {"PIC Z9", "edited=number", "-1", "-1 is negative, and the field has no sign"},
      {"PIC Z9.9", "edited=number", "0.25", "0.25 has more decimal places than the field's 1"},
      {"PIC -Z9", "plus=+", "\" 12\"", "this is only for packed numbers,"},
      {"PIC S9(2).9", "edited=number", "-12.5", "12.u"},
      {"PIC SZ9.9", "edited=number", "1.0",
       "a picture with an S and other symbols than 9 and a point cannot be written"},
      {"PIC XBX", "edited=number", "\"a b\"", "a b"},
      {"PIC Z(2001)", "edited=number", "1", "Z(2001)"},
  };
  for (const auto& [clauses, setting, value, bytes] : kCases) {
    const Outcome outcome = encodeLines("01 R. 05 A " + std::string(clauses) + ".",
                                        "{\"A\":" + std::string(value) + '}', "--field A:" + std::string(setting));
    if (outcome.code == kDone)
      EXPECT_EQ(outcome.lines, bytesOf(bytes)) << clauses;
    else
      EXPECT_NE(outcome.messages.find(bytes), std::string::npos) << outcome.messages;
  }
  const std::string settings = "--edited number --blank-numbers null --field A:plus=+ --field D:date=yyyyMMdd";
  EXPECT_EQ(
      encodeLines("01 R. 05 A PIC -Z9. 05 B PIC 9-. 05 D PIC 9(8) COMP.", R"({"A":1,"B":null,"D":null})", settings)
          .lines,
      "+ 1      ");
  // Blanks that are a zero are no null.
  EXPECT_EQ(encodeLines("01 R. 05 A PIC 9(2) BLANK WHEN ZERO.", "{\"A\":null}\n{\"A\":0}",
                        "--blank-numbers null --low-values null")
                .lines,
            bytesOf("<0000>  "));
}

TEST(Encode, ShowsNumbersAsItsProgramHasThem) {
  const std::string data = "DATA DIVISION.\n01 R. 05 A PIC Z.ZZ9,99-. 05 B PIC 9,9.";
  const auto program = [&](const char* names) { return "ID DIVISION.\nSPECIAL-NAMES.\n" + (names + data); };
  const std::string comma = program("Decimal-Point is Comma.\n");
  const std::string line = "{\"A\":-1234.50,\"B\":0.7}", record = "1.234,50-0,7";
  EXPECT_EQ(encodeLines(comma, line, "--edited number").lines, record);
  EXPECT_EQ(decodeBytes(comma, record, "--ccsid 819 --edited number").lines, line + '\n');
  EXPECT_EQ(decodeBytes(comma, "1,234.50-0.7", "--ccsid 819 --edited number").lines, "");
  EXPECT_NE(decodeBytes(program(""), record, "--ccsid 819 --edited number").lines, line + '\n');
}

TEST(Encode, TellsWhatDoesNotFit) {
  constexpr char kRest[] = "05 C PIC 9. 05 G OCCURS 0 TO 2 DEPENDING C. 10 X PIC X(2).";
  struct Case {
    const char* field;  // a declaration of A
    const char* line;   // without the braces, and without C and G
    const char* told;   // behind "line 1, "
  };
  constexpr Case kCases[] = {
      {"PIC X(2)", R"("A":"abc")", "A: the text has 3 characters, more than the field's 2 bytes"},
      {"PIC X(2)", R"("A":"€")", "A: code page 819 has no character \"€\""},
      {"PIC X(2)", R"("A":12)", "A: a text is wanted, in quotes"},
      {"PIC X(2)", R"("A":{"B":1})", "A: a value is wanted, not an object or an array"},
      {"PIC 99V9", R"("A":100)", "A: 100 needs 4 digits, and the field has 3"},
      {"PIC 99V9", R"("A":1.25)", "A: 1.25 has more decimal places than the field's 1"},
      {"PIC 99P", R"("A":15)", "A: 15 is no multiple of 10"},
      {"PIC 99", R"("A":-0)", "A: -0 is negative, and the field has no sign"},
      {"PIC 99", R"("A":-1)", "A: -1 is negative, and the field has no sign"},
      {"PIC 99", R"("A":"1x")", "A: \"1x\" is no number"},
      {"COMP-2", R"("A":"inf")", "A: \"inf\" is no number"},
      {"PIC 99", R"("A":true)", "A: a number is wanted"},
      {"PIC 99", R"("A":null)", "A: null cannot be stored"},
      {"PIC 99 COMP-3", R"("A":1000)", "A: 1000 needs 4 digits, and the field has 3"},
      {"PIC S99 COMP", R"("A":32768)", "A: 32768 is too large for the field's 2 bytes"},
      {"PIC 99", R"("B":1)", "A: the name is missing"},
      {"PIC 99", R"("A":1,"B":1)", "B: the copybook has no such name here"},
      {"PIC 99", R"("A":1,"A":1)", "A: it is given twice"},
      {"PIC 99. 05 B PIC 9", R"("B":1,"A":1,"B":2)", "B: it is given twice"},
      {"PIC 99. 05 B PIC 9", R"("X":1,"B":1,"X":2,"A":1)", "X: the copybook has no such name here"},
      {"PIC 9 OCCURS 2", R"("A":[1])", "A: 1 element, not the 2 that it always has"},
      {"PIC 9 OCCURS 2", R"("A":[1,2,3])", "A(2): more than the 2 elements that it has room for"},
      {"PIC 9 OCCURS 2", R"("A":[1,"x"])", "A(2): \"x\" is no number"},
      {"PIC 9 OCCURS 2", R"("A":1)", "A: an array is wanted, as in [...]"},
      {"PIC 9 OCCURS 2", R"("A":{"B":1,"C":2})", "A: an array is wanted, as in [...]"},
      {"PIC 9 OCCURS 2", R"("A":[1,[2]])", "A(2): a value is wanted, not an object or an array"},
      {"COMP-1", R"("A":true)", "A: a number is wanted"},
      {"COMP-2", R"("A":1e999)", "A: 1e999 is too large or too small for a float"},
      {"COMP-2", R"("A":1e80)", "A: the number is too large or too small for the field's float"},
      {"PIC 9(38) COMP", R"("A":340282366920938463463374607431768211456)",
       "A: 340282366920938463463374607431768211456 is too large for the field's 16 bytes"},
      {"PIC 9(38) COMP", R"("A":999999999999999999999999999999999999999)",
       "A: 999999999999999999999999999999999999999 is too large for the field's 16 bytes"},
      {"PIC N(2)", R"("A":"abc")", "A: the text has 3 characters, more than the field's 4 bytes have room for"},
      {"PIC G(2)", R"("A":"a")", "A: the text has characters that take one byte in code page 819"},
  };
  for (const Case& row : kCases) {
    const Outcome outcome = encodeLines("01 R. 05 A " + std::string(row.field) + ". " + kRest,
                                        '{' + std::string(row.line) + R"(,"C":0,"G":[]})");
    EXPECT_EQ(outcome.code, kBadField);
    EXPECT_EQ(outcome.messages, "oxrrec: standard input: line 1, " + std::string(row.told) + '\n');
    EXPECT_EQ(outcome.lines, "");
  }
  constexpr const char* kLines[][2] = {
      {R"({"C":2,"G":[{"X":"a"}]})", "G: 1 element, but C is 2"},
      {R"({"C":2,"G":[{"X":"a"},{"X":"abc"}]})", "G(2).X: the text has 3 characters, more than the field's 2 bytes"},
      {R"({"C":3,"G":[{"X":"a"},{"X":"b"},{"X":"c"}]})", "G(2): more than the 2 elements that it has room for"},
      {R"({"C":1,"G":[5]})", R"(G(1): an object is wanted, as in {"NAME": ...})"},
      {R"({"C":1,"G":[[{"X":"a"}]]})", R"(G(1): an object is wanted, as in {"NAME": ...})"},
      {R"({"C":1,"G":[null]})", "G(1): null cannot be stored"},
      {R"({"C":1,"G":null})", "G: null cannot be stored"},
      {"{\"C\":0,\n", "column 1: no JSON: a quote, a comma, a colon or a bracket is missing or too many"},
  };
  for (const auto& [line, why] : kLines)
    EXPECT_EQ(encodeLines("01 R. " + std::string(kRest), line).messages,
              "oxrrec: standard input: line 1, " + std::string(why) + '\n');
  EXPECT_EQ(encodeLines("01 R. 05 C PIC 9. 05 G OCCURS 1 TO 2 DEPENDING C PIC X.", R"({"C":0,"G":[]})").messages,
            "oxrrec: standard input: line 1, G: 0 elements, not within 1 and 2\n");
  EXPECT_EQ(encodeLines("01 R. 05 C PIC 9. 05 G OCCURS 1 TO 2 DEPENDING C PIC X.", R"({"C":null,"G":["a"]})",
                        "--blank-numbers null")
                .messages,
            "oxrrec: standard input: line 1, G: its count is not known\n");
  EXPECT_EQ(encodeLines("01 R. 05 C PIC 9. 05 FILLER OCCURS 3 DEPENDING C PIC X.", R"({"C":9})").messages,
            "oxrrec: standard input: line 1, FILLER: its count is not known, or not within 0 and 3\n");
}

TEST(Encode, LeavesOutLinesThatDoNotFit) {
  const std::string lines = "{\"A\":\"a\"}\n{}\n{\"A\":\"b\"}\n[]\n";
  const Outcome stopped = encodeLines("01 A PIC X.", lines);
  EXPECT_EQ(stopped.code, kBadField);
  EXPECT_EQ(stopped.lines, "a");
  const Outcome skipped = encodeLines("01 A PIC X.", lines, "--on-error skip --records length2");
  EXPECT_EQ(skipped.code, kBadField);
  EXPECT_EQ(skipped.lines, std::string("\0\1a\0\1b", 6));
  EXPECT_EQ(skipped.messages,
            "oxrrec: standard input: line 2, A: the name is missing\n"
            "oxrrec: standard input: line 4, column 1: an object is wanted, as in {\"NAME\": ...}\n"
            "oxrrec: standard input: 2 of 4 records left out\n");
  // Many are counted, no longer told; and all that is good is written, however much.
  std::string all, good;
  for (int i = 0; i < 3000; ++i) {
    const std::string text(100, static_cast<char>('a' + i % 26));
    all += "{\"A\":\"" + text + "\"}\n" + (i % 100 == 0 ? "{}\n" : "");
    good += text;
  }
  const Outcome many = encodeLines("01 A PIC X(100).", all, "--on-error skip");
  EXPECT_TRUE(many.lines == good);
  EXPECT_EQ(std::count(many.messages.begin(), many.messages.end(), '\n'), 22);
}

// Items that redefine each other agree, or one is given, or the record is refused.
TEST(Encode, WritesWhatRedefines) {
  static constexpr char kCopybook[] =
      "01 R. 05 A PIC X(3). 05 B REDEFINES A PIC S9(3). 05 C REDEFINES A. 10 D PIC X. 10 E PIC 9.";
  constexpr struct {
    const char* line;
    const char* bytes;  // or the message
  } kCases[] = {
      {R"({"A":"12s","B":-123,"C":{"D":"1","E":2}})", "12s"},
      {R"({"A":null,"B":123,"C":null})", "123"},
      {R"({"B":-123})", "12s"},
      {R"({"C":{"D":"x","E":2}})", "x2\x20"},
      {R"({"A":"123","B":-123,"C":{"D":"1","E":2}})",
       "A: its value does not agree with that of B, which has the same bytes"},
      {R"({"A":"1 3","B":null,"C":{"D":"1","E":2}})",
       "A: its value does not agree with that of C.E, which has the same bytes"},
      {R"({"B":null,"C":{"D":"x","E":2}})", "B: null cannot be stored, and nothing else gives its bytes"},
      {R"({})", "A: the name is missing, and nothing else gives its bytes"},
  };
  for (const auto& [line, bytes] : kCases) {
    const Outcome outcome = encodeLines(kCopybook, line);
    EXPECT_EQ(outcome.code == kDone ? outcome.lines : outcome.messages.substr(32, outcome.messages.size() - 33), bytes)
        << line;
  }
  // Null is no number.
  const Outcome blank =
      encodeLines("05 A PIC 9(3). 05 B REDEFINES A PIC X(3).", R"({"A":5,"B":""})", "--blank-numbers null");
  EXPECT_THAT(blank.messages, testing::HasSubstr("A: its value does not agree with that of B"));
}

// The level 01 entry, or the item of an area, whose conditions the values meet. A framed record ends with it.
TEST(Encode, WritesTheKindThatTheValuesTellOf) {
  constexpr char kRecords[] = "01 A. 05 A-T PIC X. 05 V PIC 9. 01 B. 05 G. 10 B-T PIC X. 05 W PIC X(2).";
  const std::string conditions = "--records length2 --when A-T=A:A --when B-T=B,C:B";
  const Outcome outcome = encodeLines(
      kRecords, "{\"A-T\":\"A\",\"V\":1}\n{\"W\":\"x\",\"G\":{\"B-T\":\"C\"}}\n{\"A-T\":\"C\",\"V\":1}\n", conditions);
  EXPECT_EQ(outcome.lines, std::string("\0\2A1\0\3Cx ", 9));
  EXPECT_EQ(outcome.messages, "oxrrec: standard input: line 3, no condition (--when) tells what record this is\n");
  constexpr char kAreas[] = "01 R. 05 P PIC X(2). 05 Q REDEFINES P. 10 N PIC 9. 05 T PIC X.";
  EXPECT_EQ(encodeLines(kAreas, R"({"P":"ab","T":"P"})", "--when T=P:P --when T=Q:Q").lines, "abP");
  EXPECT_EQ(encodeLines(kAreas, R"({"Q":{"N":1},"T":"Q"})", "--when T=P:P --when T=Q:Q").lines, "1 Q");
  constexpr char kLast[] = "01 R. 05 T PIC X. 05 P PIC X(3). 05 Q REDEFINES P PIC 9.";
  EXPECT_EQ(encodeLines(kLast, R"({"T":"Q","Q":1})", "--records lines --when T=P:P --when T=Q:Q").lines, "Q1\n");
}

// What no condition holds for, and what decode put into each other: "|" stands before messages.
TEST(Encode, TakesRecordsApartThatDecodePutTogether) {
  static constexpr char kCopybook[] =
      "01 A. 05 K PIC X. 05 N PIC 9. 01 B. 05 K PIC X. 05 N PIC 9. 01 C. 05 K PIC X. 05 N PIC 9.";
  static constexpr char kAreas[] = "01 R. 05 G OCCURS 2. 10 T PIC X. 10 P PIC X(2). 10 Q REDEFINES P PIC 9(2).";
  constexpr char kKinds[] = "--when K=a:A --when K=b:B --when K=c:C ";
  constexpr struct {
    const char* copybook;
    const char* arguments;
    const char* line;
    const char* records;
  } kCases[] = {
      {kCopybook, "--nest B:A --nest C:B",
       R"({"K":"a","N":1,"B":[{"K":"b","N":2,"C":[{"K":"c","N":3},{"K":"c","N":4}]},{"K":"b","N":5,"C":[]}]})",
       "a1b2c3c4b5"},
      {kCopybook, "--nest b:a --nest C:A", R"({"C":[{"K":"c","N":2}],"K":"a","B":[{"N":3,"K":"b"}],"N":1})", "a1c2b3"},
      {kCopybook, "--nest B:A", R"({"K":"a","N":1,"B":[{"K":"b","N":2},{"K":"b","N":33}]})",
       "a1b2| line 1, B(2).N: 33 needs 2 digits, and the field has 1"},
      {kCopybook, "--nest B:A --nest C:B --on-error skip",
       R"({"K":"a","N":1,"B":[{"K":"b","N":22,"C":[{"K":"c","N":3}]},{"K":"b","N":5,"C":[7]}]})",
       "a1b5| line 1, B(1).N: 22 needs 2 digits, and the field has 1 "
       "| line 1, B(2).C(1): no condition (--when) tells what record this is | 3 of 5 records left out"},
      {kCopybook, "--nest B:D", "{}", "oxrrec: --nest: no --when tells which records are D"},
      {kCopybook, "", R"({"RAW":"7A39"})", "z9"},
      {kCopybook, "", R"({"RAW":"7A"})", "| line 1, RAW: it has 1 byte, not the 2 of a record"},
      {kCopybook, "", R"({"RAW":"7A3"})", "| line 1, no condition (--when) tells what record this is"},
      {kCopybook, "--records length2", R"({"RAW":"7a"})", "<0001>z"},
      {kCopybook, "--on-unknown raw", R"({"RAW":"7A39"})", "z9"},
      {kCopybook, "--on-unknown error", R"({"RAW":"7A39"})",
       "| line 1, no condition (--when) tells what record this is"},
      {kCopybook, "--on-unknown skip", "{\"RAW\":\"7A39\"}\n{\"K\":\"x\",\"N\":1}\n{\"K\":\"a\",\"N\":1}", "a1"},
      {kCopybook, "--on-unknown skip --nest B:A",
       R"({"K":"a","N":1,"B":[]})"
       "\n"
       R"({"K":"x","N":1,"B":[{"K":"b","N":2}]})",
       "a1"},
      // Without headers all kinds have the length of the longest.
      {"01 A. 05 K PIC X. 01 B. 05 K PIC X. 05 N PIC 9(2).", "--when K=a:A --when K=b:B",
       "{\"K\":\"a\"}\n{\"K\":\"b\",\"N\":12}", "a<0000>b12"},
      {kAreas, "--when T=p:P --on-unknown skip", R"({"G":[{"T":"x"},{"T":"p","P":"7"}]})", "x  p7 "},
      {kAreas, "--when T=p:P --records length2", R"({"G":[{"T":"p","P":"7"},{"T":"x","RAW":"2A"}]})", "<0005>p7 x*"},
      // What tells its own end is no longer than that.
      {"05 K PIC X. 05 A PIC X(8). 05 C REDEFINES A. 10 N PIC 9. 10 T PIC X OCCURS 0 TO 5 DEPENDING ON N.",
       "--when K=A:A --when K=C:C --records length2", R"({"K":"C","C":{"N":2,"T":["x","y"]}})", "<0004>C2xy"},
      {kAreas, "--when T=p:P", R"({"G":[{"T":"p","P":"7","Z":1},{"T":"p","P":"7"}]})",
       "| line 1, G(1).Z: the copybook has no such name here"},
      {kAreas, "--when T=p:P --when T=q:Q", R"({"G":[{"T":"x","RAW":"2A2A"},{"T":"q","Q":7}]})", "x**q07"},
      {kAreas, "--when T=p:P", R"({"G":[{"T":"x","RAW":"2A"},{"T":"p","P":"7"}]})",
       "| line 1, G(1).P: RAW has 1 byte, not the 2 of it"},
  };
  for (const auto& [copybook, arguments, line, records] : kCases) {
    const Outcome outcome = encodeLines(copybook, line, (copybook == kCopybook ? kKinds : "") + std::string(arguments));
    const std::string told = replaced(replaced(outcome.messages, kStart, "| "), "\n", " ");
    EXPECT_EQ(outcome.lines + told, bytesOf(records) + (told.empty() ? "" : " ")) << line;
  }
}

TEST(Encode, EndsLinesAndFillsBlocksAsSaid) {
  const auto encoded = [](const std::string& arguments) {
    return encodeLines("01 A PIC X(3).", "{\"A\":\"a\"}\n{\"A\":\"bcd\"}\n", arguments).lines;
  };
  EXPECT_EQ(encoded("--records lines --line-end crlf --trim-lines"), "a\r\nbcd\r\n");
  EXPECT_EQ(encoded("--records lines --line-end nel --ccsid 37 --trim-lines"), bytesOf("<8115828384>") + '\x15');
  EXPECT_EQ(encoded("--records bdw --block-size 11"), bytesOf("<000B000000070000>a  <000B000000070000>bcd"));
  EXPECT_EQ(encoded("--records spanned --block-size 9"),
            bytesOf("<0009000000050100>a<0009000000050300> <0009000000050200> <0009000000050100>b"
                    "<0009000000050300>c<0009000000050200>d"));
}

// What stands around records has no room for them, or could not be told from them.
TEST(Encode, TellsWhatCannotBeFramed) {
  static constexpr char kLong[] = "05 A PIC X(70000).";
  static constexpr char kShort[] = "01 R. 05 A PIC X(2).";
  constexpr struct {
    const char* copybook;
    const char* arguments;
    const char* line;
    const char* told;
  } kCases[] = {
      {kLong, "length2", R"({"A":""})", "it has 70000 bytes, its length in front has room for 65535"},
      {kLong, "rdw", R"({"A":""})", "it has 70000 bytes, its length in front has room for 65531"},
      {kLong, "bdw", R"({"A":""})", "it has 70000 bytes, its block has room for 32752"},
      {kShort, "lines", R"({"A":"a\n"})", "it holds a line end, which a line cannot"},
      {kShort, "lines", R"({"A":"a\r"})", "it holds a line end, which a line cannot"},
      {kShort, "lines --ccsid 37", R"({"A":"\u0085a"})", "it holds a line end, which a line cannot"},
      {kShort, "spanned --when A=x:R", R"({"RAW":""})", "it has no bytes"},
  };
  for (const auto& [copybook, arguments, line, told] : kCases) {
    const Outcome outcome = encodeLines(copybook, line, std::string("--records ") + arguments);
    EXPECT_EQ(outcome.messages, "oxrrec: standard input: line 1: record 1: " + std::string(told) + '\n') << arguments;
    EXPECT_EQ(outcome.lines, "");
  }
}

TEST(Encode, FillsWhatNobodyGives) {
  static constexpr char kCopybook[] =
      "01 R. 05 A PIC X. 05 FILLER PIC X(2). 05 FILLER PIC 9(4) COMP. 05 C PIC 9."
      " 05 G OCCURS 0 TO 2 DEPENDING C. 10 T PIC X. 10 FILLER PIC X. 05 Z PIC X.";
  const std::string line = R"({"A":"a","C":1,"G":[{"T":"t"}],"Z":"z"})";
  EXPECT_EQ(encodeLines(kCopybook, line).lines, std::string("a  \0\0"
                                                            "1t z",
                                                            9));
  EXPECT_EQ(encodeLines(kCopybook, line, "--odo fixed --ccsid 37").lines,
            std::string("\x81\x40\x40\0\0\xF1\xA3\x40\x40\x40\xA9", 11));
  EXPECT_EQ(encodeLines(kCopybook, line, "--filler 2a").lines, "a****1t*z");
  EXPECT_EQ(encodeLines(kCopybook, line, "--filler 2").code, kFailed);
  EXPECT_EQ(encodeLines(kCopybook, line, "--records auto").code, kFailed);
  EXPECT_EQ(encodeLines(kCopybook, line, "--max-line 1GiB").code, kDone);
  EXPECT_EQ(encodeLines(kCopybook, line, "--max-line 1073741825").messages,
            "oxrrec: --max-line: 1073741825 is more than 1073741824 bytes (oxrrec encode --help tells more)\n");
}

TEST(Verify, TellsDifferencesAndWhetherTheyCarryAValue) {
  const Folder folder;
  const std::string copybook =
      folder.write("c", "01 R. 05 A PIC S9(3) COMP-3. 05 FILLER PIC X. 05 B PIC 9(2). 05 C REDEFINES B PIC X(2).");
  const auto verify = [&](std::string_view bytes, const std::string& arguments = {}) {
    const Outcome outcome = runProgram("verify --format free --ccsid 819 --copybook " + copybook + ' ' +
                                       folder.write("r", bytes) + arguments);
    return replaced(outcome.lines, folder.path("r"), "r") + std::to_string(outcome.code);
  };
  EXPECT_EQ(verify("\x12\x3C 12\x45\x6Dx34"),
            "r: record 2, byte 2: 78 became 20, which no field gives\n"
            "r: 2 records, 10 bytes: 0 differences with a value, 1 without\n1");
  EXPECT_EQ(verify("\x12\x3F ab"),
            "r: record 1, byte 3, B: not a number: byte 1 of 2 is 61 (\"a\"), no digit (OXR5505); bytes 61 62\n"
            "r: record 1, byte 0, A: 12 3F became 12 3C, the same value\n"
            "r: 1 record, 5 bytes: 0 differences with a value, 1 without; 1 bad field\n1");
  EXPECT_EQ(verify("\x12\x3Fxab", " --keep-filler"),
            "r: record 1, byte 3, B: not a number: byte 1 of 2 is 61 (\"a\"), no digit (OXR5505); bytes 61 62\n"
            "r: 1 record, 5 bytes: all else equal; 1 without a value taken from the original; 1 bad field\n1");
  EXPECT_EQ(verify("xx 12"),
            "r: record 1, byte 0, A: not a packed decimal: half byte 8 in byte 2 of 2, where its sign should stand "
            "(OXR5505); bytes 78 78\n"
            "r: 1 record, 5 bytes: all else equal; 1 bad field\n1");
  EXPECT_EQ(verify(""), "r: 0 records, 0 bytes: all equal\n0");
  // Only the first of each are told.
  const std::string different = verify(replaced(std::string(25, '.'), ".", "\x12\x3Cx12"));
  EXPECT_EQ(std::count(different.begin(), different.end(), '\n'), 21);
  EXPECT_EQ(different.substr(different.rfind("r: ")),
            "r: 25 records, 125 bytes: 0 differences with a value, 25 without\n1");
  const std::string bad = verify(std::string(125, 'x'));
  EXPECT_EQ(std::count(bad.begin(), bad.end(), '\n'), 21);
  EXPECT_EQ(bad.substr(bad.rfind("r: ")), "r: 25 records, 125 bytes: all else equal; 50 bad fields\n1");
  EXPECT_EQ(runProgram("verify --ccsid 37 --copybook " + copybook + " -").code, kFailed);
}

// Bytes that carry no value come from the original: what is told without that, and with it.
TEST(Verify, KeepsWhatCarriesNoValue) {
  static constexpr char kCounted[] = "01 R. 05 N PIC 9. 05 G OCCURS 0 TO 3 DEPENDING ON N. 10 X PIC X. 05 Z PIC X.";
  static constexpr char kSilent[] = "01 R. 05 N PIC 9. 05 FILLER OCCURS 0 TO 3 DEPENDING ON N PIC X. 05 Z PIC X.";
  static constexpr char kAreas[] = "01 R. 05 G OCCURS 2. 10 T PIC X. 10 P PIC X(2). 10 Q REDEFINES P PIC 9(2).";
  static constexpr char kJustified[] = "01 R. 05 J PIC X(3) JUST RIGHT. 05 K REDEFINES J PIC X(3).";
  constexpr struct {
    const char* copybook;
    const char* arguments;
    const char* bytes;  // of one record
    const char* told;
    const char* kept;
  } kCases[] = {
      {"01 R. 05 A PIC X. 05 B PIC 9(2). 05 C PIC X.", "length2", "<0001>a", "B: the record ends", "else equal; 1 bad"},
      {"01 R. 05 A PIC X. 05 C PIC X(5).", "length2", "<0003>abc", "3 bytes became 6, the same values", "all equal"},
      {"01 R. 05 C PIC X(3) JUST RIGHT.", "length2", "<0002>ab", "C: 61 62 became 20 61, the same", "all equal; 2"},
      {"01 R. 05 A PIC X. 05 FILLER PIC X(5).", "length2", "<0003>abc", "0 differences with a value, 2", "all equal"},
      {"01 R. 05 A PIC X(2). 05 B REDEFINES A PIC X(4).", "length2", "<0003>abc", "became 4, the same", "all equal"},
      {kCounted, "length2", "<0004>xabz", "N: not a number", "else equal; 1 bad"},
      {kCounted, "length2", "<0004>9abz", "N: the count", "else equal; 1 bad"},
      {kCounted, "length2 --odo fixed", "<0005>9abcz", "N: the count", "else equal; 1 bad"},
      {kSilent, "length2", "<0004>9abz", "N: the count", "else equal; 1 bad"},
      {kAreas, "length2 --when T=p:P --when T=q:Q", "<0006>x**q07", "G(1).T: no condition", "else equal; 1 bad"},
      {kAreas, "length2 --when T=p:P --when T=q:Q", "<0004>x**q", "G(1).T: no condition", "else equal; 2 bad"},
      {kAreas, "length2 --when T=p:P --on-unknown raw", "<0005>x**y1", "all equal", "all equal"},
      {kJustified, "fixed", "ab ", "all equal", "all equal"},
      {"01 J PIC X(18) JUST RIGHT.", "fixed", "  a               ",
       "J: ... 61 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 became ... 20 20 20 20 20 20 20 20 20 20 20 20 20 20 20 "
       "61, "
       "the same value",
       "all equal; 1 wi"},
      {"01 J PIC X(3) JUST RIGHT.", "fixed", "a  ", "J: 61 20 20 became 20 20 61, the same value", "all equal; 1 wi"},
  };
  for (const auto& [copybook, arguments, bytes, told, kept] : kCases) {
    const Folder folder;
    const std::string command = "verify --format free --ccsid 819 --copybook " + folder.write("c", copybook) +
                                " --records " + arguments + ' ' + folder.write("r", bytesOf(bytes));
    EXPECT_NE(runProgram(command).lines.find(told), std::string::npos) << bytes << runProgram(command).lines;
    const Outcome outcome = runProgram(command + " --keep-filler");
    EXPECT_NE(outcome.lines.find(kept), std::string::npos) << bytes << outcome.lines;
    EXPECT_EQ(outcome.code, std::string_view(kept).find("bad") == std::string_view::npos ? kDone : kBadField) << bytes;
  }
}

// What stands around records is compared if it is known how it is to be written.
TEST(Verify, ComparesBlocksAndLinesAsSaid) {
  static constexpr char kBlocks[] = "<000B000000070000>a  <000B000000070000>bcd";
  constexpr struct {
    const char* arguments;
    const char* bytes;
    const char* told;
  } kCases[] = {
      {"bdw", kBlocks, "all records equal; what stands around records is compared with --block-size"},
      {"bdw --block-size 11", kBlocks, "all equal"},
      {"bdw --block-size 12", kBlocks, "all equal"},
      {"bdw --block-size 18", kBlocks, "around the records differs"},
      {"spanned", "<0009000000050100>a<000A000000060200>bc", "all records equal; *--block-size"},
      {"lines", "a\r\nbcd\n", "all records equal; *--line-end"},
      {"lines --line-end lf", "a\nbcd\n", "around the records differs"},
      {"lines --line-end lf", "a  \nbcd\n", "all equal"},
      {"lines --line-end lf --trim-lines", "a\nbcd\n", "all equal"},
      {"lines --line-end crlf --trim-lines", "a\r\nbcd\r\n", "all equal"},
      {"lines --line-end crlf", "a  \r\nbcd\n", "around the records differs"},
      // Of no kind, in short lines too.
      {"lines --when A=bcd:A --on-unknown raw", "a\nbcd\n", "all records equal"},
      {"fixed --when A=bcd:A --on-unknown skip", "axxbcd", "all equal"},
      {"fixed --when A=bcd:A", "axxbcd", "all else equal; 1 bad field"},
  };
  for (const auto& [arguments, bytes, told] : kCases) {
    const Folder folder;
    const Outcome outcome =
        runProgram("verify --format free --ccsid 819 --copybook " + folder.write("c", "01 A. 05 A PIC X(3).") +
                   " --records " + arguments + ' ' + folder.write("r", bytesOf(bytes)));
    EXPECT_TRUE(std::regex_search(outcome.lines, std::regex(replaced(told, "*", "(.|\n)*"))))
        << arguments << ": " << outcome.lines << outcome.messages;
    EXPECT_EQ(outcome.code, std::regex_search(outcome.lines, std::regex("differ|bad")) ? kBadField : kDone)
        << arguments;
  }
}

}  // namespace
}  // namespace oxr::rec::test
