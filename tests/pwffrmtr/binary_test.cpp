#include <gtest/gtest.h>

#include "harness/datetimes.hpp"

namespace oxr::test {
namespace {

// All whole fields: "2001/2/31/24/60/75".
std::string fieldsOf(const PWFDateTime& value) {
  std::string text = std::to_string(value._year);
  for (const PWFInt32 field : {value._month, value._day, value._hour, value._minute, value._second})
    text += '/' + std::to_string(field);
  return text;
}

const Members kMembers = {
    {"parse",
     [](Case& c) {
       const unsigned char* const data = c.bytes("field");
       return shown(formatterOf(c).parseBinary(data, c.sizeOf("field"), patternOf(c)));
     }},
    {"format",
     [](Case& c) {
       const int size = c.number("size");
       formatterOf(c).formatBinary(dateTimeOf(c), c.target(size), size, patternOf(c));
       return c.written(size);
     }},
    // What a value becomes on its way through fields of four bytes.
    {"carry",
     [](Case& c) {
       unsigned char bytes[24];
       const KelWstring pattern = u"yyyyMMMMddddHHHHmmmmssss"_k;
       PWFDateTimeFormatter formatter(c.flag("lenient", true), nullptr, 53, nullptr, 0, false);
       formatter.formatBinary(dateTimeOf(c), bytes, sizeof bytes, pattern.characters());
       return fieldsOf(formatter.parseBinary(bytes, sizeof bytes, pattern.characters()));
     }},
    {"milliseconds",
     [](Case& c) { return shown(formatterOf(c).parseMilliSeconds(c.number<long>("value"), c.text("epoch"))); }},
    {"seconds", [](Case& c) { return shown(formatterOf(c).parseSeconds(c.number("value"), c.text("epoch"))); }},
    {"toMilliseconds",
     [](Case& c) { return shown(formatterOf(c).formatMilliSeconds(dateTimeOf(c), c.text("epoch"))); }},
    {"toSeconds", [](Case& c) { return shown(formatterOf(c).formatSeconds(dateTimeOf(c), c.text("epoch"))); }},
};

TEST(BinaryDateTimes, Reads) {
  runTable(R"(
    member  pattern          field ->
    parse   {'',+5}          ''                           -> 1970-01-01 00:00:00.000000
    ~       yyyyMMdHmsSSSS   D107000002000304050615030000 -> 2001-02-03 04:05:06.000789
    ~       yyyy-1900MMdd    3D0F000002000300             -> 2001-02-03 00:00:00.000000
    ~       yyyy+1900        65000000                     -> 2001-01-01 00:00:00.000000
    ~       yyyy+2147483648  FFFFFFFF                     -> 2147483647-01-01 00:00:00.000000
    ~       XXd              00FFFF                       -> 1970-01--1 00:00:00.000000
    ~       MM               FF7F                         -> 1970-32767-01 00:00:00.000000
    ~       {yyy,q,dq}       0102030405                   -> OXR5527: 3
  )",
           kMembers);
}

// A number before the first letter belongs to it, and a letter after its own number does not count.
TEST(BinaryDateTimes, Scanner) {
  runTable(R"(
    member  pattern             field ->
    parse   {d-d,-3d,d+3d,d+12} 0A              -> {1970-01-10 00:00:00.000000,1970-01-07 00:00:00.000000,1970-01-13 00:00:00.000000,1970-01-22 00:00:00.000000}
    ~       d+3dd               0A0B            -> 1970-01-2829 00:00:00.000000
    ~       d+١٢                0A              -> 1970-01-22 00:00:00.000000
    ~       {d+1-2,Źy}          0A              -> OXR5527: 3
    format  Źy                  '' value=2001 size=2 -> D107
  )",
           kMembers);
}

// Such a field must be a good one where it begins within the data, and is left as it was.
TEST(BinaryDateTimes, FieldsBeyondTheData) {
  runTable(R"(
    member  pattern  field    size ->
    parse   MMdd     02000300 {0,1,2,3} -> {1970-01-01 00:00:00.000000,1970-01-01 00:00:00.000000,1970-02-01 00:00:00.000000,1970-02-01 00:00:00.000000}
    ~       MMqq     02000300 {2,1}     -> {OXR5527: 3,1970-01-01 00:00:00.000000}
    ~       XXXdddq  02000300 2         -> 1970-01-01 00:00:00.000000
  )",
           kMembers);
}

TEST(BinaryDateTimes, Writes) {
  runTable(R"(
    member  pattern          value            size ->
    format  yyyyMMdHmsSSSS   2001/2/3/4/5/6/7 16   -> D1070000020003040506070000000000
    ~       yyyy+1900        2001             4    -> 65000000
    ~       {XXX,X+2,XXXX-1} 2001             4    -> {00000000,FE000000,01000000}
    ~       {d,dd}           1/1/-129         2    -> {7F00,7FFF}
    ~       yyyy             u                4    -> 00000080
    ~       {yyy,XXyyy}      2001             8    touched=1 -> OXR5528: 3
    ~       q                2001             8    touched=1 -> OXR5527: 3
    ~       yyyyMM           2001/2           5    touched=1 -> OXR5528: 3 | year = 2001, month = 2, day = -2147483648, hour = -2147483648, minute = -2147483648, second = -2147483648, subsecond = -2147483648, scale = -2147483648, timezone = 0, localTimeZone = 0, timezone format control = 0 | yyyyMM | 4
  )",
           kMembers);
}

TEST(BinaryDateTimes, LenientOnesCarryOver) {
  runTable(R"(
    member  value ->
    carry   2001/2/31/24/60/75                                lenient=0 -> 2001/2/31/24/60/75
    ~       2001/2/31/0/0/75                                  -> 2001/3/3/0/1/15
    ~       {2004/2/31/0/0/0,1900/2/29/-1/0/0,2000/2/29/0/0/0} -> {2004/3/2/0/0/0,1900/3/1/-1/0/0,2000/2/29/0/0/0}
    ~       {2001/13/1/0/0/0,2001/-11/1/0/0/0,2001/3/0/0/0/0} -> {2002/1/1/0/0/0,2000/1/1/0/0/0,2001/2/28/0/0/0}
    ~       {2001/0/0/25/61/-5,1999/12/31/23/59/60}           -> {2000/12/1/2/1/-5,2000/1/1/0/0/0}
    ~       {2000/1/146098/0/0/0,2000/1/-146097/0/0/0}        -> {2400/1/1/0/0/0,1599/12/31/0/0/0}
    ~       {2000/1/2147483647/0/0/0,2000/1/-2147483648/0/0/0} -> {5881610/7/10/0/0/0,-5877611/6/21/0/0/0}
    ~       {2000/-2147483648/1/0/0/0,-1/1/-365/0/0/0}        -> {-178954971/4/1/0/0/0,-3/12/31/0/0/0}
    ~       2000/2147483647/1/2147483647/2147483647/2147483647 -> 179208105/5/20/12/21/7
    ~       2147483647/12/31/24/0/0                           -> -2147483648/1/1/0/0/0
  )",
           kMembers);
}

TEST(Epochs, Read) {
  runTable(R"(
    member       value              epoch ->
    milliseconds {0,-1}             ''                       -> {1970-01-01 00:00:00.000000,1969-12-31 23:59:59.999000}
    ~            253402300799999    ''                       -> 9999-12-31 23:59:59.999000
    ~            86400001           2001-02-03T04:05+06:00   -> 2001-02-04 04:05:00.001000
    ~            -1                 '2001-03-01T00:00 Z'     -> OXR5516: 2001-03-01T00:00 Z
    ~            -1                 '2001-03-01T00:00 -06:00' -> 2001-02-28 23:59:59.999000
    ~            0                  2001-02-03T04:05+0600    -> OXR5516: 2001-02-03T04:05+0600
    ~            0                  2001-02-30T04:05+06:00   -> OXR5516: 2001-02-30T04:05+06:00
    ~            {9223372036854775,-9223372036854775,253402300800000} '' -> KelRecoverableException OXR2140 bare: Date or time outside possible range | 1970-01-01 00:00:00.000000
    ~            {9223372036854776,-9223372036854776} ''     -> OXR5561: 1970-01-01 00:00:00.000000 | {value}
    ~            9223372036854776   x                        -> OXR5561: x | 9223372036854776
    seconds      {-1,2147483647}    ''                       -> {1969-12-31 23:59:59.000000,2038-01-19 03:14:07.000000}
  )",
           kMembers);
  PWFDateTimeFormatter formatter(false, nullptr, 53, nullptr, 0, false);
  for (const char* const epoch : {"2001-02-03T04:05+06:00", "2002-02-03T04:05 +06:00", "", "2001-02-03T04:05+06:00"})
    EXPECT_EQ(formatter.parseSeconds(0, k(epoch).characters())._year, *epoch == 0 ? 1970 : std::stoi(epoch));
}

// Days and times of day are subtracted apart, and of the latter the microseconds are cut.
TEST(Epochs, Write) {
  runTable(R"(
    member         value                   epoch ->
    toMilliseconds {u,2000/1/1}            ''                     -> {0,946684800000}
    ~              1969/12/31/23/59/59/999500 ''                  -> -1
    ~              2001/2/3/4/4/59/999500  2001-02-03T04:05+06:00 -> 0
    ~              2001/2/3/4/4/59/998999  2001-02-03T04:05+06:00 -> -1
    ~              2001/2/3/4/5/0/1999/3   2001-02-03T04:05+06:00 -> 1
    ~              1/1/1                   9999-12-31T00:00+06:00 -> -315537811200000
    ~              2001/2/30               ''                     -> KelRecoverableException OXR2140 bare: Date or time outside possible range | 2001-02-30 00:00:00.000000
    ~              2001/2/3                x                      -> OXR5516: x
    toSeconds      {2038/1/19/3/14/7,1901/12/13/20/45/52} ''      -> {2147483647,-2147483648}
    ~              {2038/1/19/3/14/8,1901/12/13/20/45/51} ''      -> OXR5559: 1970-01-01 00:00:00.000000
    ~              9999/1/1                2001-02-03T04:05+06:00 -> OXR5559: 2001-02-03T04:05+06:00
  )",
           kMembers);
}

}  // namespace
}  // namespace oxr::test
