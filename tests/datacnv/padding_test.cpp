#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "harness/textedits.hpp"

// Some code pages: 500 EBCDIC, 939 EBCDIC with shifts, 1208 UTF-8, 1200 UTF-16, 1232 UTF-32.
namespace oxr::test {
namespace {

const Members kMembers = {
    {"PadData", edits([](Case& c, DataCnv& converter, KelWstring& text) {
       converter.PadData(text, c.number("length"), c.justification(), padOf(c), padIsUnit(c));
     })},
    {"PadString", edits([](Case& c, DataCnv& converter, KelWstring& text) {
       converter.PadString(text, c.number("length"), c.number("content"), padOf(c), c.justification(), padIsUnit(c));
     })},
    {"PadBytes",  // PadData after the bytes "ab", or after as many as the case says
     [](Case& c) {
       const int length = c.number("length"), room = 2 + std::max(length, 0);
       unsigned char* const field = c.target(room);
       if (field != nullptr && !c.has("count")) std::copy_n("ab", 2, field);
       c.converter().PadData(field == nullptr ? nullptr : field + 2, length, c.number("count", 2), c.justification(),
                             padOf(c), padIsUnit(c));
       return visible(fromHex(c.written(room)));
     }},
    {"GetPadCharLen", [](Case& c) { return shown(c.converter().GetPadCharLen(padOf(c))); }},
};

TEST(Padding, ExtendsTexts) {
  runTable(R"(
    member     page  text   length justify ->
    PadData    500   ab     70     left  pad=*         -> ab**********************************************************************
    ~          500   ab     3      none  pad=*         -> ***ab
    ~          500   ab     -1     left  padByte=0x141 -> ab
    ~          500   ab     2      7     padByte=0x775C -> **ab
    ~          1208  ab     1      left  padByte=0xC3  -> ab0
    ~          1200  ab     1      left  padByte=0x20  -> OXR5502: size < MinBytesPerChar for codepage: 1200
    PadString  500   abcde  6      right content=3     -> ___abc
    ~          500   a      5      left  content=3     -> a00__
    ~          500   a      0      left  content=0     -> ''
    ~          500   abc    2      left  content=3     -> OXR5502: Invalid input length: 2 Expected string length after padding: 3
    ~          500   abc    -1     left  content=-2    -> OXR5502: Invalid input length: -1 Expected string length after padding: -2
    ~          500   ab     2147483647 left content=-3 touched=1 -> OXR5502: Data padding failed
  )",
           kMembers);
}

TEST(Padding, ExtendsBytes) {
  runTable(R"(
    member    page  length justify touched ->
    PadBytes  500   2      right   1 pad=*          -> \\ab
    ~         500   2      none    1 padByte=0x5C   -> ab\\
    ~         1200  4      right   1 padByte=0x4241 -> ABABab
    ~         1200  4      left    1 pad=*          -> ab0*0*
    ~         1200  4      right   1 padByte=0x2A   -> *000ab
    ~         500   0      left    1 padByte=0x141  -> ab
    ~         500   1      right   1 padByte=0x100  -> KelParserException OXR5520: 0x0001 | 500
    ~         1200  3      right   1 padByte=0x20   -> KelParserException OXR5520: 0x2000 | 1200
    ~         1232  4      left    1 padByte=0x20   -> KelParserException OXR5520: 0x2000 | 1232
    ~         1208  4      right   1 pad=U+20AC     -> KelParserException OXR5521: 0xac20 | 4 | 1 | 1208
    ~         500   4      left    1 pad=U+200B     -> KelParserException OXR5521: 0x0b20 | 4 | 1 | 500
    ~         500   -1     left    0 count=0        -> OXR5502: Invalid argument for DataCnv::PadData
    ~         500   0      left    0 count=-1       -> OXR5502: Invalid argument for DataCnv::PadData
    ~         500   0      left    0 target=null    -> OXR5502: Invalid argument for DataCnv::PadData
  )",
           kMembers);
}

// A double-byte character alone is shifted out and in, which takes more than the longest character.
TEST(Padding, MeasuresPadCharacters) {
  runTable(
      "member page pad ->\nGetPadCharLen 1208 U+20AC -> 3\nGetPadCharLen 1232 * -> 4\nGetPadCharLen 500 U+200B -> 0\n"
      "GetPadCharLen 939 U+4E00 -> OXR5506: integer | string (3 bytes) | \u4E00",
      kMembers);
}

}  // namespace
}  // namespace oxr::test
