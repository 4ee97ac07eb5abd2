#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "harness/failures.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"

namespace oxr::test {
namespace {

// Some code pages: 500 EBCDIC, 939 EBCDIC with shifts, 1208 UTF-8, 1200 UTF-16, 1232 UTF-32.

constexpr auto kLongest = std::numeric_limits<long>::max();

unsigned short unit(const std::string& number) {
  return static_cast<unsigned short>(std::stoi(number, nullptr, 16));
}

// Text, trim type, justification, pad (U in front: Unicode), result. TrimString does the same on a caller's units and
// writes zeros behind them.
TEST(Trimming, TrimsByTypeAndJustification) {
  DataCnv converter = converterFor(500);
  for (const Row& c :
       rows("_1_ 0 1 U20 _1_; _\t1\n_ 1 1 U31 1\n_; _\t1\n_ 2 0 U31 _\t1; \u2003\r\n1\u2028\f_ 3 2 U2A 1;"
            "\u00A01\u00A0 3 2 U2A \u00A01\u00A0;"  // a no-break space is no white space
            "_\t\n 3 1 U2A ''; '' 3 1 U2A ''; *\t1_* 3 1 U2A *\t1_*; **\t1_** 4 1 U2A **\t1_;"
            "**\t1_** 4 2 U2A \t1_**; *1* 4 0 U2A *1*; *1* 4 7 U2A *1*; **** 4 1 U2A ''; **** 4 2 U2A '';"
            "_1_ 5 1 U20 _1_; _1_ -1 2 U20 _1_; **1** 4 2 5C 1**; **1** 4 1 5C **1; _1_ 3 1 5C 1")) {
    const KelWstring original = k(c[0]), expected = k(c[4]);
    const auto type = static_cast<ETrimType>(std::stoi(c[1]));
    const auto justification = static_cast<EJustification>(std::stoi(c[2]));
    const bool isUnicode = c[3][0] == 'U';
    const unsigned short pad = unit(c[3].substr(isUnicode));
    KelWstring text = original;
    converter.TrimData(text, type, justification, pad, isUnicode);
    EXPECT_EQ(text, expected) << shown(c);

    std::vector<unsigned short> units(original.view().begin(), original.view().end()), trimmed(units.size() + 1);
    units.push_back(0xEEEE);
    std::copy_n(expected.characters(), expected.length(), trimmed.begin());
    trimmed.back() = 0xEEEE;
    const int length = static_cast<int>(original.length());
    EXPECT_EQ(converter.TrimString(units.data(), length, pad, justification, type, isUnicode),
              static_cast<int>(expected.length()));
    EXPECT_EQ(units, trimmed) << shown(c);
  }
}

// Code page, byte order of its text, pad, what remains of "**1".
TEST(Trimming, ReadsPadsOfWideCodePages) {
  for (const Row& c : rows("1200 2 2A00 1; 1200 1 2A 1; 1200 2 2A **1; 1208 2 2A 1; 939 2 5C 1")) {
    DataCnv converter = converterFor(std::stoi(c[0]), static_cast<EEndian>(std::stoi(c[1])));
    KelWstring text = u"**1"_k, pads = u"***"_k;
    converter.TrimData(text, eTrimPadding, eJustifyRight, unit(c[2]), false);
    EXPECT_EQ(toUtf8(text), c[3]) << shown(c);
    EXPECT_EQ(converter.isAllDataPadding(pads, unit(c[2]), false), c[3] == "1");
  }
}

TEST(Trimming, RefusesABadPadForEveryTrimType) {
  for (const Row& c : rows("500 141 0x4101; 1208 C3A9 0xa9c3; 1232 2A 0x2a00")) {
    DataCnv converter = converterFor(std::stoi(c[0]));
    const unsigned short pad = unit(c[1]);
    const Raised refusal = parserFailure(5520, {"CPI Converter Invalid Padding Character", c[2], c[0]});
    KelWstring text = u" 1 "_k;
    unsigned short units[] = {' '};
    for (int type = -1; type <= 5; ++type)
      EXPECT_EQ(raisedBy([&] { converter.TrimData(text, static_cast<ETrimType>(type), eJustifyNone, pad, false); }),
                refusal);
    EXPECT_EQ(raisedBy([&] { converter.TrimString(units, 1, pad, eJustifyLeft, eTrimSpaceBoth, false); }), refusal);
    EXPECT_EQ(raisedBy([&] { converter.isAllDataPadding(text, pad, false); }), refusal);
    EXPECT_TRUE(text == u" 1 "_k && units[0] == ' ');
  }
  DataCnv converter = converterFor(500);
  unsigned short units[] = {' '};
  EXPECT_EQ(raisedBy([&] { converter.TrimString(nullptr, -1, ' ', eJustifyLeft, eTrimNone, true); }),
            conversionFailure(5502, {"CPI Internal Error", "Null input pointer"}));
  EXPECT_EQ(raisedBy([&] { converter.TrimString(units, -1, ' ', eJustifyLeft, eTrimNone, true); }),
            conversionFailure(5502, {"CPI Internal Error", "Invalid input length: -1"}));
}

// Text, count, what remains without the front, without the back.
TEST(Trimming, ErasesAtTheEnds) {
  DataCnv converter = converterFor(500);
  for (const Row& c :
       rows("abc 0 abc abc; abc -5 abc abc; abc 1 bc ab; abc 3 '' ''; abc 2147483647 '' ''; '' 1 '' ''")) {
    KelWstring front = k(c[0]), back = front;
    converter.TrimFromTheLeft(front, std::stoi(c[1]));
    converter.TrimFromTheRight(back, std::stoi(c[1]));
    EXPECT_EQ(toUtf8(front) + '|' + toUtf8(back), c[2] + '|' + c[3]);
  }
}

TEST(Trimming, TellsNullStrings) {
  DataCnv converter = converterFor(500), wide = converterFor(1200);
  for (const Row& c : rows("'' U2A yes; *** U2A yes; **1 U2A no; * 5C yes; __ U2A no;"
                           "AA 77C1 yes")) {  // the high byte is dropped
    const bool isUnicode = c[1][0] == 'U', isNull = c[2] == "yes";
    const unsigned short pad = unit(c[1].substr(isUnicode));
    KelWstring text = k(c[0]);
    EXPECT_EQ(converter.IsNullString(text, pad, isUnicode), isNull) << shown(c);
    EXPECT_EQ(converter.IsNullString(PWFData(text), pad, isUnicode), isNull) << shown(c);
    EXPECT_EQ(converter.isAllDataPadding(text, pad & 0xFF, isUnicode), isNull) << shown(c);
  }
  EXPECT_TRUE(converter.IsNullString(PWFData(STRING), '*', true));
  EXPECT_EQ(raisedBy([&] { converter.IsNullString(PWFData(INTEGER), '*', true); }).number & 0xFFFF, 5522);
  EXPECT_EQ(raisedBy([&] { wide.IsNullString(KelWstring(), 0x20, false); }),
            conversionFailure(5502, {"CPI Internal Error", "size < MinBytesPerChar for codepage: 1200"}));
}

// Code page, text, length, unit, what eJustifyLeft leaves of the text, what eJustifyRight and any other value leave.
TEST(Trimming, TruncatesAtCharacters) {
  DataCnv converter = converterFor(500);  // its own code page plays no part
  for (const Row& c :
       rows("1208 \u00E9\u00E8\u00EA 5 0 \u00E9\u00E8 \u00E8\u00EA; 1208 \u00E9\u00E8\u00EA 4 2 \u00E9\u00E8 "
            "\u00E8\u00EA;"
            "1208 \u00E9\u00E8\u00EA 5 1 \u00E9\u00E8\u00EA \u00E9\u00E8\u00EA; 1208 \u00E9\u00E8 1 1 \u00E9 \u00E8;"
            "1208 \u00E9\u00E8 1 0 '' ''; 1208 \u00E9\u00E8 4 0 \u00E9\u00E8 \u00E9\u00E8; 1208 abc max 0 abc abc;"
            "1208 abc min 0 '' ''; 1208 abc min 1 '' '';"
            // Each half of a pair is measured by itself, as a substitution character of 3 bytes.
            "1208 a\U0001F600z 7 0 a\U0001F600 \U0001F600z; 1208 a\U0001F600z 8 0 a\U0001F600z a\U0001F600z;"
            "939 a\u3042\u3042 5 0 a\u3042 \u3042;"  // each is shifted out and in
            "939 ab\u200B 2 0 ab ab\u200B;"          // left out by the code page: no bytes
            "1200 abc 5 0 ab bc; 1200 abcdef 5 2 abcde bcdef; 1200 abcdef 5 1 abcde bcdef;"
            "500 abcdef 5 0 abcde bcdef; 500 abc 2 9 ab bc; 500 abc 3 0 abc abc")) {
    CPUnicodeConverter page(std::stoi(c[0]), eEndianBig);
    const long maxLength = c[2] == "max" ? kLongest : c[2] == "min" ? -kLongest - 1 : std::stol(c[2]);
    const auto lengthUnit = static_cast<LengthUnitType>(std::stoi(c[3]));
    for (const int justification : {0, 1, 2, 7}) {
      KelWstring text = k(c[1]);
      const std::string& expected = justification == 0 ? c[1] : justification == 1 ? c[4] : c[5];
      EXPECT_EQ(converter.TruncateData(text, maxLength, static_cast<EJustification>(justification), lengthUnit, &page),
                expected != c[1]);
      EXPECT_EQ(toUtf8(text), expected) << shown(c) << justification;
    }
  }
}

TEST(Trimming, TruncatesWithoutAConverterByCharactersOnly) {
  DataCnv converter = converterFor(500);
  KelWstring text = u"abc"_k;
  for (const auto lengthUnit : {eLengthBytes, eLengthBytesIfVariable})
    EXPECT_EQ(raisedBy([&] { converter.TruncateData(text, 2, eJustifyLeft, lengthUnit, nullptr); }),
              conversionFailure(5502, {"CPI Internal Error", "no valid converter"}));
  EXPECT_FALSE(converter.TruncateData(text, 2, eJustifyNone, eLengthBytes, nullptr));
  EXPECT_TRUE(converter.TruncateData(text, 2, eJustifyLeft, eLengthChars, nullptr) && text == u"ab"_k);
}

}  // namespace
}  // namespace oxr::test
