#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "harness/textedits.hpp"

// Some code pages: 500 EBCDIC, 939 EBCDIC with shifts, 1208 UTF-8, 1200 UTF-16, 1232 UTF-32.
namespace oxr::test {
namespace {

const Members kMembers = {
    {"TrimData", edits([](Case& c, DataCnv& converter, KelWstring& text) {
       converter.TrimData(text, c.trim(), c.justification(), padOf(c), padIsUnit(c));
     })},
    {"TrimString", edits([](Case& c, DataCnv& converter, KelWstring& text) {
       std::vector<unsigned short> units(text.view().begin(), text.view().end());
       units.push_back(0xEEEE);
       const int size = c.number("size", static_cast<int>(text.length()));
       const int length = converter.TrimString(c.has("null") ? nullptr : units.data(), size, padOf(c),
                                               c.justification(), c.trim(), padIsUnit(c));
       EXPECT_EQ(std::count(units.begin() + length, units.end(), 0), size - length);
       EXPECT_EQ(units.back(), 0xEEEE);
       text = KelWstring(units.data(), static_cast<unsigned>(length));
     })},
    {"TrimFromTheLeft",
     edits([](Case& c, DataCnv& converter, KelWstring& text) { converter.TrimFromTheLeft(text, c.number("count")); })},
    {"TrimFromTheRight",
     edits([](Case& c, DataCnv& converter, KelWstring& text) { converter.TrimFromTheRight(text, c.number("count")); })},
    {"isAllDataPadding", edits([](Case& c, DataCnv& converter, KelWstring& text) {
       return converter.isAllDataPadding(text, padOf(c), padIsUnit(c));
     })},
    {"IsNullString", edits([](Case& c, DataCnv& converter, KelWstring& text) {
       const bool isNull = converter.IsNullString(text, padOf(c), padIsUnit(c));
       EXPECT_EQ(converter.IsNullString(PWFData(text), padOf(c), padIsUnit(c)), isNull);
       return isNull;
     })},
    {"TruncateData", edits([](Case& c, DataCnv& converter, KelWstring& text) {
       CPUnicodeConverter page(c.number("page"), eEndianBig);
       const auto unit = c.oneOf("unit", {"bytes", "chars", "bytesIfVariable"}, eLengthBytes);
       return converter.TruncateData(text, c.number<long>("length"), c.justification(), unit,
                                     c.flag("noPage") ? nullptr : &page);
     })},
};

TEST(Trimming, TrimsByTypeAndJustification) {
  runTable(
      "member text trim justify ->\n"
      "TrimData,TrimString '\t1\t ' none left -> ^1^_\n"
      "TrimData,TrimString ' \t1\t ' leading left -> 1^_\n"
      "TrimData,TrimString ' \t1\t ' trailing none -> _^1\n"
      "TrimData,TrimString '\u2003\u00A01\u00A0\u2028\f' both right -> \u00A01\u00A0\n",  // those stay
      kMembers);
  runTable(R"(
    member               page  text     trim     justify ->
    TrimData,TrimString  500   '   '    both     left               -> ''
    ~                    500   '* 1 *'  both     left  pad=*        -> *_1_*
    ~                    500   **1**    pad      left  pad=*        -> **1
    ~                    500   **1**    pad      right padByte=0x5C -> 1**
    ~                    500   *1*      pad      none  pad=*        -> *1*
    ~                    500   ' 1 '    5        left               -> _1_
    ~                    1200  **1      pad      right padByte=0x2A00 -> 1
    ~                    1200  **1      pad      right padByte=0x2A order=little -> 1
  )",
           kMembers);
}

TEST(Trimming, RefusesABadPadForEveryTrimType) {
  runTable(R"(
    member               page  text   trim ->
    TrimData,TrimString  500   ' 1 '  both  padByte=0x100  -> KelParserException OXR5520: 0x0001 | 500
    TrimData,isAllDataPadding  1232  ' 1 '  none  padByte=0x2A   -> KelParserException OXR5520: 0x2a00 | 1232
    TrimString           500   1      none  null=1 size=-1 -> OXR5502: Null input pointer
    ~                    500   1      none  size=-1        -> OXR5502: Invalid input length: -1
  )",
           kMembers);
}

TEST(Trimming, ErasesAtTheEnds) {
  runTable(R"(
    member                            text  count ->
    TrimFromTheLeft,TrimFromTheRight  abc   -5         -> abc
    TrimFromTheLeft                   abc   1          -> bc
    TrimFromTheRight                  abc   1          -> ab
    TrimFromTheLeft,TrimFromTheRight  abc   2147483647 -> ''
  )",
           kMembers);
}

TEST(Trimming, TellsNullStrings) {
  runTable(R"(
    member                         page  text ->
    IsNullString,isAllDataPadding  500   ''   pad=*          -> /true
    IsNullString,isAllDataPadding  500   **1  padByte=0x5C   -> **1/false
    IsNullString                   500   **   padByte=0x775C -> **/true
    ~                              1200  ''   padByte=0x20   -> OXR5502: size < MinBytesPerChar for codepage: 1200
  )",
           kMembers);
}

TEST(Trimming, TruncatesAtCharacters) {
  runTable(R"(
    member        page  text    length unit  justify ->
    TruncateData  1208  abc     2      bytesIfVariable 7    -> bc/true
    ~             1208  abc     3      bytes left           -> abc/false
    ~             1208  abc     2      bytes none           -> abc/false
    ~             1208  abc     -9223372036854775808 chars right -> /true
    ~             1200  abc     5      bytes right          -> bc/true
    ~             1200  abcdef  5      bytesIfVariable left -> abcde/true
    ~             500   abc     2      9     left           -> ab/true
    ~             500   abc     2      chars left noPage=1  -> ab/true
    ~             500   abc     2      bytesIfVariable left noPage=1 -> OXR5502: no valid converter
  )",
           kMembers);
  // Each half of a pair is measured by itself, as a substitution character of three bytes; what the page leaves out has
  // none, and what it shifts for has two more.
  runTable(
      "member page text length unit justify ->\n"
      "TruncateData 1208 \u00E9\u00E8\u00EA 5 bytes left -> \u00E9\u00E8/true\n"
      "TruncateData 1208 a\U0001F600z 7 bytes left -> a\U0001F600/true\n"
      "TruncateData 939 a\u3042\u3042 5 bytes left -> a\u3042/true\n"
      "TruncateData 939 ab\u200B 2 bytes right -> ab\u200B/false",
      kMembers);
}

}  // namespace
}  // namespace oxr::test
