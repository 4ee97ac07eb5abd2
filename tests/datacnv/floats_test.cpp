#include <gtest/gtest.h>

#include <string>

#include "fuzz/datacnv/floats_check.hpp"
#include "harness/rows.hpp"
#include "harness/table.hpp"

namespace oxr::test {
namespace {

const Members kMembers = {
    {"FltToDbl", reader(&DataCnv::FltToDbl)},
    {"FltToDec", reader(&DataCnv::FltToDec, placesOf)},
    {"FltFromDbl", writer(&DataCnv::FltFromDbl)},
    {"FltFromDec", writer(&DataCnv::FltFromDec, placesOf)},
    {"both",  // a field read, and its number written again
     [](Case& c) {
       const double value = c.converter().FltToDbl(c.bytes("field"), c.sizeOf("field"));
       c.converter().FltFromDbl(value, c.target(c.sizeOf("field")), c.sizeOf("field"));
       return shown(value) + ' ' + c.written(c.sizeOf("field"));
     }},
};

void run(std::string_view table) {
  runTable(table, kMembers);
}

// Formats: 1 is IEEE, most significant byte first, as are all without a name; 2 the other order; 3 hexadecimal.
TEST(Floats, ReadAndWriteEachFormat) {
  run(R"(
    member field               float ->
    both   3F800000            {1,4} way=fast -> 1 3F800000
    ~      0000803F            2     way=fast -> 1 0000803F
    ~      {C1100000,80000000} 3     way=fast -> {-1 C1100000,-0 80000000}
    ~      000000000000F0BF    2     way=fast -> -1 000000000000F0BF
    FltFromDbl -                   {1,2} size=4 value=-1e300 way=fast -> {FF800000,000080FF}
    ~          -                   3     size=4 value={1e300,-inf} way=fast -> {61100000,E1100000}
    ~          -                   3     size=8 value={-1e300,nan} way=fast -> {FFFFFFFFFFFFFFFF,7FFFFFFFFFFFFFFF}
    ~          -                   1     size=4 value={0x1.000001p0,0x1.0000018p0} -> {3F800000,3F800001}
  )");
}

TEST(Floats, RefuseNullThenSize) {
  run(R"(
    member                size ->
    FltToDbl 0 field=null -> OXR5502: Null input pointer passed into DataCnv::FltToDbl
    FltToDec              0                      field=null             -> OXR5502: Null input pointer
    FltFromDec            0                      value=null target=null -> OXR5502: Null input pointer
    FltFromDbl,FltFromDec 0                      value=1 target=null    -> OXR5502: Null output buffer pointer
    FltToDbl,FltToDec     {-2147483648,-4,0}                            -> OXR5502: Invalid input size: {size}
    FltFromDbl,FltFromDec {-2147483648,-4,0}     value=1                -> OXR5502: Invalid output buffer size: {size}
    FltToDbl,FltToDec,FltFromDbl,FltFromDec {1,2,3,5,6,7,9,16,260} value=1 -> OXR5502: Invalid float size: {size}
  )");
}

// A minus counts as a position where a point is placed. The last scales are ones that no text could be written out for.
TEST(Floats, ReadAndWriteDecimals) {
  run(R"(
    member     field    places                 size float ->
    FltToDec   41F00000 {0,1,-2}               4    3 -> {15.,1.5,1500}
    ~          C1180000 {0,2}                  4    3 -> {-1.5,0.-15}
    ~          3DCCCCCD 0                      4    1 -> 0.10000000149011612
    FltFromDec -        1                      4    3 value=1.5  -> 41F00000
    ~          -        -1                     4    3 value=15   -> 41180000
    ~          -        0                      4    2 value=1e2  -> 0000C842
    ~          -        0                      4    3 value=-0.0 -> 80000000
    ~          -        0                      8    3 value=0.1  -> 401999999999999A
    ~          -        2147483647             8    3 value=-1   -> FFFFFFFFFFFFFFFF
    ~          -        -2147483648            4    3 value=1    -> 00000000
    ~          -        0                      4    3 value=x    -> OXR5505: string | x
  )");
}

TEST(Floats, TraceTheMembersTheyAreMadeOf) {
  for (const std::string entries :
       {"FltToDbl", "FltFromDbl", "FltToDec FltToDbl doubleToUString adjustDecimalForString",
        "FltFromDec adjustDecimalForString UStringTodouble FltFromDbl"}) {
    Case c;
    c.words = {{"field", "41100000"}, {"value", "1"}, {"size", "4"}};
    EXPECT_EQ(enteredWords([&] { kMembers.at(entries.substr(0, entries.find(' ')))(c); }), entries);
  }
}

// Pairs of bit patterns, 8 digits of a float or 16 of a double, through the routine of their width.
void expectConverted(std::string_view pairs, void (*ofFloat)(float*, float*),
                     void (*ofDouble)(double*, double*, EEndian)) {
  for (const Row& c : rows(pairs)) {
    const std::uint64_t bits = std::stoull(c[0], nullptr, 16);
    EXPECT_EQ(c[0].size() == 8 ? fuzz::convertedBits(ofFloat, static_cast<std::uint32_t>(bits))
                               : fuzz::convertedBits(ofDouble, bits, eEndianLittle),
              std::stoull(c[1], nullptr, 16))
        << shown(c);
  }
}

// The last row of reads has the halving that rounds, its carry into the high word, and the one that carries all the way
// up.
TEST(HexFloat, ConvertsKnownPatterns) {
  expectConverted(
      "41100000 3F800000; 7FFFFFFF 7F7FFFFF; 80100000 80000000; 41000001 35800000; A1400001 80800002; "
      "4110000000000000 3FF0000000000000; 0000000012345678 0000000012345678; 4100000000000001 3FF0000000000001; "
      "412000000000000F 4000000000000008; 41200001FFFFFFFF 4000000180000000; 41FFFFFFFFFFFFFF 4030000040000000",
      DataCnv::ConvertFloatHFPtoIEEE, DataCnv::ConvertDoubleHFPtoIEEE);
  expectConverted(
      "3F800000 41100000; BDCCCCCD C0199999; 7F800000 61100000; FFC00000 E1180000; 00000001 21200000; "
      "3FF0000000000000 4110000000000000; 000000000000BEEF 000000000000BEEF; 7FF0000000000000 7FFFFFFFFFFFFFFF",
      DataCnv::ConvertFloatIEEEtoHFP, DataCnv::ConvertDoubleIEEEtoHFP);
}

}  // namespace
}  // namespace oxr::test
