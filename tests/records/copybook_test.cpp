#include "records/copybook/copybook.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "harness/rows.hpp"

namespace {

using namespace oxr::rec;

// What a test wants to know of an item in a few words: "AMOUNT packed 8@66 15.2-", with ".." for a size or an offset
// that moves, "-" for a signed number, "x0..5(COUNT)" and "x3" for arrays and "=NAME" for a redefinition.
std::string outline(const Layout& layout, ItemIndex i) {
  const Item& item = layout.items[i];
  std::ostringstream out;
  const auto offset = layout.recordOffset(i);
  out << (item.isFiller() ? "FILLER" : item.name) << ' ' << kindName(item.kind) << ' ' << item.size
      << (item.hasVariableSize ? ".." : "") << '@' << (offset ? std::to_string(*offset) : "..");
  if (item.digits > 0) out << ' ' << item.digits << '.' << item.scale << (item.isSigned ? "-" : "");
  constexpr const char* kSigns[] = {"", " <in", " in>", " <out", " out>"};
  out << kSigns[static_cast<std::size_t>(item.sign)];
  if (item.occurs.isCounted())
    out << " x" << item.occurs.min << ".." << item.occurs.max << '('
        << layout.items[layout.counters[item.occurs.counter]].name << ')';
  else if (item.occurs.isArray)
    out << " x" << item.occurs.max;
  if (item.redefines != kNoItem) out << " =" << layout.items[item.redefines].name;
  return out.str();
}

// All items, "; " between them; those of a group in brackets behind it.
std::string outline(const Layout& layout, ItemIndex begin, ItemIndex end) {
  std::string out;
  for (ItemIndex i = begin; i < end; i = layout.items[i].next) {
    out += (i == begin ? "" : "; ") + outline(layout, i);
    if (layout.items[i].isGroup()) out += " [" + outline(layout, i + 1, layout.items[i].next) + ']';
  }
  return out;
}

std::string outlineOf(std::string_view text, const CopybookOptions& options = {}) {
  try {
    const Layout layout = readCopybook(text, "c", options);
    return outline(layout, 0, static_cast<ItemIndex>(layout.items.size()));
  } catch (const CopybookError& error) {
    return error.what();
  }
}

// "line:column: message", or the outline if there is no error.
std::string errorOf(std::string_view text, const CopybookOptions& options = {}) {
  try {
    const Layout layout = readCopybook(text, "c", options);
    return outline(layout, 0, static_cast<ItemIndex>(layout.items.size()));
  } catch (const CopybookError& error) {
    return std::to_string(error.line()) + ':' + std::to_string(error.column()) + ": " + error.message();
  }
}

struct Case {
  std::string_view text;
  std::string_view expected;
};

// The clauses of a field and what becomes of it.
constexpr char kFields[] =
    "PIC_X text_1@0; pic_is_x(5)a(2)9 text_8@0; PICTURE_A(10)_VALUE_IS_'It''s,_a._period'_JUSTIFIED_RIGHT text_10@0; "
    "PIC_9(5) external_5@0_5.0; PIC_99V9(3) external_5@0_5.3; PIC_S9(13)V99 external_15@0_15.2-_in>; "
    "PIC_S9(4)_SIGN_IS_LEADING external_4@0_4.0-_<in; PIC_S9(4)_TRAILING_SEPARATE_CHARACTER external_5@0_4.0-_out>; "
    // the clause makes it signed, S or not
    "SIGN_LEADING_SEPARATE_PIC_99V99 external_5@0_4.2-_<out; PIC_S9(3)V99_PACKED-DECIMAL packed_3@0_5.2-; "
    "PIC_9(6)_USAGE_IS_COMPUTATIONAL-3_VALUE_+12.5 packed_4@0_6.0; PIC_9(255) external_255@0_255.0; "
    // P scales and takes no byte.
    "PIC_SPPP9(5) external_5@0_5.8-_in>; PIC_VPP9(2)_COMP-3 packed_2@0_2.4; PIC_S9(5)PPP_COMP binary_4@0_5.-3-; "
    "PIC_9PPV_COMP-3 packed_1@0_1.-2; "
    // Binary sizes: each limit and the digit behind it.
    "PIC_9_COMP binary_2@0_1.0; PIC_S9(4)_COMP-4 binary_2@0_4.0-; PIC_9(5)_COMP-0 binary_4@0_5.0; "
    "PIC_9(7)V99_BINARY binary_4@0_9.2; PIC_9(10)_COMPUTATIONAL binary_8@0_10.0; "
    "PIC_S9(18)_COMP-5 nativeBinary_8@0_18.0-; PIC_9(19)_COMP binary_9@0_19.0; "
    "PIC_S9(18)V9(10)_COMP binary_12@0_28.10-; PIC_S9(37)_COMPUTATIONAL-5 nativeBinary_16@0_37.0-; "
    "COMP-1 shortFloat_4@0; USAGE_COMPUTATIONAL-2 longFloat_8@0; "
    // Edited pictures: S, V and P take no byte, CR and DB two.
    "PIC_+9(8) edited_9@0; PIC_Z(6)VZZ- edited_9@0; PIC_$$,$$9.99CR,_VALUE_0 edited_11@0; "
    "PIC_**9.99db_BLANK_WHEN_ZERO edited_8@0; PIC_XX/XXB0X edited_8@0; PIC_S9(3).99 edited_6@0; "
    "PIC_X(3)_IS_GLOBAL_SYNC text_3@0; PIC_9(3)_COMP-3_SYNCHRONIZED_LEFT packed_2@0_3.0";

TEST(Copybook, FieldsHaveKindSizeDigitsAndSign) {
  for (const auto& field : oxr::test::rows(kFields)) {
    const std::string outlined = outlineOf("01 R. 05 A " + field[0] + ".");
    const std::size_t at = outlined.find("[A ");
    EXPECT_EQ(at == std::string::npos ? outlined : outlined.substr(at + 3, outlined.size() - at - 4), field[1])
        << field[0];
  }
}

constexpr Case kRecords[] = {
    // Levels: siblings may differ, entries may have no name, the last period may miss.
    {"01 R. 10 A. 15 B PIC X. 15 PIC X(2). 05 FILLER PIC X(3)",
     "R group 6@0 [A group 3@0 [B text 1@0; FILLER text 2@1]; FILLER text 3@3]"},
    // Keywords of other places are names.
    {"01 RECORD. 05 COUNT PIC 9. 05 POINTER PIC X. 05 TIMES PIC X. 05 :TAG:-ID PIC X.",
     "RECORD group 4@0 [COUNT external 1@0 1.0; POINTER text 1@1; TIMES text 1@2; :TAG:-ID text 1@3]"},
    // A record that is a field, entries without a record, a stand-alone item.
    {"01 R PIC X(80).", "FILLER group 80@0 [R text 80@0]"},
    {"77 N PIC 9(4) COMP.", "FILLER group 2@0 [N binary 2@0 4.0]"},
    {"05 A PIC X. 05 B REDEFINES A PIC 9.", "FILLER group 1@0 [A text 1@0; B external 1@0 1.0 =A]"},
    // No storage.
    {"01 R. 05 A PIC 9. 88 ONE VALUE 1. 88 MANY VALUES ARE 2 THRU 5, 7 WHEN SET TO FALSE IS 0. 05 B PIC X."
     " 88 LOW VALUE LOW-VALUES ALL 'x'. 66 AB RENAMES A OF R THRU B. 05 C PIC X VALUE X'0F'.",
     "R group 3@0 [A external 1@0 1.0; B text 1@1; C text 1@2]"},
    // A group hands down usage and sign; a sign so given makes nothing signed.
    {"01 R. 05 G COMP-3. 10 A PIC S9(3). 10 H. 15 B PIC 9(5). 15 C PIC 9 DISPLAY. 05 K SIGN LEADING SEPARATE."
     " 10 D PIC S9. 10 E PIC 9. 10 F PIC S9 TRAILING. 05 L COMP-1. 10 M.",
     "R group 14@0 [G group 6@0 [A packed 2@0 3.0-; H group 4@2 [B packed 3@2 5.0; C external 1@5 1.0]]; "
     "K group 4@6 [D external 2@6 1.0- <out; E external 1@8 1.0; F external 1@9 1.0- in>]; L group 4@10 [M shortFloat 4@10]]"},
    // What follows a redefined item starts behind the longest; a chain leads to one origin.
    {"01 R. 05 A PIC X(2). 05 B REDEFINES A PIC X(5). 05 C PIC X(3) REDEFINES b. 05 D PIC X.",
     "R group 6@0 [A text 2@0; B text 5@0 =A; C text 3@0 =A; D text 1@5]"},
    {"01 R. 05 A OCCURS 3 TIMES INDEXED BY I, J PIC X(2). 05 FILLER REDEFINES A. 10 B PIC X OCCURS 6.",
     "R group 6@0 [A text 2@0 x3; FILLER group 6@0 =A [B text 1@0 x6]]"},
    // Counted arrays move what follows in their group and around it.
    {"01 R. 05 N PIC 9(2). 05 G. 10 A PIC X OCCURS 1 TO 3 TIMES DEPENDING ON n ASCENDING KEY IS A INDEXED BY I."
     " 10 B PIC X. 05 C PIC X.",
     "R group 7..@0 [N external 2@0 2.0; G group 4..@2 [A text 1@2 x1..3(N); B text 1@..]; C text 1@..]"},
    {"01 R. 05 N PIC 9. 05 G OCCURS 2 DEPENDING N. 10 M PIC 9. 10 H OCCURS 0 TO 3 DEPENDING ON M OF G IN R. 15 F PIC "
     "X.",
     "R group 9..@0 [N external 1@0 1.0; G group 4..@1 x0..2(N) [M external 1@1 1.0; H group 1@2 x0..3(M) [F text 1@2]]]"},
    // The nearest counter of that name counts.
    {"01 R. 05 N PIC 9. 05 G OCCURS 2. 10 N PIC 99. 10 A PIC X OCCURS 1 TO 4 DEPENDING ON N.",
     "R group 13..@0 [N external 1@0 1.0; G group 6..@1 x2 [N external 2@1 2.0; A text 1@3 x1..4(N)]]"},
};

TEST(Copybook, ItemsLieInTheirGroups) {
  for (const Case& record : kRecords)
    EXPECT_EQ(outlineOf(record.text), record.expected) << record.text;
}

TEST(Copybook, CountersHaveSlotsAndMarkTheirGroups) {
  const Layout layout = readCopybook(
      "01 R. 05 D PIC X. 05 FILLER REDEFINES D. 10 N PIC 9. 05 A OCCURS 0 TO 2 DEPENDING ON N PIC X."
      " 05 B OCCURS 0 TO 2 DEPENDING ON N PIC X.",
      "c");
  EXPECT_EQ(layout.counters, std::vector<ItemIndex>{3});
  EXPECT_EQ(layout.items[3].counterSlot, 0U);
  EXPECT_TRUE(layout.items[2].holdsCounter);
  EXPECT_FALSE(layout.items[1].holdsCounter);
  EXPECT_EQ(layout.items[4].occurs.counter, layout.items[5].occurs.counter);
}

constexpr std::string_view kShortRecord = "R group 3@0 [A text 1@0; B text 2@1]";

// Each reads as kShortRecord.
constexpr std::string_view kFormats[] = {
    "01 R.\n 05 A PIC X.\n 05 B PIC X(2).\n",
    "       01 R.\r\n           05 A PIC X.\r\n           05 B PIC X(2)\r\n\x1A",
    "      01 R.\n          05 A\n  \n          PIC X. 05 B PIC X(2).",  // level in column 7; a clause in the next line
    "\xEF\xBB\xBF"
    "000100 01  R.                                                           ID000001\n"
    "000200     05  A   PIC X. 05 B                                          ID000002\n"
    "000300         PIC X(2).                                                ID000003",
    "****** comment\n*\n      / page\n      D 05 DEBUG PIC X.\n        EJECT\n      *01 NO.\n"
    "       01 R. *> inline. 05 C PIC X.\n       SKIP2.\n           05 A PIC X.*> 05\n      D\n",
    "       01 R.\n\t  05 A PIC X.\n\t\t\t\t\t\t\t    05 B PIC X(2).\n",  // tabs shift the text over column 72
    "       01 R.\n           05 A PI\n      * between\n      -    C X VALUE 'it is\n      -    'n''t'. 05 B PIC X(2\n"
    "      -).",
    "      >>SOURCE FORMAT IS FREE\n01 R. 05 A\n* old\nPIC X.\n>>source fixed\n123456 05 B PIC X(2).",
};

TEST(Copybook, LinesAreReadInEitherFormat) {
  for (const std::string_view text : kFormats) {
    std::string expected(kShortRecord);
    if (text.starts_with("******")) expected = "R group 1@0 [A text 1@0]";
    EXPECT_EQ(outlineOf(text), expected) << text;
  }
  // What a format given by the caller changes: the same text, its first columns read or not.
  constexpr std::string_view kText = "12345605 A PIC X.\n";
  EXPECT_EQ(outlineOf(kText, {SourceFormat::fixed, {}}), "FILLER group 1@0 [A text 1@0]");
  EXPECT_EQ(errorOf(kText, {SourceFormat::free, {}}),
            "1:1: expected a level number (01 to 49, 66, 77 or 88), found '12345605'");
}

TEST(Copybook, ChoosesTheRecordByName) {
  constexpr std::string_view kText = "01 A. 05 X PIC X. 01 B REDEFINES A. 05 Y PIC 99. 01 C PIC 9.";
  EXPECT_EQ(outlineOf(kText), "A group 1@0 [X text 1@0]");
  EXPECT_EQ(outlineOf(kText, {SourceFormat::detect, "b"}), "B group 2@0 [Y external 2@0 2.0]");
  EXPECT_EQ(readCopybook(kText, "c", {SourceFormat::detect, "C"}).recordName, "C");
  EXPECT_EQ(errorOf(kText, {SourceFormat::detect, "D"}), "0:0: no record is named D; there are: A, B, C");
}

constexpr Case kErrors[] = {
    {"", "0:0: the copybook has no entry"},
    {"50 A PIC X.", "1:1: expected a level number (01 to 49, 66, 77 or 88), found '50'"},
    {"01 R.\n05 A PIC X\n05 B PIC X.", "3:1: expected a clause or a period, found '05'"},
    {"01 R. 05 A PIC X BASED.", "1:18: expected a clause or a period, found 'BASED'"},
    {"01 R. 05 A PIC X VALUE.", "1:23: expected a literal after VALUE, found the period"},
    {"01 R. 05 A PIC X VALUE 'abc", "1:24: the literal has no closing quote"},
    {"01 R. 05 A PIC", "1:15: expected a picture, found the end of the copybook"},
    {"01 R. 05 A B PIC X.", "1:12: expected a clause or a period, found 'B'"},
    {"01 R. 05 A! PIC X.", "1:10: expected a name, found 'A!'"},
    {"01 R. COPY X.", "1:7: COPY is not supported: put the text it stands for in its place"},
    {"01 R. 05 A PIC X PIC X.", "1:18: a second PIC in one entry"},
    {"01 R. 05 A COMP BINARY PIC 9.", "1:17: a second BINARY in one entry"},
    {">>SET X", "1:1: the only directives known are >>SOURCE FORMAT FREE and >>SOURCE FORMAT FIXED"},
    // Pictures.
    {"01 R. 05 A PIC X(0).", "1:18: expected a repeat count of 1 or more and ')'"},
    {"01 R. 05 A PIC X(3.", "1:18: expected a repeat count of 1 or more and ')'"},
    {"01 R. 05 A PIC X(999999999999).", "1:18: the repeat count is too large"},
    {"01 R. 05 A PIC Q.", "1:16: unknown symbol in the picture"},
    {"01 R. 05 A PIC N(5).", "1:16: national text (N) is not supported"},
    {"01 R. 05 A PIC 9S.", "1:17: S must stand once, in front of the picture"},
    {"01 R. 05 A PIC 9V9V9.", "1:19: V must stand once, where the point is"},
    {"01 R. 05 A PIC 9P9.", "1:18: P must stand at one end of the picture"},
    {"01 R. 05 A PIC X(3)V9.", "1:16: the picture mixes a number with X or A"},
    {"01 R. 05 A PIC SVPP.", "1:16: the picture describes no character"},
    {"01 R. 05 A PIC 9(200)V9(56).", "1:23: a number has at most 255 digits"},
    {"01 R. 05 A PIC 9(39) COMP.", "1:16: a binary number has at most 38 digits"},
    // Clauses against each other.
    {"01 R. 05 A.", "1:7: A has no picture and no items below it"},
    {"01 R. 05 A PIC X. 10 B PIC X.", "1:16: an entry with items below it can't have a picture"},
    {"01 R. 05 A POINTER.", "1:12: the usage POINTER is not supported"},
    {"01 R. 05 A PIC X COMP-3.", "1:18: this usage needs a picture of S, 9, V and P only"},
    {"01 R. 05 A PIC 9 COMP-1.", "1:16: a COMP-1 or COMP-2 item has no picture"},
    {"01 R. 05 A PIC S9 COMP SIGN LEADING.", "1:24: SIGN is for numbers of USAGE DISPLAY only"},
    {"01 R. 05 A PIC 9 SIGN X.", "1:23: expected LEADING or TRAILING after SIGN, found 'X'"},
    {"01 R SYNC. 05 A PIC 9 COMP.", "1:12: SYNCHRONIZED binary numbers and floats are not supported"},
    {"77 A PIC X. 01 R PIC X.", "1:1: a level 77 item beside other records is not supported"},
    // Redefinitions.
    {"01 R. 05 A PIC X. 05 B REDEFINES Z PIC X.",
     "1:34: REDEFINES names 'Z', which is no earlier item of the same group"},
    {"01 R. 05 A PIC X. 05 C PIC X. 05 B REDEFINES A PIC X.",
     "1:46: other items stand between 'A' and what redefines it"},
    {"01 R REDEFINES S. 05 A PIC X.", "1:16: REDEFINES names 'S', which is no earlier record"},
    {"01 R. 05 N PIC 9. 05 A PIC X. 05 B REDEFINES A. 10 C PIC X OCCURS 1 TO 2 DEPENDING N.",
     "1:46: items with a counted array can't take part in REDEFINES"},
    // Arrays.
    {"01 R. 05 A OCCURS FIVE PIC X.", "1:19: expected a number of times after OCCURS, found 'FIVE'"},
    {"01 R. 05 A OCCURS 5 TO 3 DEPENDING ON N PIC X.",
     "1:19: the number of times must be 1 or more, a range must rise"},
    {"01 R. 05 A OCCURS 1 TO 3 PIC X.", "1:26: expected DEPENDING ON after the range of OCCURS, found 'PIC'"},
    {"01 R OCCURS 3. 05 A PIC X.", "1:6: OCCURS can't stand at level 01"},
    {"01 R. 05 A OCCURS 1 TO 3 DEPENDING ON N PIC X.", "1:39: DEPENDING ON names 'N', which is no item of the record"},
    {"01 R. 05 A OCCURS 1 TO 3 DEPENDING ON N PIC X. 05 N PIC 9.", "1:39: 'N' must stand in front of the array"},
    {"01 R. 05 G OCCURS 2. 10 N PIC 9. 05 A OCCURS 1 TO 3 DEPENDING ON N PIC X.",
     "1:66: 'N' lies in an array that this one does not lie in"},
    {"01 R. 05 N PIC 9V9. 05 A OCCURS 1 TO 3 DEPENDING ON N PIC X.", "1:53: 'N' is not an integer of up to 18 digits"},
    {"01 R. 05 G. 10 N PIC 9. 05 H. 10 N PIC 9. 05 A OCCURS 1 TO 3 DEPENDING ON N PIC X.",
     "1:75: there are several 'N': add OF and the name of a group"},
    {"01 R. 05 A OCCURS 16385. 10 B PIC X(16384).", "1:7: the item is longer than 256 MiB"},
    {"01 R. 05 A PIC X(268435456). 05 B PIC X.", "1:30: the record is longer than 256 MiB"},
};

TEST(Copybook, FaultsAreNamedWithTheirPlace) {
  for (const Case& error : kErrors)
    EXPECT_EQ(errorOf(error.text), error.expected) << error.text;
}

TEST(Copybook, ErrorTextShowsTheLineWithACaret) {
  EXPECT_EQ(outlineOf("       01 R.\r\n\t   10 TRANSACTION OCCURS FIVE TO 5\t\x1B\xE9\r\n"),
            "c:2:34: expected a number of times after OCCURS, found 'FIVE'\n"
            "      |           10 TRANSACTION OCCURS FIVE TO 5      ??\n"
            "      |                                 ^");
  EXPECT_THROW(readCopybookFile("no/such/file.cob"), CopybookError);
}

// Hostile input of the largest size ends soon, and with an error or a layout.
TEST(Copybook, LargeInputStaysBounded) {
  constexpr std::size_t kLargest = 4U << 20;
  std::string many = "01 R.";
  while (many.size() < kLargest - 100)
    many += "\n05 A PIC X. 05 B REDEFINES A PIC X.";
  EXPECT_EQ(errorOf(many).substr(0, 50), "8193:13: the copybook has more than 16384 entries");
  std::string deep = "01 R";
  for (unsigned level = 2; level < 50; ++level)
    deep += ". " + std::to_string(level) + " G OCCURS 2";
  EXPECT_EQ(errorOf(deep + " PIC X."), "1:284: the item is longer than 256 MiB");
  EXPECT_EQ(errorOf(std::string(kLargest, '\t') + "01 R PIC X."), "0:0: the copybook has more than 4 MiB");
  EXPECT_EQ(errorOf(std::string(kLargest, '(')).substr(0, 40), "1:7: expected a level number (01 to 49, ");
}

// Every beginning of a good copybook is a layout or an error in it, never anything else.
TEST(Copybook, EveryTruncationIsALayoutOrAnError) {
  std::ifstream file(OXR_SAMPLES_DIR "/customers.cob");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  ASSERT_GT(text.size(), 1000U);
  std::size_t layouts = 0;
  for (std::size_t size = 0; size < text.size(); ++size) {
    try {
      const Layout layout = readCopybook(std::string_view(text).substr(0, size), "c");
      ++layouts;
      ASSERT_LE(layout.maxSize(), 250U) << size;
    } catch (const CopybookError& error) {
      ASSERT_LE(error.line(), 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size), '\n'));
    }
  }
  EXPECT_GT(layouts, 20U);
}

TEST(Copybook, DescribesTheSamples) {
  const std::string customers = describe(readCopybookFile(OXR_SAMPLES_DIR "/customers.cob"));
  EXPECT_NE(customers.find("1 CUSTOMER                                   0     250  group\n"), std::string::npos);
  EXPECT_NE(customers.find("    10 AMOUNT                              105       5  packed        S9(7)V99\n"),
            std::string::npos)
      << customers;
  const Layout parts = readCopybookFile(OXR_SAMPLES_DIR "/parts.cob");
  EXPECT_EQ(parts.maxSize() * 5, std::filesystem::file_size(OXR_SAMPLES_DIR "/parts.bin"));
}

// A line of the list is: level, name, number of the field, start, end, length; positions from 1.
TEST(Copybook, PlacesFieldsWhereThePublishedListHasThem) {
  const std::filesystem::path folder = std::filesystem::path(OXR_SHARED_DATA_DIR) / "numeric-types";
  if (!std::filesystem::exists(folder)) GTEST_SKIP() << "no shared data";
  const Layout layout = readCopybookFile(folder / "layout.cob");
  std::ifstream list(folder / "layout.positions.txt");
  ItemIndex i = 0;
  for (std::string line; std::getline(list, line);) {
    std::istringstream words(line);
    unsigned level, number, start, end, length;
    std::string name;
    if (!(words >> level >> name >> number >> start >> end >> length)) continue;
    ASSERT_LT(i, layout.items.size());
    const Item& item = layout.items[i];
    std::string ours = item.name;
    std::replace(ours.begin(), ours.end(), '-', '_');
    EXPECT_EQ(ours, name);
    EXPECT_EQ(item.level, level) << name;
    EXPECT_EQ(layout.recordOffset(i), start - 1) << name;
    EXPECT_EQ(item.size, length) << name;
    ++i;
  }
  EXPECT_EQ(i, 196U);
  EXPECT_EQ(layout.items.size(), 196U);
}

}  // namespace
