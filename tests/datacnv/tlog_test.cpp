#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <string>

#include "harness/table.hpp"

namespace oxr::test {
namespace {

EEndian endianOf(const Case& c) {
  return c.endian("endian");
}
// Binds a member that takes pads off and puts the text before what a target holds.
template <class Trimming>
Member trimmer(Trimming member) {
  return [member](Case& c) {
    KelWstring text = k(c.word("text"));
    (c.converter().*member)(c.bytes("field"), text, c.sizeOf("field"), endianOf(c), c.trim(eTrimPadding),
                            c.justification(), c.number<unsigned short>("pad"), c.flag("unicode"));
    return toUtf8(text);
  };
}

std::string writeDecimal(Case& c, bool fixed) {
  const int size = c.number("size");
  unsigned char* const target = c.target(size);
  PWFData value(k(c.word("value")).characters(), c.flag("other") ? STRING : DECIMAL);
  int written = -1;
  const unsigned char* const result =
      c.converter().TLOGPWFDataToPckdDecimal(value, target, size, endianOf(c), fixed, written);
  EXPECT_EQ(result, target);
  EXPECT_EQ(written, target == nullptr ? -1 : std::max(size, 0));
  return target == nullptr ? "null" : c.written(std::max(size, 0));
}

const Members kMembers = {
    {"TLOGPckdStrToStr", reader(&DataCnv::TLOGPckdStrToStr, endianOf)},
    {"TLOGPckdDecToDec", reader(&DataCnv::TLOGPckdDecToDec, endianOf)},
    {"TLOGFLPckdStrToStr", trimmer(&DataCnv::TLOGFLPckdStrToStr)},
    {"TLOGFLPckdDecToDec", trimmer(&DataCnv::TLOGFLPckdDecToDec)},
    {"getUnpackedBuffer",
     [](Case& c) {
       const int size = c.sizeOf("field");
       const std::unique_ptr<const unsigned char[]> halves(
           c.converter().getUnpackedBuffer(c.bytes("field"), size, endianOf(c)));
       return halves == nullptr ? "null" : toHex({reinterpret_cast<const char*>(halves.get()), 2u * unsigned(size)});
     }},
    {"Variable", [](Case& c) { return writeDecimal(c, false); }},
    {"Fixed", [](Case& c) { return writeDecimal(c, true); }},
    {"TLOGPWFDataToPckdStr",
     [](Case& c) {
       const int size = c.number("size");
       unsigned char* const target = c.target(size);
       const PWFData value(k(c.word("value")).characters(), c.flag("other") ? DECIMAL : STRING);
       EXPECT_EQ(c.converter().TLOGPWFDataToPckdStr(value, target, size, endianOf(c)), target);
       return target == nullptr ? "null" : c.written(std::max(size, 0));
     }},
};

void run(const std::string& table) {
  const char* const full = "-> OXR5522 bare: CPI Internal error from invalid operation on PWFData";
  runTable(std::regex_replace(table, std::regex("-> bad type"), full), kMembers);
}

// Text goes before what a target holds; a null field empties it.
TEST(Tlog, ReadsStringsAndDecimals) {
  run(R"(
    member            field              endian ->
    getUnpackedBuffer 12AF               {little,unset}             -> {0A0F0102,01020A0F}
    TLOGPckdStrToStr  12AF               {big,little}   way=fast    -> {STRING 12AF,STRING AF12}
    TLOGPckdDecToDec  34D1               little         way=fast    -> -134
    ~                 {FD12,F123,FD,F0}  {big,7}        way=fast    -> {-12,123,-,0,-12,123,-,0}
    ~ 67452301895634D112 little way=general -> OXR5505: TLOG packed decimal | 0x67452301895634d112
    ~ {ff12,fdd1,123c,e1} big way=general -> OXR5505: TLOG packed decimal | 0x{field}
    getUnpackedBuffer  null  {big,little,unset} size=1          -> null
    TLOGFLPckdStrToStr D1    big                text=old        -> D1old
    TLOGFLPckdDecToDec D1    big                text=old        -> -1old
    TLOGPckdDecToDec   null  big                size=1 way=general -> ''
    TLOGFLPckdDecToDec,TLOGFLPckdStrToStr null  {big,little,unset} size=1 text=old pad=15 -> ''
    TLOGFLPckdDecToDec,TLOGFLPckdStrToStr FF    {big,little,unset} size={0,-3} justify=left pad=15 -> ''
  )");
}

// In EBCDIC 0x46 is a letter with an accent, and 0x30 a control character.
TEST(Tlog, PadsComeOffInMemoryOrder) {
  run(R"(
    member             field    endian justify pad ->
    TLOGFLPckdDecToDec 1234FFFF big    left    15  -> 1234
    ~                  1234FFFF big    right   15  -> OXR5505: TLOG packed decimal | 0x1234ffff
    ~                  3412FFFF little left    15  -> 1234
    ~                  1299     big    left    25  -> 12
    TLOGFLPckdStrToStr 12FF     big    left    15  page={819,1208,37} -> {12,12,12FF}
    ~                  1200     big    left    0   page=37 -> 1200
    ~                  12FF     big    left    15  page=819 trim=both -> 12FF
  )");
}

// A "+" or leading zeros turn the count that the bytes are worked out from: digits are lost, or missed.
TEST(Tlog, WritesDecimals) {
  run(R"(
    member   value          size ->
    Variable {123,-123,-12} 2                         -> {F123,D123,FD12}
    ~        {12,-0,+5,007} 1                         -> {12,D0,F5,F7}
    ~        {1234,-1234}   1                         -> {12,FD}
    ~        1              2    target=null other=1  -> null
    ~ 1 2 other=1 -> bad type | Logical type not equal to decimal
    ~        -1234567       4    endian=little        -> D12323D1
    ~        {1,-12}        0                         -> OXR5506: Decimal | TLOG Packed Decimal | {value}
    ~        {1.5,1.55,12a4,-,+,/123,:123,123:} 2    touched=1 -> OXR5505: decimal | {value}
    Fixed  {123,-123,-12}     3                   -> {000123,00D123,000D12}
    ~      -12                2                   -> 0D12
    ~      12                 1      endian=unset -> 12
    ~      {0123,+123,+12}    2                   -> {0001,0001,0012}
    ~      {-12,123,01,+5,00} 1      touched=1    -> OXR5506: Decimal | TLOG Packed Decimal | {value}
    ~      {12,0}             {0,-1}              -> OXR5506: Decimal | TLOG Packed Decimal | {value}
    ~      {1.55,-012,-,+}    3      touched=1    -> OXR5505: decimal | {value}
  )");
}

// Little-endian fields become a mirror image of their first half.
TEST(Tlog, LittleEndianWritesAMirrorImage) {
  run(R"(
    member               value       size   page ->
    TLOGPWFDataToPckdStr {12AFaf,12} 3      819                      -> {12AFAF,120000}
    ~                    GgZ@        2      819                      -> 77A0
    ~                    12AF        2      37                       -> 1216
    ~                    12          4      1200                     -> 01020000
    ~                    12          {0,-1} 819                      -> ''
    ~                    12ab        2      819  endian=little       -> 1212
    ~                    123456      3      819  endian=little       -> 123412
    ~                    1           0      819  endian=little       -> OXR5502 bare: Invalid input length: 0
    ~                    1           2      819  target=null other=1 -> null
    ~ 1 2 819 other=1 -> bad type | Logical type not equal to string
  )");
}

TEST(Tlog, TracesUnderTheirNames) {
  const std::string arguments = "const unsigned char* source, PWFInt32 size, EEndian endian): 1|2";
  const std::string unpack = " getUnpackedBuffer ( " + arguments;
  const std::string string = "TLOGPckdStrToStr( " + arguments;
  const std::string decimal =
      "TLOGPckdDecToDec(const unsigned char* source, PWFString& dest, PWFInt32 size, EEndian endian): 1|2";
  const std::pair<const char*, std::string> cases[] = {
      {"TLOGPckdStrToStr", string + ' ' + string + unpack},
      {"TLOGPckdDecToDec", "TLOGPckdDecToDec(" + arguments + ' ' + decimal + unpack},
      {"TLOGFLPckdStrToStr", "TLOGFLPckdStrToStr: 1|2 " + string + unpack},
      {"TLOGFLPckdDecToDec", "TLOGFLPckdDecToDec: 1|2 " + decimal + unpack},
      {"Fixed", "TLOGPWFDataToPckdDecimal"},
      {"TLOGPWFDataToPckdStr",
       "TLOGPWFDataToPckdStr ( const PWFData& inputData, unsigned char* target, PWFInt32 size, "
       "EEndian endian )"},
  };
  for (const auto& [member, entries] : cases) {
    Case c;
    c.words = {{"field", "12"}, {"value", "1"}, {"size", "1"}, {"unicode", "1"}};
    EXPECT_EQ(enteredWords([&, member = member] { kMembers.at(member)(c); }), entries);
  }
}

}  // namespace
}  // namespace oxr::test
