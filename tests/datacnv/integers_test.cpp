#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "harness/table.hpp"

namespace oxr::test {
namespace {

const Members kMembers = {
    {"IntToInt64", reader(&DataCnv::IntToInt64, signOf)},
    {"IntToInt32", reader(&DataCnv::IntToInt32, signOf)},
    {"UIntToUInt64", reader(&DataCnv::UIntToUInt64)},
    {"IntToDec", reader(&DataCnv::IntToDec, placesOf)},
    {"IntToDbl", reader(&DataCnv::IntToDbl, placesOf, signOf)},
    {"IntFromInt64", writer(&DataCnv::IntFromInt64, signOf)},
    {"IntFromInt32", writer(&DataCnv::IntFromInt32, signOf)},
    {"UIntFromUInt32", writer(&DataCnv::UIntFromUInt32)},
    {"IntFromDbl", writer(&DataCnv::IntFromDbl, signOf, placesOf)},
    {"IntFromDec", writer(&DataCnv::IntFromDec, placesOf)},
};

// Runs a table; failures that many cases have go by a few words.
void run(std::string table) {
  table = std::regex_replace(table, std::regex("-> bad size"), "-> OXR5502: Invalid integer size: {size}");
  table = std::regex_replace(table, std::regex("-> overflow (\\w+ to \\w+)( unsigned)?"),
                             "-> OXR5507 bare: Overflow converting a $1 | integer | {size}-byte$2 integer | {size}");
  runTable(table, kMembers);
}

// Only order 1 is little, and only ESign 1 is signed. The minus of a decimal counts as a position. Each step of a scale
// rounds.
TEST(Integers, Read) {
  run(R"(
    member       field            sign ->
    IntToInt64   FFFE             LI   way=fast order={big,little} -> {-2,-257}
    ~            FFFE             TI   way=fast order=unset        -> 65534
    IntToInt32   8000             LI   way=fast order=-1           -> -32768
    UIntToUInt64 EFCDAB8967452301 none way=fast order=little       -> 81985529216486895
    IntToDec     04D2             none places={2,5}                -> {12.34,0.01234}
    ~            FB               none places={2,-2}               -> {0.-5,-500}
    IntToDbl     FF               TI   places=1                    -> 25.5
    ~            07               LI   places=3                    -> 0.006999999999999999
    ~            FB               LI   places=-2                   -> -500
    ~            8000             LI   places={2147483647,-2147483648} -> {-0,-inf}
  )");
}

TEST(Integers, RefuseNullThenSizeThenOverflow) {
  run(R"(
    member     size ->
    IntToInt64 3                     field=null  -> OXR5502: Null input pointer passed into DataCnv::IntToInt64
    IntToInt32 3  field=null  -> OXR5502: DataCnv::IntToInt32 called with a Null input pointer for the source.
    UIntToUInt64,IntToDec,IntToDbl 0 field=null  -> OXR5502: Null input pointer
    IntFromDec 0          value=null target=null -> OXR5502: Null input pointer
    IntFromInt64,IntFromInt32,UIntFromUInt32,IntFromDbl,IntFromDec 0 target=null -> OXR5502: Null output buffer pointer
    IntToDec,IntToDbl {-2147483648,0}            -> OXR5502: Invalid input size: {size}
    IntFromDec        {-2147483648,0}            -> OXR5502: Invalid output buffer size: {size}
    IntToInt64,IntToInt32,UIntToUInt64                             {-2147483648,-8,0,3,9,260} -> bad size
    IntFromInt64,IntFromInt32,UIntFromUInt32,IntFromDbl            {-2147483648,-8,0,5,9,260} -> bad size
    IntToDec,IntToDbl,IntFromDec                                   {6,7,16}              -> bad size
    IntToInt32,IntFromInt32,UIntFromUInt32                         8                     -> bad size
    IntToInt64 8 field=FFFFFFFFFFFFFFFF sign={none,TI} -> overflow PWFUInt64 to PWFInt64 | -1
    IntToInt32 4 field=80000000         sign={none,TS} -> overflow PWFUInt32 to PWFInt32 | -2147483648
  )");
}

// What does not fit is told as a signed value of its width. Of doubles every ESign but none is signed. Bounds are
// tested before the fraction falls away; each step of a scale rounds. Decimals have no ESign.
TEST(Integers, Write) {
  run(R"(
    member     value                size places      sign ->
    IntFromInt64   {-32768,32767}             2 0 LI   way=fast -> {8000,7FFF}
    ~              81985529216486895          8 0 LI   way=fast order=little -> EFCDAB8967452301
    IntFromInt32,UIntFromUInt32 258           4 0 none way=fast order=little -> 02010000
    IntFromInt64   {-129,128}                 1 0 LI   -> overflow PWFInt64 to PWFInt8 | {value}
    ~              {-1,256}                   1 0 none -> overflow PWFInt64 to PWFUInt8 | {value}
    ~              {-32769,32768}             2 0 LI   -> overflow PWFInt64 to PWFInt16 | {value}
    ~              {-1,65536}                 2 0 TI   -> overflow PWFInt64 to PWFUInt16 | {value}
    ~              {-2147483649,2147483648}   4 0 LI   -> overflow PWFInt64 to PWFInt32 | {value}
    ~              {-1,4294967296}            4 0 none -> overflow PWFInt64 to PWFUInt32 | {value}
    ~              {-1,-9223372036854775808}  8 0 -1   -> overflow PWFInt64 to PWFUInt64 | {value}
    IntFromInt32   {-1,-2147483648}           4 0 TS   -> overflow PWFInt32 to PWFUInt32 | {value}
    UIntFromUInt32 4294967295                 2 0 none -> overflow PWFUInt32 to PWFUInt16 unsigned | -1
    IntFromDbl 1.5                  2    2           LI   -> 0096
    ~          {126.9,-1}           1    0           TI   -> {7E,FF}
    ~          -19                  4    -1          LI   order=little -> FFFFFFFF
    ~          0.011                2    3           LI   -> 000A
    ~          {0x1p63,-0x1p63}     8    0           LI   -> {7FFFFFFFFFFFFFFF,8000000000000000}
    ~          {0x1p63,0x1p64}      8    0           none -> {8000000000000000,FFFFFFFFFFFFFFFF}
    ~          1e300                8    -2147483648 none -> 0000000000000000
    ~          {127.9,-128.5}       1    0           LI   -> OXR5506: double float | signed 1-byte integer | {value}
    ~          {-0.5,255.9,nan}     1    0           none -> OXR5506: double float | unsigned 1-byte integer | {value}
    ~          {1e+19,-1e+19,nan}   8    0           LI   -> OXR5506: double float | signed 8-byte integer | {value}
    ~          {2e+19,-1,-inf}      8    0           none -> OXR5506: double float | unsigned 8-byte integer | {value}
    ~          {1e-300,inf}         8    2147483647  LI   -> OXR5506: double float | signed 8-byte integer | inf
    IntFromDec 1.99                 2    {0,2}       -    -> {0001,00C7}
    ~          -12.99               2    0           -    order=little -> F4FF
    ~          ' 5 '                1    0           -    -> 05
    ~          {-.5,000000000000000000000005} 1 0    -    -> {00,05}
    ~          -9223372036854775808 8    0           -    -> 8000000000000000
    ~          1999                 1    {-3,-2147483648} - -> {01,00}
    ~          {200,-129}           1    0           -    -> overflow PWFInt64 to PWFInt8 | {value}
    ~          {--5,x}              1    0           -    -> OXR5505: string | {value}
    ~          1                    8    19          -    -> OXR5506: string | 8-byte integer | 10000000000000000000
    ~ -1.5 1 2147483647 - -> OXR5506: string | 8-byte integer | -15)" +
      std::string(65539, '0'));
}

TEST(Integers, TraceTheMembersTheyAreMadeOf) {
  for (const std::string entries :
       {"IntToInt64", "IntToInt32", "UIntToUInt64", "IntFromInt64", "IntFromInt32", "UIntFromUInt32", "IntFromDbl",
        "IntToDbl UIntToUInt64", "IntToDec IntToInt64 Int64ToUString adjustDecimalForString"}) {
    Case c;
    c.words = {{"field", "01"}, {"value", "1"}, {"size", "1"}};
    EXPECT_EQ(enteredWords([&] { kMembers.at(entries.substr(0, entries.find(' ')))(c); }), entries);
  }
}

// Swaps `length` of the bytes in place, from one index to another; -1 is a null pointer.
std::string swapped(Case& c) {
  std::string bytes = c.word("bytes");
  const auto at = [&](const char* index) {
    return c.number(index) < 0 ? nullptr : reinterpret_cast<unsigned char*>(bytes.data()) + c.number(index);
  };
  DataCnv::SwapEnds(at("to"), at("from"), c.number("length"));
  return bytes;
}

// Source and target may be one buffer. Failures go without the usual first insert.
TEST(SwapEnds, MirrorsInPlaceAndRefusesInOrder) {
  runTable(R"(
    member   bytes    from to length ->
    SwapEnds 123...   0    3  3      -> 123321
    ~        12345    0    0  5      -> 12321
    ~        12345678 0    1  7      -> 12344321
    ~        1        -1   -1 0      -> OXR5502 bare: Null input pointer
    ~        1        0    -1 0      -> OXR5502 bare: Null output buffer pointer
    ~        1        0    0  {0,-3} -> OXR5502 bare: Invalid input length: {length}
  )",
           {{"SwapEnds", swapped}});
  try {
    DataCnv::SwapEnds(nullptr, nullptr, 0);
  } catch (const KelConversionException& e) {
    EXPECT_STREQ(e.fileName(), "usr/include/dataconv");
  }
}

}  // namespace
}  // namespace oxr::test
