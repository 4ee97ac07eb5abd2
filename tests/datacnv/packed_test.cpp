#include <gtest/gtest.h>

#include <string>

#include "harness/table.hpp"

namespace oxr::test {
namespace {

const Members kMembers = {
    {"PckdDecToDec", reader(&DataCnv::PckdDecToDec, placesOf, signOf)},
    {"ValidatePackedDecimal",  // given the field's half bytes
     [](Case& c) {
       const unsigned char* const field = c.bytes("field");
       std::string nibbles = c.word("field");
       for (char& digit : nibbles)
         digit = static_cast<char>(std::stoi(std::string(1, digit), nullptr, 16));
       c.converter().ValidatePackedDecimal(reinterpret_cast<const unsigned char*>(nibbles.data()),
                                           static_cast<int>(nibbles.size()), c.sign(), field);
       return std::string("good");
     }},
    {"PckdDecFromDec", writer(&DataCnv::PckdDecFromDec, placesOf, signOf)},
    {"PckdDecToDbl", reader(&DataCnv::PckdDecToDbl, placesOf, signOf)},
    {"PckdDecToPWFInt64", reader(&DataCnv::PckdDecToPWFInt64, placesOf, signOf)},
    {"PckdDecToInt32", reader(&DataCnv::PckdDecToInt32, placesOf, signOf)},
    {"PckdDecFromDbl", writer(&DataCnv::PckdDecFromDbl, placesOf, signOf)},
    {"PckdDecFromPWFInt64", writer(&DataCnv::PckdDecFromPWFInt64, placesOf, signOf)},
    {"PckdDecFromInt32", writer(&DataCnv::PckdDecFromInt32, placesOf, signOf)},
};

TEST(Packed, Reads) {
  runTable(R"(
    member        field              places     sign ->
    PckdDecToDec  123C               {0,1,2}    LI   way=fast               -> {123,12.3,1.23}
    ~             ~                  {3,5,-1}   LI   way=general            -> {0.123,0.00123,1230}
    ~             123D               {0,2}      TS   way=fast               -> {-123,-1.23}
    ~             123D               -2         LI   way=general            -> -12300
    ~             {000D,00123C,7C}   0          LI   way=fast               -> {-000,00123,7}
    ~             7C                 1          none way=general            -> 0.7
    ~             {123A,123E,123F}   0          none way=fast               -> 123
    ~             123B               0          LI   way=fast               -> 123
    ~             123C               0          LI   packed=unset           -> 123
    ~             3D12               2          LI   packed=little way=fast -> -1.23
    ~             123456789012345C   {0,14}     LI   way=fast               -> {123456789012345,1.23456789012345}
    ~             123456789012345D   0          LI   way=fast               -> -123456789012345
    ~             ~                  1          LI   way=general            -> -12345678901234.5
    ~             12345678901234567D {0,2,14}   LI   way=fast               -> {-12345678901234567,-123456789012345.67,-123.45678901234567}
    ~             12345678901234567C 15         LI   way=general            -> 12.345678901234567
    ~             1234567890123456789012345678901C {0,1} LI way=fast        -> {1234567890123456789012345678901,123456789012345678901234567890.1}
    ~             5D34129078563412   2          LI   packed=little          -> -1234567890123.45
    ~             7C563412907856341200 3        LI   packed=little way=fast -> 0012345678901234.567
    ~             000000000000000000000000000000000F 0 TI                   -> 000000000000000000000000000000000
    ~             12345678901234567890123456789012345D 9 LI                 -> -12345678901234567890123456.789012345
    ~             7C0000000000000000654321 3 LI packed=little               -> 21436500000000000000.007
  )",
           kMembers);
}

TEST(Packed, MinusCountsAsAPosition) {
  runTable(R"(
    member        field  places  sign ->
    PckdDecToDec  123D   {3,4,6} LI   -> {-.123,0.-123,0.00-123}
  )",
           kMembers);
}

TEST(Packed, RefusesBadFields) {
  runTable(R"(
    member        field places sign ->
    PckdDecToDec,ValidatePackedDecimal  1234  0  LI   -> OXR5505: packed decimal, no sign found  | 0x1234
    ~                                   AAA9  1  none -> OXR5505: packed decimal, no sign found  | 0xaaa9
    ~                                   123D  2  none -> OXR5505: packed decimal, negative sign found on unsigned data  | 0x123d
    ~                                   1A3B  9  none -> OXR5505: packed decimal, negative sign found on unsigned data  | 0x1a3b
    ~                                   1A3C  0  LI   -> OXR5505: packed decimal, non-numeric data found | 0x1a3c
    ~                                   F23C  1  none -> OXR5505: packed decimal, non-numeric data found | 0xf23c
    ~                                   12DC  9  none -> OXR5505: packed decimal, non-numeric data found | 0x12dc
    PckdDecToDec  3412  0  LI  packed=little          -> OXR5505: packed decimal, no sign found  | 0x3412
    ~             null  0  LI  size=0                 -> OXR5502: Null input pointer
    ~             123C  0  LI  size={0,-1}            -> OXR5502: Invalid input size: {size}
    ~             00000000000000000A000000000000000C 0 LI -> OXR5505: packed decimal, non-numeric data found | 0x00000000000000000a000000000000000c
    ~             000000000000000000000000000000000D 0 none -> OXR5505: packed decimal, negative sign found on unsigned data  | 0x000000000000000000000000000000000d
    ValidatePackedDecimal  ''  0  LI                  -> OXR5505: packed decimal, no sign found  | 0x
  )",
           kMembers);
}

TEST(Packed, Writes) {
  runTable(R"(
    member          value                     size  places  sign ->
    PckdDecFromDec  123                       {2,4} 0       LI   way=fast               -> {123C,0000123C}
    ~               -123                      2     0       LI   packed=little way=fast -> 3D12
    ~               -123                      2     0       none way=fast               -> 123F
    ~               {+123,-123,1.99}          2     0       TS   way=fast               -> {123C,123D,001C}
    ~               {1.99,12}                 3     2       LI   way=fast               -> {00199C,01200C}
    ~               {-0,-.5}                  1     0       LI   way=fast               -> 0D
    ~               .5                        1     1       LI   way=fast               -> 5C
    ~               -5                        1     {-1,-2} LI   way=fast               -> {0D,0C}
    ~               1234                      3     {0,-2}  LI   way=fast               -> {01234C,00012C}
    ~               123456789012345           8     0       LI   way=fast               -> 123456789012345C
    ~               1                         8     14      LI   way=fast               -> 100000000000000C
    ~               {0,0.000000000000001}     8     15      LI   way=fast               -> {000000000000000C,000000000000001C}
    ~               .000000000000001          8     15      LI   way=fast               -> 000000000000001C
    ~               0.00000000000000123       8     16      LI   way=fast               -> 000000000000012C
    ~               0.30000000000000004       8     1       LI   way=fast               -> 000000000000003C
    ~               1234567890123456          9     0       LI   way=fast               -> 01234567890123456C
    ~               -12345678901234.567       9     2       LI   packed=little way=fast -> 6D4523018967452301
    ~               0000000000000000000123    2     0       LI   way=fast               -> 123C
    ~               -1234567890123456789012345678901   16 {0,-1} LI way=fast           -> {1234567890123456789012345678901D,0123456789012345678901234567890D}
    ~               -12345678901234567890123456789.019 16 2 LI   way=fast               -> 1234567890123456789012345678901D
    ~               1.5                       16    30      LI   packed=little way=fast -> 0C000000000000000000000000000015
    ~               ''                        2     3       LI   way=fast               -> 000C
    ~               null                      2     0       LI   way=general            -> 000C
    ~               .                         1     2       none way=fast               -> 0F
    ~               ' -12 '                   2     0       LI   way=general            -> D12C
    ~               1.2.3                     2     1       LI                          -> 012C
  )",
           kMembers);
}

// The target stays as it is, which the interpreter sees to.
TEST(Packed, RefusesWhatDoesNotFit) {
  const std::string many(100, '7');
  runTable(R"(
    member          value        size places      sign ->
    PckdDecFromDec  1234         2    0           LI             -> OXR5507: decimal | packed decimal | 2 | 1234
    ~               12           2    2           LI             -> OXR5507: decimal | packed decimal | 2 | 12
    ~               1            40   2147483647  LI             -> OXR5507: decimal | packed decimal | 40 | 1
    ~               1234567890123456 8 0          LI             -> OXR5507: decimal | packed decimal | 8 | 1234567890123456
    ~               123456789012345678 9 0        LI             -> OXR5507: decimal | packed decimal | 9 | 123456789012345678
    ~               1            0    0           LI             -> OXR5507: decimal | packed decimal | 0 | 1
    ~               1            -5   0           LI             -> OXR5507: decimal | packed decimal | -5 | 1
    ~               0            2    2147483647  LI             -> 000C
    ~               123          2    -2147483648 LI             -> 000C
    ~               x            2    0           LI target=null -> OXR5502: Null output buffer pointer
  )",
           kMembers);
  runTable(
      "member value size places sign ->\n"
      "PckdDecFromDec " +
          many + " 50 0 LI -> OXR5507: decimal | packed decimal | 50 | " + many + '\n' + "PckdDecFromDec " + many +
          " 51 0 LI -> 07" + many.substr(1) + "C\n",
      kMembers);
}

TEST(Packed, SignNibbles) {
  DataCnv converter = converterFor(500);
  char sign = 0;
  EXPECT_EQ(converter.GetPackedDecimalSign(0, 1, &sign), 0xF);
  EXPECT_EQ(converter.GetPackedDecimalSign(1, 1, &sign), 0xD);
  EXPECT_EQ(converter.GetPackedDecimalSign(1, 0, &sign), 0xC);
  EXPECT_EQ(sign, 0xC);
  EXPECT_EQ(converter.LeftNibble(0xA5) << 8 | converter.RightNibble(0xA5), 0xA05);
}

TEST(Packed, ReadsNumbers) {
  converterFor(37).getDecimalFormatter();  // doubles go the fast way once there is one
  runTable(R"(
    member             field                  places      sign ->
    PckdDecToDbl       123C                   0           LI   way=fast    -> 123
    ~                  123D                   1           LI   way=fast    -> -12.3
    ~                  999C                   3           LI   way=fast    -> 0.999
    ~                  123D                   2           LI   way=fast    -> -1.23
    ~                  123D                   3           LI   way=general -> -0.123
    ~                  123D                   4           LI   way=general -> 0
    ~                  123D                   -2          LI   way=fast    -> -12300
    ~                  0D                     0           LI   way=fast    -> -0
    ~                  1C                     22          LI   way=fast    -> 1e-22
    ~                  1C                     23          LI   way=general -> 1e-23
    ~                  1C                     -22         LI   way=fast    -> 1e+22
    ~                  09007199254740992C     1           LI   way=fast    -> 900719925474099.2
    ~                  09007199254740993C     1           LI   way=general -> 900719925474099.2
    ~                  9223372036854775807C   0           LI   way=fast    -> 9223372036854775808
    ~                  1C                     2147483647  LI               -> 0
    ~                  123D                   0           none             -> OXR5505: packed decimal, negative sign found on unsigned data  | 0x123d
    ~                  null                   0           LI   size=2      -> OXR5502: Null input pointer
    PckdDecToPWFInt64  123D                   1           LI   way=fast    -> -12
    ~                  3D12                   -2          LI   packed=little way=fast -> -12300
    ~                  123456789012345F       0           none way=fast    -> 123456789012345
    ~                  F123456789012345       0           none packed=little -> OXR5505: packed decimal, no sign found  | 0xf123456789012345
    ~                  9223372036854775807C   0           LI   way=fast    -> 9223372036854775807
    ~                  9223372036854775808C   0           LI   way=general -> OXR5506: string | 8-byte integer | 9223372036854775808
    ~                  9223372036854775808D   0           LI   way=fast    -> -9223372036854775808
    ~                  000000000000000000001C 0           LI   way=general -> 1
    ~                  1234567890123456789C   19          LI   way=fast    -> 0
    ~                  1C                     -18         LI   way=fast    -> 1000000000000000000
    ~                  1C                     -19         LI               -> OXR5506: string | 8-byte integer | 10000000000000000000
    ~                  0C                     -2147483648 LI   way=fast    -> 0
    ~                  1C                     2147483647  LI   way=fast    -> 0
    ~                  12AC                   0           LI   way=general -> OXR5505: packed decimal, non-numeric data found | 0x12ac
    PckdDecToInt32     02147483647C           0           LI   way=fast    -> 2147483647
    ~                  02147483648C           0           LI   way=general -> OXR5507 bare: Overflow converting a PWFInt64 to PWFInt32 | integer | 4-byte integer | 4 | 2147483648
    ~                  02147483648D           0           LI   way=fast    -> -2147483648
    ~                  0214748364799C         2           LI   way=fast    -> 2147483647
  )",
           kMembers);
}

TEST(Packed, WritesNumbers) {
  runTable(R"(
    member               value                size places sign ->
    PckdDecFromPWFInt64  -123                 2    0      LI   way=fast               -> 123D
    ~                    123                  4    1      TS   way=fast               -> 0001230C
    ~                    -123                 2    0      none way=fast               -> 123F
    ~                    123456789012345      8    0      LI   way=fast               -> 123456789012345C
    ~                    1234567890123456     9    0      LI   way=general            -> 01234567890123456C
    ~                    -7                   10   0      LI   packed=little way=fast -> 7D000000000000000000
    ~                    1                    8    14     LI   way=fast               -> 100000000000000C
    ~                    0                    8    15     LI   way=general            -> 000000000000000C
    ~                    -9223372036854775808 11   1      LI                          -> 092233720368547758080D
    ~                    1234                 2    0      LI   way=general            -> OXR5507: decimal | packed decimal | 2 | 1234
    ~                    1                    0    0      LI                          -> OXR5507: decimal | packed decimal | 0 | 1
    ~                    1                    2    0      LI   target=null            -> OXR5502: Null output buffer pointer
    PckdDecFromInt32     -2147483648          6    0      LI   way=fast               -> 02147483648D
    ~                    12                   1    -1     LI                          -> 1C
    PckdDecFromDbl       -1.29                2    1      LI                          -> 012D
    ~                    1e15                 9    0      none                        -> 01000000000000000F
  )",
           kMembers);
}

// The general ways are made of other members, which the trace shows.
TEST(Packed, TracesTheMembersItIsMadeOf) {
  const struct {
    const char* member;
    const char* entries;
  } cases[] = {
      {"PckdDecToDec", "PckdDecToDec ValidatePackedDecimal adjustDecimalForString"},
      {"PckdDecToDbl", "PckdDecToDbl PckdDecToDec ValidatePackedDecimal adjustDecimalForString UStringTodouble"},
      {"PckdDecToPWFInt64",
       "PckdDecToPWFInt64 PckdDecToDec ValidatePackedDecimal adjustDecimalForString IntFromDec adjustDecimalForString "
       "UStringToInt64 IntFromInt64 IntToInt64"},
      {"PckdDecToInt32",
       "PckdDecToInt32 PckdDecToDec ValidatePackedDecimal adjustDecimalForString IntFromDec adjustDecimalForString "
       "UStringToInt64 IntFromInt64 IntToInt32"},
      {"PckdDecFromDbl", "PckdDecFromDbl doubleToUString PckdDecFromDec"},
      {"PckdDecFromPWFInt64", "PckdDecFromPWFInt64 IntFromInt64 IntToDec IntToInt64 Int64ToUString PckdDecFromDec"},
      {"PckdDecFromInt32", "PckdDecFromInt32 IntFromInt32 IntToDec IntToInt64 Int64ToUString PckdDecFromDec"},
  };
  for (const auto& [member, entries] : cases) {
    Case c;
    c.words = {{"field", "1C"}, {"value", "1"}, {"size", "1"}};
    std::string found;
    for (const std::string& line : enteredMembers([&, member = member] { kMembers.at(member)(c); }))
      if (std::string(" " + std::string(entries) + " ").find(" " + line + " ") != std::string::npos)
        found += (found.empty() ? "" : " ") + line;
    EXPECT_EQ(found, entries) << member;
  }
}

}  // namespace
}  // namespace oxr::test
