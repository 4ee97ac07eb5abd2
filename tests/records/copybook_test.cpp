#include "records/copybook/copybook.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <regex>

#include "harness/rows.hpp"

namespace {

using namespace oxr::rec;

// The name, offset, size and kind (but a group's) of each item, "; " between them, or "line:column: message".
std::string read(std::string_view text, const CopybookOptions& options = {}, std::string_view fileName = "c") {
  try {
    const std::string table = describe(readCopybook(text, fileName, options));
    const std::string rows = std::regex_replace(table.substr(table.find('\n')), std::regex(" +"), " ");
    const std::string kinds = std::regex_replace(rows, std::regex("(text|external|packed|binary) [^,\n]+"), "$1");
    const std::string outline = std::regex_replace(kinds, std::regex("( group)?\n ?([0-9]+ )?"), "; ");
    return outline.substr(2, outline.size() - 4);
  } catch (const CopybookError& error) {
    return std::to_string(error.line()) + ':' + std::to_string(error.column()) + ": " + error.message();
  }
}

struct Case {
  std::string_view text;
  std::string_view expected;
};

// The clauses of a field and what becomes of it: kind, size, digits and scale with "-" for a signed number, and where
// the sign of an external decimal is.
constexpr char kFields[] =
    "PIC_X text_1; pic_is_x(5)a(2)9 text_8; PICTURE_A(10)_VALUE_IS_'It''s,_a._period'_JUSTIFIED_RIGHT text_10; "
    "PIC_S9(4)_SIGN_IS_LEADING external_4_4.0-_<in; PIC_S9(4)_TRAILING_SEPARATE_CHARACTER external_5_4.0-_out>; "
    "SIGN_LEADING_SEPARATE_PIC_99V99 external_5_4.2-_<out; PIC_S9(3)V99_PACKED-DECIMAL packed_3_5.2-; "
    "PIC_9(6)_USAGE_IS_COMPUTATIONAL-3_VALUE_+12.5 packed_4_6.0; PIC_9(255) external_255_255.0; "
    // P scales and takes no byte.
    "PIC_SPPP9(5) external_5_5.8-_in>; PIC_VPP9(2)_COMP-3 packed_2_2.4; PIC_S9(5)PPP_COMP binary_4_5.-3-; "
    // Binary sizes: each limit and one digit more.
    "PIC_9(10)_COMPUTATIONAL binary_8_10.0; PIC_S9(4)_COMP-4 binary_2_4.0-; PIC_9(5)_COMP-0 binary_4_5.0; "
    "PIC_9(7)V99_BINARY binary_4_9.2; PIC_S9(18)_COMP-5 nativeBinary_8_18.0-; PIC_9(19)_COMP binary_9_19.0; "
    "PIC_S9(18)V9(10)_COMP binary_12_28.10-; PIC_S9(37)_COMPUTATIONAL-5 nativeBinary_16_37.0-; COMP-1 shortFloat_4; "
    "USAGE_COMPUTATIONAL-2 longFloat_8; "
    // Edited pictures: S, V and P take no byte, CR and DB two.
    "PIC_+9(8) edited_9; PIC_Z(6)VZZ- edited_9; PIC_$$,$$9.99CR,_VALUE_0 edited_11; "
    "PIC_**9.99db_BLANK_WHEN_ZERO edited_8; PIC_S9(3).99 edited_6; PIC_X(3)_IS_GLOBAL_SYNC text_3; "
    // Wide characters, packed digits without a sign, and usages without a picture.
    "PIC_N(3) national_6; PIC_NBN_USAGE_NATIONAL national_6; PIC_N(3)_DISPLAY-1 dbcs_6; PIC_G(2) dbcs_4; "
    "PIC_9(5)_COMP-6 unsignedPacked_3_5.0; PIC_9(3)V9_COMPUTATIONAL-6 unsignedPacked_2_4.1; FLOAT-SHORT shortFloat_4; "
    "BINARY-CHAR nativeBinary_1_3.0-; BINARY-SHORT_UNSIGNED nativeBinary_2_5.0; BINARY-LONG_SIGNED "
    "nativeBinary_4_10.0-; "
    "BINARY-DOUBLE_UNSIGNED nativeBinary_8_20.0; POINTER opaque_4; USAGE_IS_INDEX opaque_4; "
    "PROCEDURE-POINTER opaque_8";

TEST(Copybook, FieldsHaveKindSizeDigitsAndSign) {
  constexpr const char* kSigns[] = {"", " <in", " in>", " <out", " out>"};
  for (const auto& field : oxr::test::rows(kFields)) {
    const Item item = readCopybook("01 R. 05 A " + field[0] + ".", "c").items.at(1);
    std::string outline = std::string(kindName(item.kind)) + ' ' + std::to_string(item.size);
    if (item.digits > 0) outline += ' ' + std::to_string(item.digits) + '.' + std::to_string(item.scale);
    outline += std::string(item.digits > 0 && item.isSigned ? "-" : "") + kSigns[static_cast<std::size_t>(item.sign)];
    EXPECT_EQ(outline, field[1]) << field[0];
  }
}

constexpr Case kRecords[] = {
    // Levels: siblings may differ, entries may have no name, the last period may miss.
    {"01 R. 10 A. 15 B PIC X. 15 PIC X(2). 05 FILLER PIC X(3)",
     "R 0 6; A 0 3; B 0 1 text; FILLER 1 2 text; FILLER 3 3 text"},
    // Keywords of other places are names.
    {"01 RECORD. 05 COUNT PIC 9. 05 POINTER PIC X. 05 TIMES PIC X. 05 :TAG:-ID PIC X. 05 SECTION PIC X.",
     "RECORD 0 5; COUNT 0 1 external; POINTER 1 1 text; TIMES 2 1 text; :TAG:-ID 3 1 text; SECTION 4 1 text"},
    // A record that is a field, entries without a record, a stand-alone item.
    {"01 R PIC X(80).", "R 0 80 text"},
    {"77 N PIC 9(4) COMP.", "N 0 2 binary"},
    {"05 G. 10 A PIC X. 05 B PIC X.", "FILLER 0 2; G 0 1; A 0 1 text; B 1 1 text"},
    // No storage.
    {"01 R. 05 A PIC 9. 88 ONE VALUE 1. 88 MANY VALUES ARE 2 THRU 5, 7 WHEN SET TO FALSE IS 0. 05 B PIC X. 88 LOW "
     "VALUE LOW-VALUES ALL 'x'. 66 AB RENAMES A OF R THRU B. 05 C PIC X VALUE X'0F'.",
     "R 0 3; A 0 1 external; B 1 1 text; C 2 1 text"},
    // A group hands down usage and sign; a sign so given makes nothing signed.
    {"01 R. 05 G COMP-3. 10 A PIC S9(3). 10 H. 15 B PIC 9(5). 15 C PIC 9 DISPLAY. 05 K SIGN LEADING SEPARATE. 10 D PIC "
     "S9. 10 E PIC 9. 10 F PIC S9 TRAILING. 05 L COMP-1. 10 M.",
     "R 0 14; G 0 6; A 0 2 packed; H 2 4; B 2 3 packed; C 5 1 external; K 6 4; D 6 2 external, sign leading separate; "
     "E 8 1 external; F 9 1 external; L 10 4; M 10 4 shortFloat"},
    // What follows a redefined item starts after the longest; a chain leads to one origin.
    {"01 R. 05 A PIC X(2). 05 B REDEFINES A PIC X(5). 05 C PIC X(3) REDEFINES b. 05 D PIC X.",
     "R 0 6; A 0 2 text; B 0 5 text, redefines A; C 0 3 text, redefines A; D 5 1 text"},
    // Counted arrays move what follows in their group and around it.
    {"01 R. 05 N PIC 9(2). 05 G. 10 A PIC X OCCURS 1 TO 3 TIMES DEPENDING n ASCENDING KEY IS A INDEXED BY I. 10 B PIC "
     "X. 05 C PIC X.",
     "R 0 7; N 0 2 external; G 2 4; A 2 1 text, 1 to 3 times by N; B var 1 text; C var 1 text"},
    {"01 R. 05 N PIC 9. 05 G OCCURS 2 DEPENDING N. 10 M PIC 9. 10 H OCCURS 3 DEPENDING ON M OF G IN R. 15 F PIC X.",
     "R 0 9; N 0 1 external; G 1 4 group 0 to 2 times by N; M 1 1 external; H 2 1 group 0 to 3 times by M; F 2 1 text"},
    // In an area that is redefined they move what follows in their own alternative only.
    {"01 R. 05 N PIC 9. 05 A. 10 B PIC X OCCURS 0 TO 3 DEPENDING N. 10 C PIC X. 05 D REDEFINES A. 10 E PIC X. 10 F PIC "
     "X OCCURS 1 TO 5 DEPENDING ON N. 10 G PIC X. 05 H PIC X.",
     "R 0 9; N 0 1 external; A 1 4; B 1 1 text, 0 to 3 times by N; C var 1 text; D 1 7 group redefines A; E 1 1 text; "
     "F 2 1 text, 1 to 5 times by N; G var 1 text; H 8 1 text"},
    // Slack before the group that starts with a synchronized item, and at the end of each occurrence.
    {"01 R. 05 A PIC X. 05 G OCCURS 2. 10 B PIC S9(8) COMP SYNC. 10 C PIC X. 05 D PIC X. 05 E REDEFINES D PIC 9(4) "
     "BINARY SYNC.",
     "R 0 22; A 0 1 text; G 4 8 group 2 times, after 3 slack bytes; B 4 4 binary; C 8 1 text; D 20 1 text; E 20 2 "
     "binary, redefines D"},
    // A group synchronizes what lies below it; packed and external numbers need no boundary.
    {"01 R SYNC. 05 A PIC X. 05 B PIC 9(10) COMP. 05 C PIC 9 COMP-3. 05 D COMP-2. 05 E PIC 9. 05 F PIC 9(3) COMP-5. 05 "
     "P POINTER.",
     "R 0 32; A 0 1 text; B 4 8 binary, after 3 slack bytes; C 12 1 packed; D 16 8 longFloat after 3 slack bytes; E 24 "
     "1 "
     "external; F 26 2 nativeBinary 9(3), after 1 slack byte; P 28 4 opaque"},
    // The nearest counter of that name counts.
    {"01 R. 05 N PIC 9. 05 G OCCURS 2. 10 N PIC 99. 10 A PIC X OCCURS 1 TO 4 DEPENDING ON N.",
     "R 0 13; N 0 1 external; G 1 6 group 2 times; N 1 2 external; A 3 1 text, 1 to 4 times by N"},
};

constexpr std::string_view kShortRecord = "R 0 3; A 0 1 text; B 1 2 text";

// Each reads as kShortRecord.
constexpr std::string_view kFormats[] = {
    "\xEF\xBB\xBF 01 R.\n 05 A PIC X.\n 05 B PIC X(2).\n",
    "       01 R.\r\n           05 A PIC X.\r\n           05 B PIC X(2)\r\n\x1A",
    "      01 R.\n          05 A\n  \n          PIC X. 05 B PIC X(2).",  // level in column 7; a clause in the next line
    "000100 01  R.                                                           ID000001\n"
    "000200     05  A   PIC X. 05 B                                          ID000002\n"
    "000300         PIC X(2).                                                ID000003",
    "****** comment\n*\n      / page\n      D 05 DEBUG PIC X.\n        EJECT\n      *01 NO.\n"
    "       01 R. *> inline. 05 C PIC X.\n       SKIP2.\n           05 A PIC X.*> 05\n      D\n        05 B PIC X(2).",
    "       01 R.\n\t  05 A PIC X.\n\t\t\t\t\t\t\t    05 B PIC X(2).\n",  // tabs shift the text over column 72
    "       01 R.\n           05 A PI\n      * between\n      -    C X VALUE 'it is\n      -    'n''t'. 05 B PIC X(2\n"
    "      -).",
    // Columns count characters: the last one ends in column 72.
    "\xC3\x84\xC3\x84\xC3\x84\xC3\x84\xC3\x84\xC3\x84 01 R. 05 A PIC X VALUE '\xC3\xA4\xC3\xB6\xC3\xBC'.               "
    "       "
    "05 B PIC X(2). TRAILING",
    "      >>SOURCE FORMAT IS FREE\n01 R. 05 A\n* old\nPIC X.\n>>source fixed\n123456 05 B PIC X(2).",
};

TEST(Copybook, LinesAreReadInEitherFormat) {
  for (const std::string_view text : kFormats)
    EXPECT_EQ(read(text), kShortRecord) << text;
  // What a format given by the caller changes: the same text, its first columns read or not.
  constexpr std::string_view kText = "12345605 A PIC X.\n";
  EXPECT_EQ(read(kText, {SourceFormat::fixed, {}}), "FILLER 0 1; A 0 1 text");
  EXPECT_EQ(read(kText, {SourceFormat::free, {}}),
            "1:1: expected a level number (01 to 49, 66, 77 or 88), found '12345605'");
}

// What ends or goes on with an entry behind the last column is no remark, also where the entry is the last one.
TEST(Copybook, TextBehindTheLastColumnIsNotLostInSilence) {
  const auto readWith = [](std::string line, std::string_view behind, const char* after) {
    line.resize(72, ' ');
    return read("       01 R.\n" + line.append(behind) + after);
  };
  constexpr char kEntry[] = "           05 A PIC S9(5)";
  constexpr char kTold[] =
      "2:73: text behind column 72 is not read in fixed format, but looks like a part of an entry: --format free reads "
      "it, --format fixed leaves it out";
  for (const char* behind : {"COMP-3.", " COMP.", "BINARY", "V99.", "computational-5.", "USAGE COMP-3.", " SYNC."})
    for (const char* after : {"", "\n      * old\n\n           05 B PIC X."})
      EXPECT_EQ(readWith(kEntry, behind, after), kTold) << behind;
  for (const char* behind : {"ID000001", " INDEX", "DISPLAY", "*> COMP."})
    EXPECT_EQ(readWith(kEntry, behind, ""), "R 0 5; A 0 5 external") << behind;
  EXPECT_EQ(readWith(kEntry, "CHANGED.", "\n               COMP-3."), "R 0 3; A 0 3 packed");
  EXPECT_EQ(readWith("           05 A PIC X.", "CHANGED.", "\n           05 B PIC X(2)."), kShortRecord);
}

TEST(Copybook, ChoosesTheRecordByName) {
  EXPECT_THAT(Copybook::read("01 A PIC X. 01 B. 05 C PIC X.", "c").recordNames(), testing::ElementsAre("A", "B"));
  constexpr std::string_view kText = "01 A. 05 X PIC X. 01 B REDEFINES A. 05 Y PIC 99. 01 C PIC 9.";
  EXPECT_EQ(read(kText), "A 0 1; X 0 1 text");
  EXPECT_EQ(read(kText, {SourceFormat::detect, "b"}), "B 0 2; Y 0 2 external");
  EXPECT_EQ(read(kText, {SourceFormat::detect, "D"}), "0:0: no record is named D; there are: A, B, C");
  EXPECT_EQ(read("01 A PIC X. 01 B PIC X. 01 A PIC 9.", {SourceFormat::detect, "A"}),
            "1:25: another record is named A");
}

// Texts that others copy, by their paths.
const std::map<std::string, std::string> kTexts = {
    {"dir/ADDR.cpy", "10 :TAG:-STREET PIC X(:LEN:). 10 :TAG:-ZIP PIC 9(5)."},
    {"lib/sub/part.COB", "       05 PRE-A PIC X. COPY \"deep.cpy\"."},
    {"lib/sub/deep.cpy", "       05 PRE-B PIC X.\n"},
    {"dir/LOOP", "01 R. COPY loop2."},
    {"dir/loop2", "05 A PIC X. COPY LOOP."},
    {"dir/BAD.cpy", "05 A PIC X.\n05 B PIC Q."},
};

CopybookOptions withTexts() {
  CopybookOptions options;
  options.includeFolders = {"lib"};
  options.readText = [](const std::filesystem::path& path) -> std::optional<std::string> {
    const auto found = kTexts.find(path.generic_string());
    if (found == kTexts.end()) return std::nullopt;
    return found->second;
  };
  return options;
}

constexpr Case kCopies[] = {
    // Words are replaced within names and pictures, whole words beside them; the statement's period goes with it.
    {"01 R. 05 HOME. COPY addr REPLACING ==:TAG:== BY ==H== ==:LEN:== BY ==3==. 05 C PIC X.",
     "R 0 9; HOME 0 8; H-STREET 0 3 text; H-ZIP 3 5 external; C 8 1 text"},
    {"01 R. COPY ADDR REPLACING ==:TAG:-STREET PIC X(:LEN:)== BY ==S PIC X== ==:TAG:-ZIP== BY Z.",
     "R 0 6; S 0 1 text; Z 1 5 external"},
    // What the outer text replaces is replaced in what the inner one copies too. A library is a folder.
    {"01 R. COPY PART IN SUB SUPPRESS REPLACING LEADING ==PRE-== BY ==X-== TRAILING ==A== BY ====.",
     "R 0 2; X-A 0 1 text; X-B 1 1 text"},
    {"01 R. COPY part OF sub REPLACING TRAILING ==-A== BY ==== . 05 D PIC X.",
     "R 0 3; PRE 0 1 text; PRE-B 1 1 text; D 2 1 text"},
    {"REPLACE ==:N:== BY ==4==. 01 R. 05 A PIC X(:N:). REPLACE OFF. 05 :N:B PIC X.",
     "R 0 5; A 0 4 text; :N:B 4 1 text"},
    {"REPLACE ALSO A BY B. 01 R. 05 A PIC X. REPLACE LAST OFF. EXEC CICS X END-EXEC 05 A PIC X.",
     "R 0 2; B 0 1 text; A 1 1 text"},
    {"01 R. EXEC SQL INCLUDE sub/deep END-EXEC. EXEC SQL INCLUDE SQLCA END-EXEC 05 A PIC X.",
     "R 0 2; PRE-B 0 1 text; A 1 1 text"},
    {"COPY LOOP.", "1:18: dir/LOOP copies itself"},
    {"01 R. COPY BAD.", "2:10: unknown symbol in the picture"},
};

TEST(Copybook, CopiesOtherTextsAndReplacesInThem) {
  for (const auto& [text, expected] : kCopies)
    EXPECT_EQ(read(text, withTexts(), "dir/c"), expected) << text;
  EXPECT_THAT([] { readCopybook("01 R. COPY BAD.", "dir/c", withTexts()); },
              testing::ThrowsMessage<CopybookError>(testing::StartsWith("dir/BAD.cpy:2:10: ")));
  const Layout layout = readCopybook("01 R. COPY deep IN SUB.", "dir/c", withTexts());
  EXPECT_EQ(layout.placeOf(layout.items[1]), "lib/sub/deep.cpy:1");
}

constexpr char kProgram[] =
    "       IDENTIFICATION DIVISION.\n       AUTHOR. SOMEONE'S.\n>>SET X\n       DATA DIVISION.\n       FILE SECTION.\n"
    "       FD IN-FILE RECORDING MODE F.\n       01 IN-REC.\n           05 A PIC X.\n       WORKING-STORAGE SECTION.\n"
    "       77 N PIC 9(4) COMP.\n       78 MAX VALUE 5.\n       EXEC SQL DECLARE T TABLE (X INT) END-EXEC.\n"
    "       01 ODD.\n           05 B PIC X.\n       COPY NOWHERE.\n       SCREEN SECTION.\n       01 S. 05 LINE 2 "
    "COLUMN 3 VALUE 'x'.\n"
    "       LINKAGE SECTION.\n       01 LK PIC X.\n       PROCEDURE DIVISION.\n           DISPLAY 'it''s.\n";

TEST(Copybook, TheDataDivisionOfAProgramIsFound) {
  const Copybook program = Copybook::read(kProgram, "p");
  EXPECT_THAT(program.recordNames(), testing::ElementsAre("IN-REC", "N", "ODD", "LK"));
  EXPECT_EQ(program.layout().recordName, "IN-REC");
  EXPECT_EQ(program.layout("n").maxSize(), 2U);
  EXPECT_THROW(program.layout("ODD"), CopybookError);
}

constexpr Case kErrors[] = {
    {"", "0:0: the copybook has no entry"},
    {"50 A PIC X.", "1:1: expected a level number (01 to 49, 66, 77 or 88), found '50'"},
    {"01 R.\n05 A PIC X\n05 B PIC X.", "3:1: expected a clause or a period, found '05'"},
    {"05 A PIC X VALUE.", "1:17: expected a literal after VALUE, found the period"},
    {"05 A PIC X VALUE 'abc\n05 B PIC X.", "1:18: the literal has no closing quote"},
    {"05 A PIC", "1:9: expected a picture, found the end of the copybook"},
    {"05 A! PIC X.", "1:4: expected a name, found 'A!'"},
    {"01 R. COPY X.", "1:12: found no copybook 'X' beside this text or in the folders of -I"},
    {"01 R. COPY X REPLACING ==A==.", "1:29: expected BY, found the period"},
    {"01 R. COPY X REPLACING ==A== BY ==B", "1:33: the text has no closing =="},
    {"ID DIVISION. PROGRAM-ID. X.", "0:0: the program has no DATA DIVISION"},
    {"05 A PIC X PIC X.", "1:12: a second PIC in one entry"},
    {"05 A COMP BINARY PIC 9.", "1:11: a second BINARY in one entry"},
    {"05 A USAGE FOO.", "1:12: expected a usage such as COMP-3, found 'FOO'"},
    {"05 A OCCURS 3 INDEXED BY 5 PIC X.", "1:26: expected a name, found '5'"},
    {"05 A REDEFINES 5 PIC X.", "1:16: expected a name after REDEFINES, found '5'"},
    {"05 A PIC 9 BLANK WHEN X.", "1:23: expected ZERO after BLANK WHEN, found 'X'"},
    {"05 A PIC X IS LOCAL.", "1:15: expected GLOBAL or EXTERNAL after IS, found 'LOCAL'"},
    {"05 A PIC 9 SIGN IS LEADING SIGN TRAILING.", "1:28: a second SIGN in one entry"},
    // Entries without storage.
    {"05 A PIC X. 66 B A.", "1:18: expected RENAMES, found 'A'"},
    {"05 A PIC X. 66 B RENAMES A THROUGH 5.", "1:36: expected a name, found '5'"},
    {"66 A B. 05 C PIC X.", "1:6: expected RENAMES, found 'B'"},
    {"05 A PIC X. 88 B 1.", "1:18: expected VALUE, found '1'"},
    {"05 A PIC X. 88 B VALUE ALL.", "1:27: expected a literal after ALL, found the period"},
    {"05 A PIC X. 88 B VALUE 1 THRU.", "1:30: expected a literal after THRU, found the period"},
    {"05 A PIC X. 88 B VALUE 1 WHEN SET TO 0.", "1:38: expected FALSE, found '0'"},
    {"05 A PIC X. 88 B VALUE 1 FALSE IS.", "1:34: expected a literal after FALSE, found the period"},
    // What is copied and replaced.
    {"01 R. COPY '' .", "1:12: expected the name of a copybook, found ''"},
    {"01 R. COPY X Y.", "1:14: expected REPLACING or a period after COPY, found 'Y'"},
    {"01 R. REPLACE ==== BY ==A==.", "1:15: there is no text to replace"},
    {"01 R. REPLACE LEADING ==A B== BY ==A==.", "1:15: LEADING and TRAILING replace a part of a word by another"},
    {"01 R. REPLACE A BY .", "1:20: expected a text between == and ==, a literal or a word, found the period"},
    {"01 R. REPLACE OFF X.", "1:19: expected a period after REPLACE, found 'X'"},
    {"01 R. EXEC SQL INCLUDE", "1:7: EXEC has no END-EXEC"},
    {"       01 R. 05 A PIC X VALUE 'it\n      -    is'.", "2:12: expected the quote that continues the literal"},
    {">>SET X", "1:1: the only directives known are >>SOURCE FORMAT FREE and >>SOURCE FORMAT FIXED"},
    {"       01 R.\n           05 A PIC X.                                              05  B PIC X.",
     "2:73: text behind column 72 is not read in fixed format, but looks like a part of an entry: --format free reads "
     "it, "
     "--format fixed leaves it out"},
    // Pictures.
    {"05 A PIC X(0).", "1:12: expected a repeat count of 1 or more and ')'"},
    {"05 A PIC X(999999999999).", "1:12: the repeat count is too large"},
    {"05 A PIC Q.", "1:10: unknown symbol in the picture"},
    {"05 A PIC N(5)X.", "1:10: N or G can't stand with these symbols in a picture"},
    {"05 A PIC 9S.", "1:11: S must stand once, in front of the picture"},
    {"05 A PIC 9V9V9.", "1:13: V must stand once, where the point is"},
    {"05 A PIC 9P9.", "1:12: P must stand at one end of the picture"},
    {"05 A PIC X(3)V9.", "1:10: the picture mixes a number with X or A"},
    {"05 A PIC SVPP.", "1:10: the picture describes no character"},
    {"05 A PIC 9(200)V9(56).", "1:17: a number has at most 255 digits"},
    {"05 A PIC 9(39) COMP.", "1:10: a binary number has at most 38 digits"},
    // Clauses against each other.
    {"05 A.", "1:1: A has no picture and no items below it"},
    {"05 A PIC X. 10 B PIC X.", "1:10: an entry with items below it can't have a picture"},
    {"05 A COMP-X PIC 9.", "1:6: the usage COMP-X is not supported"},
    {"05 A PIC S9 COMP-6.", "1:10: a COMP-6 number has no sign"},
    {"05 A PIC X NATIONAL.", "1:12: NATIONAL needs a picture of N"},
    {"05 A PIC 9 NATIONAL.", "1:10: numbers of USAGE NATIONAL or DISPLAY-1 are not supported"},
    {"05 A PIC X COMP-3.", "1:12: this usage needs a picture of S, 9, V and P only"},
    {"05 A PIC 9 COMP-1.", "1:10: an item of this usage has no picture"},
    {"05 A PIC S9 COMP SIGN LEADING.", "1:18: SIGN is for numbers of USAGE DISPLAY only"},
    {"05 A PIC X SIGN LEADING.", "1:12: SIGN needs a picture of S, 9, V and P only"},
    {"05 A PIC X DISPLAY-1.", "1:12: DISPLAY-1 needs a picture of G or N"},
    {"05 A PIC G(2) COMP.", "1:15: this usage needs a picture of S, 9, V and P only"},
    {"05 A PIC N(134217729).", "1:10: the picture is too long"},
    {"05 A PIC 9 SIGN X.", "1:17: expected LEADING or TRAILING after SIGN, found 'X'"},
    // Redefinitions.
    {"05 A PIC X. 05 B REDEFINES Z PIC X.", "1:28: REDEFINES names 'Z', which is no earlier item of the same group"},
    {"05 A PIC X. 05 C PIC X. 05 B REDEFINES A PIC X.", "1:40: other items stand between 'A' and what redefines it"},
    {"01 R REDEFINES S. 05 A PIC X.", "1:16: REDEFINES names 'S', which is no earlier record"},
    // Arrays.
    {"05 A OCCURS FIVE PIC X.", "1:13: expected a number of times after OCCURS, found 'FIVE'"},
    {"05 A OCCURS 268435457 PIC X.", "1:13: the number of times is too large"},
    {"05 A OCCURS 1 TO MANY DEPENDING N PIC X.", "1:18: expected the largest number of times after TO, found 'MANY'"},
    {"05 A OCCURS 3 DEPENDING ON 5 PIC X.", "1:28: expected a name after DEPENDING ON, found '5'"},
    {"05 A OCCURS 2 OCCURS 3 PIC X.", "1:15: a second OCCURS in one entry"},
    {"77 A OCCURS 3 PIC X.", "1:6: OCCURS can't stand at level 77"},
    {"05 A OCCURS 5 TO 3 DEPENDING ON N PIC X.", "1:13: the number of times must be 1 or more, a range must rise"},
    {"05 A OCCURS 1 TO 3 PIC X.", "1:20: expected DEPENDING ON after the range of OCCURS, found 'PIC'"},
    {"01 R OCCURS 3. 05 A PIC X.", "1:6: OCCURS can't stand at level 01"},
    {"05 A OCCURS 1 TO 3 DEPENDING ON N PIC X.", "1:33: DEPENDING ON names 'N', which is no item of the record"},
    {"05 A OCCURS 1 TO 3 DEPENDING ON N PIC X. 05 N PIC 9.", "1:33: 'N' must stand in front of the array"},
    {"05 G OCCURS 2. 10 N PIC 9. 05 A OCCURS 3 DEPENDING N PIC X.",
     "1:52: 'N' lies in an array that this one does not lie in"},
    {"05 N PIC 9V9. 05 A OCCURS 1 TO 3 DEPENDING ON N PIC X.", "1:47: 'N' is not an integer of up to 18 digits"},
    {"05 G. 10 N PIC 9. 05 H. 10 N PIC 9. 05 A OCCURS 1 TO 3 DEPENDING ON N PIC X.",
     "1:69: there are several 'N': add OF and the name of a group"},
    {"05 A OCCURS 16385. 10 B PIC X(16384).", "1:1: the item is longer than 256 MiB"},
    {"05 A PIC X(268435456). 05 B PIC X.", "1:24: the record is longer than 256 MiB"},
    {"05 A OCCURS 1025. 10 B OCCURS 1024. 15 C PIC X.", "1:1: the record has more than 1,048,576 fields"},
    {"05 A PIC X OCCURS 1048576. 05 B REDEFINES A PIC X.", "1:28: the record has more than 1,048,576 fields"},
};

TEST(Copybook, EntriesGiveALayoutOrAnErrorWithItsPlace) {
  for (const auto& [text, expected] : kRecords)
    EXPECT_EQ(read(text), expected) << text;
  for (const auto& [text, expected] : kErrors)
    EXPECT_EQ(read(text), expected) << text;
}

TEST(Copybook, ErrorTextShowsTheLineWithACaret) {
  EXPECT_THAT([] { readCopybook("       01 R.\r\n\t   10 TRANSACTION OCCURS FIVE TO 5\t\x1B\xE9\r\n", "c"); },
              testing::ThrowsMessage<CopybookError>("c:2:34: expected a number of times after OCCURS, found 'FIVE'\n"
                                                    "      |           10 TRANSACTION OCCURS FIVE TO 5      ??\n"
                                                    "      |                                 ^"));
  EXPECT_THROW(readCopybookFile("no/such/file.cob"), CopybookError);
  EXPECT_THAT([] { readCopybookFile("/tmp"); },
              testing::ThrowsMessage<CopybookError>("/tmp: the copybook can't be read: it is a folder"));
}

// Hostile input of the largest size ends soon, and with an error or a layout.
TEST(Copybook, LargeInputStaysBounded) {
  constexpr std::size_t kLargest = 4U << 20;
  std::string many = "01 R.";
  while (many.size() < kLargest / 8)
    many += "\n05 A PIC X. 05 B REDEFINES A PIC X.";
  EXPECT_EQ(read(many).substr(0, 50), "8193:13: the copybook has more than 16384 entries");
  std::string grows = "REPLACE A BY ==";
  std::string oneLine = "01 R.";
  for (int i = 0; i < 8000; ++i) {
    grows += std::string(100, 'A') + " A A A A A A A A A A ";
    oneLine += " 05 A PIC X OCCURS 2 INDEXED BY I I I I I I I I I I I I I I I I I I I I I I I I I I I I I I.";
  }
  EXPECT_THAT(read(grows + "==. " + grows.substr(15)),
              testing::EndsWith("too long with all that is copied and replaced in it"));
  EXPECT_THAT(read(oneLine), testing::StartsWith("R 0 16000; A 0 1 text, 2 times; A 2 1 text"));
  // What is copied and replaced here gives no words of a record, so that their number is no bound.
  const auto aWords = [](std::size_t count) {
    std::string words;
    for (std::size_t i = 0; i < count; ++i)
      words += "A ";
    return words;
  };
  const std::map<std::string, std::string> texts = {
      {"./sql", "EXEC SQL " + aWords(500'000) + "END-EXEC "},
      {"./grows", "EXEC SQL " + aWords(500) + "END-EXEC "},
      {"./again",
       "COPY grows REPLACING A BY ==" + aWords(8000) + "==. COPY grows REPLACING A BY ==" + aWords(8000) + "==. "},
  };
  CopybookOptions options;
  options.readText = [&](const std::filesystem::path& path) -> std::optional<std::string> {
    const auto found = texts.find(path.string());
    return found == texts.end() ? std::nullopt : std::optional(found->second);
  };
  EXPECT_THAT(read("01 R. COPY sql REPLACING ==" + aWords(1000) + "B== BY ==B==.", options, "./c"),
              testing::EndsWith(": replacing would compare more than 268435456 words"));
  EXPECT_THAT(read("01 R. COPY again.", options, "./c"),
              testing::EndsWith("too long with all that is copied and replaced in it"));
  std::string missing = "01 R.";
  for (int i = 0; i <= 16384; ++i)
    missing += " COPY M.";
  EXPECT_THAT(read(missing, options, "./c"), testing::EndsWith(": more than 16384 texts are copied"));
  EXPECT_EQ(read(std::string(kLargest, '\t') + "01 R PIC X."), "0:0: the copybook has more than 4 MiB");
  std::string levels, arrays = "01 R.";
  for (int level = 1; level <= 10'000; ++level)
    levels += std::to_string(level) + " A. ";
  EXPECT_THAT(read(levels), testing::EndsWith("expected a level number (01 to 49, 66, 77 or 88), found '50'"));
  for (int level = 2; level <= 48; ++level)
    arrays += ' ' + std::to_string(level) + " A OCCURS 1000.";
  EXPECT_THAT(read(arrays + " 49 A OCCURS 1000 PIC X."), testing::EndsWith(": the item is longer than 256 MiB"));
  options.readText = [](const std::filesystem::path& path) {
    const int level = std::stoi(path.filename());
    return std::optional(level == 10'000 ? "05 A PIC X." : "COPY " + std::to_string(level + 1) + '.');
  };
  EXPECT_THAT(read("01 R. COPY 1.", options, "./c"), testing::EndsWith(": copied texts are nested deeper than 32"));
}

TEST(Copybook, DescribesALayoutInColumns) {
  EXPECT_EQ(describe(readCopybook("01 R. 05 N PIC 9(20) COMP. 05 A-NAME-THAT-IS-TOO-LONG-FOR-ITS-COLUMN COMP-1.", "c")),
            "level and name                          offset    size  kind          picture\n"
            "1 R                                          0      13  group\n"
            "  5 N                                        0       9  binary        9(20), wider than 18 digits\n"
            "  5 A-NAME-THAT-IS-TOO-LONG-FOR-ITS-COLUMN      9       4  shortFloat\n");
}

}  // namespace
