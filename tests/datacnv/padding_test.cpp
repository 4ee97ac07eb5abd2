#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "harness/failures.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"

namespace oxr::test {
namespace {

// Some code pages: 500 EBCDIC, 939 EBCDIC with shifts, 1208 UTF-8, 1200 UTF-16, 1232 UTF-32.

Raised internalError(const std::string& text) {
  return conversionFailure(5502, {"CPI Internal Error", text});
}
// "''" for none, else the inserts behind the text of the failure: two for a bad pad, four for a bad size.
Raised paddingFailure(const Row& row, std::size_t from) {
  std::vector<std::string> inserts(row.begin() + static_cast<std::ptrdiff_t>(from), row.end());
  if (inserts.empty()) return {};
  const bool isSize = inserts.size() == 4;
  inserts.insert(inserts.begin(), isSize ? "CPI Converter An attempt to add padding to fixed length field has failed"
                                         : "CPI Converter Invalid Padding Character");
  return parserFailure(isSize ? 5521 : 5520, inserts);
}
EJustification justification(const std::string& number) {
  return static_cast<EJustification>(std::stoi(number));
}
unsigned short unit(const std::string& number) {
  return static_cast<unsigned short>(std::stoi(number, nullptr, 16));
}

// Code page, text, length, justification, pad (U in front: Unicode), result.
TEST(Padding, ExtendsTexts) {
  for (const Row& c : rows("500 ab 3 1 U2A ab***; 500 ab 3 2 U2A ***ab; 500 ab 3 0 U2A ***ab; 500 ab 3 7 U2A ***ab;"
                           "500 ab 0 1 U2A ab; 500 ab -1 1 141 ab; 500 '' 2 1 U20AC \u20AC\u20AC; 500 ab 2 1 5C ab**;"
                           "500 ab 2 2 77C1 AAab;"  // the high byte is dropped
                           "1208 ab 2 2 41 AAab")) {
    KelWstring text = k(c[1]);
    const bool isUnicode = c[4][0] == 'U';
    converterFor(std::stoi(c[0]))
        .PadData(text, std::stoi(c[2]), justification(c[3]), unit(c[4].substr(isUnicode)), isUnicode);
    EXPECT_EQ(toUtf8(text), c[5]) << shown(c);
  }
  KelWstring text = u"ab"_k;
  converterFor(1208).PadData(text, 1, eJustifyLeft, 0xC3, false);  // half a character gives no unit, so a zero
  EXPECT_EQ(text, u"ab\0"_k);
  converterFor(500).PadData(text, 1000, eJustifyRight, '0', true);
  EXPECT_EQ(toUtf8(text), std::string(1000, '0') + "ab" + '\0');
  DataCnv wide = converterFor(1200);
  EXPECT_EQ(raisedBy([&] { wide.PadData(text, 1, eJustifyLeft, 0x20, false); }),
            internalError("size < MinBytesPerChar for codepage: 1200"));
}

// Code page, length, justification, pad, the bytes around the data "ab" or the inserts of the failure.
TEST(Padding, ExtendsBytes) {
  for (const Row& c : rows("500 2 1 U2A =ab\\\\; 500 2 2 U2A =\\\\ab; 500 2 7 5C =ab\\\\; 500 0 1 U2A =ab;"
                           "500 2 0 U2A =ab\\\\;"  // behind the data, unlike the text form
                           "1208 6 1 U20AC =ab\xE2\x82\xAC\xE2\x82\xAC; 1200 4 2 4241 =ABABab; 1200 4 1 U2A =ab0*0*;"
                           // In front all is zero from the first zero byte of the padding on.
                           "1200 4 2 U2A =0000ab; 1200 4 2 2A =*000ab; 1200 4 1 2A00 =ab0*0*; 500 2 2 0 =00ab;"
                           "500 0 1 141 =ab; 500 1 2 141 0x4101 500; 1200 3 2 20 0x2000 1200; 1232 4 1 20 0x2000 1232;"
                           "1200 3 2 U20 0x2000 3 2 1200; 1208 4 2 U20AC 0xac20 4 1 1208;"
                           "500 4 2 U200B 0x0b20 4 1 500")) {  // the code page leaves that character out
    const bool isGood = c[4][0] == '=', isUnicode = c[3][0] == 'U';
    const int length = std::stoi(c[1]);
    DataCnv converter = converterFor(std::stoi(c[0]));
    std::string field = "ab" + std::string(static_cast<std::size_t>(length), '?') + '!';
    auto* const end = reinterpret_cast<unsigned char*>(field.data() + 2);
    const Raised raised = raisedBy(
        [&] { converter.PadData(end, length, 2, justification(c[2]), unit(c[3].substr(isUnicode)), isUnicode); });
    EXPECT_EQ(raised, isGood ? Raised() : paddingFailure(c, 4)) << shown(c);
    if (!isGood) continue;
    for (char& byte : field)
      byte = byte == '\0' ? '0' : byte;
    EXPECT_EQ(field, c[4].substr(1) + '!') << shown(c);
  }
  DataCnv converter = converterFor(500);
  unsigned char byte = 0;
  for (const auto& [end, length, dataLength] :
       {std::tuple{&byte, -1, 0}, {&byte, 0, -1}, {static_cast<unsigned char*>(nullptr), 0, 0}})
    EXPECT_EQ(
        raisedBy([&, e = end, n = length, d = dataLength] { converter.PadData(e, n, d, eJustifyLeft, '*', true); }),
        internalError("Invalid argument for DataCnv::PadData"));
}

// Text, target, content, justification, result, failure.
TEST(Padding, BringsTextsToALength) {
  DataCnv converter = converterFor(500);
  for (const Row& c : rows("abc 5 3 1 abc**; abcde 6 3 2 ***abc; a 5 3 1 a00**; a 0 0 1 '';"
                           "abc 2 3 1 abc Invalid_input_length:_2_Expected_string_length_after_padding:_3;"
                           "abc -1 -2 1 abc Invalid_input_length:_-1_Expected_string_length_after_padding:_-2;"
                           "ab 5 -3 1 ab******** Data_padding_failed; ab 2147483647 -3 1 ab Data_padding_failed")) {
    KelWstring text = k(c[0]);
    EXPECT_EQ(
        raisedBy([&] { converter.PadString(text, std::stoi(c[1]), std::stoi(c[2]), '*', justification(c[3]), true); }),
        c.size() == 5 ? Raised() : internalError(c[5]));
    for (unsigned i = 0; i < text.length(); ++i)
      if (text[i] == 0) text.at(i) = '0';
    EXPECT_EQ(toUtf8(text), c[4]);
  }
}

TEST(Padding, MeasuresPadCharacters) {
  for (const Row& c : rows("500 20 1; 1208 20 1; 1208 E9 2; 1208 20AC 3; 1200 20 2; 500 200B 0; 1232 20 4"))
    EXPECT_EQ(converterFor(std::stoi(c[0])).GetPadCharLen(unit(c[1])), std::stoi(c[2])) << shown(c);
  // A double-byte character alone is shifted out and in, which takes more than the longest character.
  DataCnv shifted = converterFor(939);
  EXPECT_EQ(
      raisedBy([&] { shifted.GetPadCharLen(0x3042); }),
      conversionFailure(5506, {"CPI Converter Input Data Out Of Bounds", "integer", "string (3 bytes)", "\u3042"}));
}

}  // namespace
}  // namespace oxr::test
