#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "dataconv.hpp"
#include "support/converter.hpp"
#include "support/failures.hpp"
#include "support/text.hpp"

namespace oxr::test {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kEbcdic = 500, kUtf8 = 1208, kUtf16 = 1200, kShifted = 939, kUtf32 = 1232;
constexpr EJustification kOther = static_cast<EJustification>(7);

Raised internalError(std::vector<std::string> inserts) {
  inserts.insert(inserts.begin(), "CPI Internal Error");
  return conversionFailure(5502, std::move(inserts));
}
Raised invalidPadding(const char* dump, int ccsid) {
  return parserFailure(5520, {"CPI Converter Invalid Padding Character", dump, std::to_string(ccsid)});
}
Raised invalidPaddingSize(const char* dump, int length, int minBytes, int ccsid) {
  return parserFailure(5521, {"CPI Converter An attempt to add padding to fixed length field has failed", dump,
                              std::to_string(length), std::to_string(minBytes), std::to_string(ccsid)});
}

TEST(Padding, ExtendsTexts) {
  const struct {
    int ccsid;
    const char* text;
    int length;
    EJustification justification;
    unsigned short pad;
    bool isUnicode;
    const char* result;
  } cases[] = {
      {kEbcdic, "ab", 3, eJustifyLeft, '*', true, "ab***"},
      {kEbcdic, "ab", 3, eJustifyRight, '*', true, "***ab"},
      {kEbcdic, "ab", 3, eJustifyNone, '*', true, "***ab"},
      {kEbcdic, "ab", 3, kOther, '*', true, "***ab"},
      {kEbcdic, "ab", 0, eJustifyLeft, '*', true, "ab"},
      {kEbcdic, "ab", -1, eJustifyLeft, 0x141, false, "ab"},
      {kEbcdic, "", 2, eJustifyLeft, 0x20AC, true, "\u20AC\u20AC"},
      {kEbcdic, "ab", 2, eJustifyLeft, 0x5C, false, "ab**"},
      {kEbcdic, "ab", 2, eJustifyRight, 0x77C1, false, "AAab"},  // the high byte is dropped
      {kUtf8, "ab", 2, eJustifyRight, 0x41, false, "AAab"},
  };
  for (const auto& row : cases) {
    KelWstring text = k(row.text);
    converterFor(row.ccsid).PadData(text, row.length, row.justification, row.pad, row.isUnicode);
    EXPECT_EQ(toUtf8(text), row.result);
  }
  KelWstring text = u"ab"_k;
  converterFor(kUtf8).PadData(text, 1, eJustifyLeft, 0xC3, false);  // half a character gives no unit, so a zero
  EXPECT_EQ(text, KelWstring(u"ab\0"_k));
  converterFor(kEbcdic).PadData(text, 1000, eJustifyRight, '0', true);
  EXPECT_EQ(toUtf8(text), std::string(1000, '0') + "ab" + '\0');
  DataCnv wide = converterFor(kUtf16);
  EXPECT_EQ(raisedBy([&] { wide.PadData(text, 1, eJustifyLeft, 0x20, false); }),
            internalError({"size < MinBytesPerChar for codepage: 1200"}));
}

// Two data bytes stand in front of `length` bytes of room; one guard byte behind.
Bytes paddedBytes(DataCnv& converter, int length, EJustification justification, unsigned short pad, bool isUnicode) {
  Bytes field(static_cast<std::size_t>(length) + 3, 0xEE);
  field[0] = 0xA1;
  field[1] = 0xA2;
  converter.PadData(field.data() + 2, length, 2, justification, pad, isUnicode);
  EXPECT_EQ(field.back(), 0xEE);
  field.pop_back();
  return field;
}

TEST(Padding, ExtendsBytes) {
  const struct {
    int ccsid;
    int length;
    EJustification justification;
    unsigned short pad;
    bool isUnicode;
    Bytes field;
  } cases[] = {
      {kEbcdic, 2, eJustifyLeft, '*', true, {0xA1, 0xA2, 0x5C, 0x5C}},
      {kEbcdic, 2, eJustifyRight, '*', true, {0x5C, 0x5C, 0xA1, 0xA2}},
      {kEbcdic, 2, eJustifyNone, '*', true, {0xA1, 0xA2, 0x5C, 0x5C}},  // behind, unlike the text form
      {kEbcdic, 2, kOther, 0xC1, false, {0xA1, 0xA2, 0xC1, 0xC1}},
      {kEbcdic, 0, eJustifyLeft, '*', true, {0xA1, 0xA2}},
      {kEbcdic, 2, eJustifyRight, 0x00, false, {0, 0, 0xA1, 0xA2}},
      {kUtf8, 6, eJustifyLeft, 0x20AC, true, {0xA1, 0xA2, 0xE2, 0x82, 0xAC, 0xE2, 0x82, 0xAC}},
      {kUtf16, 4, eJustifyLeft, ' ', true, {0xA1, 0xA2, 0x00, 0x20, 0x00, 0x20}},
      // In front all is zero from the first zero byte of the padding on.
      {kUtf16, 4, eJustifyRight, ' ', true, {0x00, 0x00, 0x00, 0x00, 0xA1, 0xA2}},
      {kUtf16, 4, eJustifyRight, 0x0020, false, {0x20, 0x00, 0x00, 0x00, 0xA1, 0xA2}},
      {kUtf16, 4, eJustifyRight, 0x4241, false, {0x41, 0x42, 0x41, 0x42, 0xA1, 0xA2}},
      {kUtf16, 4, eJustifyLeft, 0x2000, false, {0xA1, 0xA2, 0x00, 0x20, 0x00, 0x20}},
  };
  for (const auto& row : cases) {
    DataCnv converter = converterFor(row.ccsid);
    EXPECT_EQ(paddedBytes(converter, row.length, row.justification, row.pad, row.isUnicode), row.field);
  }
}

TEST(Padding, RefusesBadBytePadding) {
  unsigned char field[8] = {};
  const struct {
    int ccsid, length, dataLength;
    unsigned short pad;
    bool isUnicode;
    Raised raised;
  } cases[] = {
      {kEbcdic, -1, 0, '*', true, internalError({"Invalid argument for DataCnv::PadData"})},
      {kEbcdic, 0, -1, '*', true, internalError({"Invalid argument for DataCnv::PadData"})},
      {kEbcdic, 0, 1, 0x141, false, {}},
      {kEbcdic, 1, 1, 0x141, false, invalidPadding("0x4101", kEbcdic)},
      {kUtf16, 3, 1, 0x20, false, invalidPadding("0x2000", kUtf16)},
      {kUtf32, 4, 1, 0x20, false, invalidPadding("0x2000", kUtf32)},
      {kUtf16, 3, 1, 0x20, true, invalidPaddingSize("0x2000", 3, 2, kUtf16)},
      {kUtf8, 4, 1, 0x20AC, true, invalidPaddingSize("0xac20", 4, 1, kUtf8)},
      {kEbcdic, 4, 1, 0x200B, true, invalidPaddingSize("0x0b20", 4, 1, kEbcdic)},  // the code page leaves it out
  };
  for (const auto& row : cases) {
    DataCnv converter = converterFor(row.ccsid);
    EXPECT_EQ(raisedBy([&] {
                converter.PadData(field + 4, row.length, row.dataLength, eJustifyRight, row.pad, row.isUnicode);
              }),
              row.raised);
  }
  EXPECT_EQ(Bytes(field, field + 8), Bytes(8));
  DataCnv converter = converterFor(kEbcdic);
  EXPECT_EQ(raisedBy([&] { converter.PadData(nullptr, 0, 0, eJustifyLeft, '*', true); }),
            internalError({"Invalid argument for DataCnv::PadData"}));
}

TEST(Padding, BringsTextsToALength) {
  DataCnv converter = converterFor(kEbcdic);
  const struct {
    std::string text;
    int target, content;
    EJustification justification;
    std::string result;
    Raised raised;
  } cases[] = {
      {"abc", 5, 3, eJustifyLeft, "abc**", {}},
      {"abcde", 6, 3, eJustifyRight, "***abc", {}},
      {"a", 5, 3, eJustifyLeft, std::string("a\0\0**", 5), {}},
      {"a", 0, 0, eJustifyLeft, "", {}},
      {"abc", 2, 3, eJustifyLeft, "abc",
       internalError({"Invalid input length: 2 Expected string length after padding: 3"})},
      {"abc", -1, -2, eJustifyLeft, "abc",
       internalError({"Invalid input length: -1 Expected string length after padding: -2"})},
      {"ab", 5, -3, eJustifyLeft, "ab********", internalError({"Data padding failed"})},
      {"ab", 2147483647, -3, eJustifyLeft, "ab", internalError({"Data padding failed"})},
  };
  for (const auto& row : cases) {
    KelWstring text = k(row.text);
    EXPECT_EQ(raisedBy([&] { converter.PadString(text, row.target, row.content, '*', row.justification, true); }),
              row.raised);
    EXPECT_EQ(toUtf8(text), row.result);
  }
}

TEST(Padding, MeasuresPadCharacters) {
  const struct {
    int ccsid;
    unsigned short pad;
    int bytes;
  } cases[] = {{kEbcdic, ' ', 1}, {kUtf8, ' ', 1},      {kUtf8, 0xE9, 2},     {kUtf8, 0x20AC, 3},
               {kUtf16, ' ', 2},  {kEbcdic, 0x20AC, 1}, {kEbcdic, 0x200B, 0}, {kUtf32, ' ', 4}};
  for (const auto& row : cases)
    EXPECT_EQ(converterFor(row.ccsid).GetPadCharLen(row.pad), row.bytes) << row.ccsid << ' ' << row.pad;
  // A double-byte character alone is shifted out and in, which takes more than the longest character.
  DataCnv converter = converterFor(kShifted);
  EXPECT_EQ(
      raisedBy([&] { converter.GetPadCharLen(0x3042); }),
      conversionFailure(5506, {"CPI Converter Input Data Out Of Bounds", "integer", "string (3 bytes)", "\u3042"}));
}

}  // namespace
}  // namespace oxr::test
