#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "dataconv.hpp"
#include "support/converter.hpp"
#include "support/failures.hpp"
#include "support/text.hpp"

namespace oxr::test {
namespace {

constexpr int kEbcdic = 500, kUtf8 = 1208, kUtf16 = 1200, kShifted = 939, kUtf32 = 1232;

Raised invalidPadding(const char* dump, int ccsid) {
  return parserFailure(5520, {"CPI Converter Invalid Padding Character", dump, std::to_string(ccsid)});
}

TEST(Trimming, TrimsByTypeAndJustification) {
  const std::string text = "**\t \n12 *\r\n **";
  const struct {
    std::string text;
    int type, justification;
    unsigned short pad;
    bool isUnicode;
    std::string result;
  } cases[] = {
      {" 1 ", 0, 1, ' ', true, " 1 "},
      {" \t1\n ", 1, 1, '1', true, "1\n "},
      {" \t1\n ", 2, 0, '1', true, " \t1"},
      {"\u2003\r\n1\u2028\f ", 3, 2, '*', true, "1"},
      {"\u00A0"
       "1\u00A0",
       3, 2, '*', true,
       "\u00A0"
       "1\u00A0"},  // a no-break space is no white space
      {" \t\n", 3, 1, '*', true, ""},
      {"", 3, 1, '*', true, ""},
      {text, 3, 1, '*', true, text},
      {text, 4, 1, '*', true, text.substr(0, text.size() - 2)},
      {text, 4, 2, '*', true, text.substr(2)},
      {text, 4, 0, '*', true, text},
      {text, 4, 7, '*', true, text},
      {"****", 4, 1, '*', true, ""},
      {"****", 4, 2, '*', true, ""},
      {" 1 ", 5, 1, ' ', true, " 1 "},
      {" 1 ", -1, 2, ' ', true, " 1 "},
      {"**1**", 4, 2, 0x5C, false, "1**"},
      {"**1**", 4, 1, 0x5C, false, "**1"},
      {" 1 ", 3, 1, 0x5C, false, "1"},
  };
  DataCnv converter = converterFor(kEbcdic);
  for (const auto& row : cases) {
    KelWstring trimmed = k(row.text);
    const auto type = static_cast<ETrimType>(row.type);
    const auto justification = static_cast<EJustification>(row.justification);
    converter.TrimData(trimmed, type, justification, row.pad, row.isUnicode);
    EXPECT_EQ(toUtf8(trimmed), row.result) << row.text;

    const KelWstring original = k(row.text);
    std::vector<unsigned short> buffer(original.view().begin(), original.view().end());
    buffer.push_back(0xEEEE);
    const int length = converter.TrimString(buffer.data(), static_cast<int>(original.length()), row.pad, justification,
                                            type, row.isUnicode);
    EXPECT_EQ(KelWstring(buffer.data(), static_cast<unsigned>(length)), trimmed);
    for (unsigned i = trimmed.length(); i < original.length(); ++i)
      EXPECT_EQ(buffer[i], 0);
    EXPECT_EQ(buffer.back(), 0xEEEE);
  }
}

TEST(Trimming, ReadsPadsOfWideCodePages) {
  const struct {
    int ccsid;
    EEndian endian;
    unsigned short pad;
    const char* result;
  } cases[] = {{kUtf16, eEndianBig, 0x2A00, "1"},
               {kUtf16, eEndianLittle, 0x002A, "1"},
               {kUtf16, eEndianBig, 0x2A, "**1"},
               {kUtf8, eEndianBig, 0x2A, "1"},
               {kShifted, eEndianBig, 0x5C, "1"}};
  for (const auto& row : cases) {
    DataCnv converter = converterFor(row.ccsid, row.endian);
    KelWstring text = u"**1"_k;
    converter.TrimData(text, eTrimPadding, eJustifyRight, row.pad, false);
    EXPECT_EQ(toUtf8(text), row.result) << row.ccsid;
    KelWstring pads = u"***"_k;
    EXPECT_EQ(converter.isAllDataPadding(pads, row.pad, false), text.length() == 1);
  }
}

TEST(Trimming, RefusesABadPadForEveryTrimType) {
  const struct {
    int ccsid;
    unsigned short pad;
    const char* dump;
  } cases[] = {{kEbcdic, 0x141, "0x4101"}, {kUtf8, 0xC3A9, "0xa9c3"}, {kUtf32, 0x2A, "0x2a00"}};
  for (const auto& row : cases) {
    DataCnv converter = converterFor(row.ccsid);
    const Raised refusal = invalidPadding(row.dump, row.ccsid);
    KelWstring text = u" 1 "_k;
    unsigned short buffer[] = {' '};
    for (int type = -1; type <= 5; ++type)
      EXPECT_EQ(raisedBy([&] { converter.TrimData(text, static_cast<ETrimType>(type), eJustifyNone, row.pad, false); }),
                refusal);
    EXPECT_EQ(raisedBy([&] { converter.TrimString(buffer, 1, row.pad, eJustifyLeft, eTrimSpaceBoth, false); }),
              refusal);
    EXPECT_EQ(raisedBy([&] { converter.isAllDataPadding(text, row.pad, false); }), refusal);
    EXPECT_EQ(text, u" 1 "_k);
    EXPECT_EQ(buffer[0], ' ');
  }
  DataCnv converter = converterFor(kEbcdic);
  unsigned short buffer[] = {' '};
  EXPECT_EQ(raisedBy([&] { converter.TrimString(nullptr, -1, ' ', eJustifyLeft, eTrimNone, true); }),
            conversionFailure(5502, {"CPI Internal Error", "Null input pointer"}));
  EXPECT_EQ(raisedBy([&] { converter.TrimString(buffer, -1, ' ', eJustifyLeft, eTrimNone, true); }),
            conversionFailure(5502, {"CPI Internal Error", "Invalid input length: -1"}));
}

TEST(Trimming, CountsAndErasesAtTheEnds) {
  DataCnv converter = converterFor(kEbcdic);
  const unsigned short zero = '0';
  const struct {
    const char* text;
    int front, back, spacesInFront, spacesBehind;
  } counts[] = {
      {"", 0, 0, 0, 0}, {"000", 3, 3, 0, 0}, {"0010", 2, 1, 0, 0}, {" \t0\n", 0, 0, 2, 1}, {"  ", 0, 0, 2, 2}};
  for (const auto& row : counts) {
    const KelWstring text = k(row.text);
    EXPECT_EQ(converter.getNumLeadingPaddingChar(text, &zero), row.front);
    EXPECT_EQ(converter.getNumTrailingPaddingChar(text, &zero), row.back);
    EXPECT_EQ(converter.getNumLeadingPaddingChar(text, nullptr), row.spacesInFront);
    EXPECT_EQ(converter.getNumTrailingPaddingChar(text, nullptr), row.spacesBehind);
  }
  const struct {
    const char* text;
    int count;
    const char *withoutFront, *withoutBack;
  } erasures[] = {{"abc", 0, "abc", "abc"}, {"abc", -5, "abc", "abc"},   {"abc", 1, "bc", "ab"},
                  {"abc", 3, "", ""},       {"abc", 2147483647, "", ""}, {"", 1, "", ""}};
  for (const auto& row : erasures) {
    KelWstring front = k(row.text), back = k(row.text);
    converter.TrimFromTheLeft(front, row.count);
    converter.TrimFromTheRight(back, row.count);
    EXPECT_EQ(toUtf8(front) + '|' + toUtf8(back), std::string(row.withoutFront) + '|' + row.withoutBack);
  }
}

TEST(Trimming, TellsNullStrings) {
  const struct {
    const char* text;
    unsigned short pad;
    bool isUnicode, isNull;
  } cases[] = {{"", '*', true, true},
               {"***", '*', true, true},
               {"**1", '*', true, false},
               {"*", 0x5C, false, true},
               {"AA", 0x77C1, false, true},  // the high byte is dropped here, and refused by
                                             // isAllDataPadding
               {"  ", '*', true, false}};
  DataCnv converter = converterFor(kEbcdic);
  for (const auto& row : cases) {
    KelWstring text = k(row.text);
    EXPECT_EQ(converter.IsNullString(text, row.pad, row.isUnicode), row.isNull) << row.text;
    EXPECT_EQ(converter.IsNullString(PWFData(text), row.pad, row.isUnicode), row.isNull) << row.text;
    if (row.pad <= 0xFF) {
      EXPECT_EQ(converter.isAllDataPadding(text, row.pad, row.isUnicode), row.isNull) << row.text;
    }
  }
  EXPECT_TRUE(converter.IsNullString(PWFData(STRING), '*', true));
  EXPECT_EQ(raisedBy([&] { converter.IsNullString(PWFData(INTEGER), '*', true); }).number & 0xFFFF, 5522);
  DataCnv wide = converterFor(kUtf16);
  EXPECT_EQ(raisedBy([&] { wide.IsNullString(KelWstring(), 0x20, false); }),
            conversionFailure(5502, {"CPI Internal Error", "size < MinBytesPerChar for codepage: 1200"}));
}

TEST(Trimming, TruncatesAtCharacters) {
  constexpr long kHuge = std::numeric_limits<long>::max();
  const struct {
    int ccsid;
    const char* text;
    long maxLength;
    LengthUnitType unit;
    const char *left, *right;  // what stays of the text under either justification
  } cases[] = {
      {kUtf8, "\u00E9\u00E8\u00EA", 5, eLengthBytes, "\u00E9\u00E8", "\u00E8\u00EA"},
      {kUtf8, "\u00E9\u00E8\u00EA", 4, eLengthBytesIfVariable, "\u00E9\u00E8", "\u00E8\u00EA"},
      {kUtf8, "\u00E9\u00E8\u00EA", 5, eLengthChars, "\u00E9\u00E8\u00EA", "\u00E9\u00E8\u00EA"},
      {kUtf8, "\u00E9\u00E8\u00EA", 2, eLengthChars, "\u00E9\u00E8", "\u00E8\u00EA"},
      {kUtf8, "\u00E9\u00E8\u00EA", 1, eLengthBytes, "", ""},
      {kUtf8, "\u00E9\u00E8\u00EA", 6, eLengthBytes, "\u00E9\u00E8\u00EA", "\u00E9\u00E8\u00EA"},
      {kUtf8, "abc", kHuge, eLengthBytes, "abc", "abc"},
      {kUtf8, "abc", -kHuge - 1, eLengthBytes, "", ""},
      {kUtf8, "abc", -kHuge - 1, eLengthChars, "", ""},
      // Each half of a pair is measured by itself, as a substitution character of 3 bytes.
      {kUtf8, "a\U0001F600z", 7, eLengthBytes, "a\U0001F600", "\U0001F600z"},
      {kUtf8, "a\U0001F600z", 8, eLengthBytes, "a\U0001F600z", "a\U0001F600z"},
      {kShifted, "a\u3042\u3042", 5, eLengthBytes, "a\u3042", "\u3042"},  // each shifted out and in
      {kUtf16, "abc", 5, eLengthBytes, "ab", "bc"},
      {kUtf16, "abcdef", 5, eLengthBytesIfVariable, "abcde", "bcdef"},
      {kUtf16, "abcdef", 5, eLengthChars, "abcde", "bcdef"},
      {kEbcdic, "abcdef", 5, eLengthBytes, "abcde", "bcdef"},
      {kEbcdic, "abc", 2, static_cast<LengthUnitType>(9), "ab", "bc"},
      {kEbcdic, "abc", 3, eLengthBytes, "abc", "abc"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.text);
    DataCnv other = converterFor(kEbcdic);  // its own code page plays no part
    CPUnicodeConverter page(row.ccsid, eEndianBig);
    for (const int justification : {0, 1, 2, 7}) {
      KelWstring text = k(row.text);
      const char* const expected = justification == 0 ? row.text : justification == 1 ? row.left : row.right;
      const bool cut =
          other.TruncateData(text, row.maxLength, static_cast<EJustification>(justification), row.unit, &page);
      EXPECT_EQ(toUtf8(text), expected);
      EXPECT_EQ(cut, std::string(expected) != row.text);
    }
  }
}

TEST(Trimming, TruncatesWithoutAConverterByCharactersOnly) {
  DataCnv converter = converterFor(kEbcdic);
  KelWstring text = u"abc"_k;
  for (const auto unit : {eLengthBytes, eLengthBytesIfVariable})
    EXPECT_EQ(raisedBy([&] { converter.TruncateData(text, 2, eJustifyLeft, unit, nullptr); }),
              conversionFailure(5502, {"CPI Internal Error", "no valid converter"}));
  EXPECT_FALSE(converter.TruncateData(text, 2, eJustifyNone, eLengthBytes, nullptr));
  EXPECT_TRUE(converter.TruncateData(text, 2, eJustifyLeft, eLengthChars, nullptr));
  EXPECT_EQ(text, u"ab"_k);
}

}  // namespace
}  // namespace oxr::test
