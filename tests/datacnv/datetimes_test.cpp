#include <gtest/gtest.h>

#include "harness/datetimes.hpp"

namespace oxr::test {
namespace {

const Members kMembers = {
    {"StrToDateTime",
     [](Case& c) { return shown(c.converter().StrToDateTime(c.text("text"), patternOf(c), c.number("length", -1))); }},
    {"StrFromDateTime",
     [](Case& c) { return shown(c.converter().StrFromDateTime(dateTimeOf(c), patternOf(c), c.text("type", "null"))); }},
    {"BinaryToDateTime",
     [](Case& c) {
       const unsigned char* const field = c.bytes("text");
       return shown(c.converter().BinaryToDateTime(field, c.sizeOf("text"), patternOf(c)));
     }},
    {"BinaryFromDateTime",
     [](Case& c) {
       c.converter().BinaryFromDateTime(dateTimeOf(c), c.target(4), 4, patternOf(c));
       return c.written(4);
     }},
    {"SecondsToDateTime",
     [](Case& c) { return shown(c.converter().SecondsToDateTime(c.number("text"), patternOf(c))); }},
    {"MilliSecondsToDateTime",
     [](Case& c) { return shown(c.converter().MilliSecondsToDateTime(c.number<long>("text"), patternOf(c))); }},
    {"SecondsFromDateTime",
     [](Case& c) { return shown(c.converter().SecondsFromDateTime(dateTimeOf(c), patternOf(c))); }},
    {"MilliSecondsFromDateTime",
     [](Case& c) { return shown(c.converter().MilliSecondsFromDateTime(dateTimeOf(c), patternOf(c))); }},
    {"PckdDecToDateTime",
     [](Case& c) {
       const unsigned char* const field = c.bytes("text");
       return shown(
           c.converter().PckdDecToDateTime(field, c.sizeOf("text"), c.number("places"), c.sign(), patternOf(c)));
     }},
    {"PckdDecFromDateTime",
     [](Case& c) {
       const int size = c.number("size");
       c.converter().PckdDecFromDateTime(dateTimeOf(c), c.target(size), size, patternOf(c), c.number("places"),
                                         c.sign());
       return c.written(size);
     }},
};

TEST(DateTimes, AreReadByThePattern) {
  runTable(R"(
    member                  pattern        text ->
    StrToDateTime           yyyy-MM-dd     2001-02-03            -> 2001-02-03 00:00:00.000000
    ~                       yyyy-MM-dd     2001-02-03xyz length=10 -> 2001-02-03 00:00:00.000000
    ~                       {null,''}      2001 length={2,-1}    -> {KelParserException OXR5563: 20,KelParserException OXR5563: 20,KelParserException OXR5563: 2001,KelParserException OXR5563: 2001}
    ~                       {null,''}      null                  -> KelParserException OXR5563:
    BinaryToDateTime        yyyyMM         D10700000200          -> 2001-02-01 00:00:00.000000
    SecondsToDateTime       ''             -1                    -> 1969-12-31 23:59:59.000000
    MilliSecondsToDateTime  ''             4294967297            -> 1970-02-19 17:02:47.297000
    PckdDecToDateTime       yyyyMMdd       020010203C            -> 2001-02-03 00:00:00.000000
    ~                       yyyyMMdd       120010203C            -> 1200-10-20 00:00:00.000000
    ~                       yyyyMMddX      00002010203C          -> KelParserException OXR5540: 002010203 | yyyyMMddX | 0
    ~                       yyyyMMdd.S     00200102037C places=1 -> 2001-02-03 00:00:00.700000
    ~                       HHmmddMMyyyy   503022001C            -> 2001-02-03 00:05:00.000000
    ~                       {null,''}      020010203C            -> KelParserException OXR5563: 20010203
    ~                       yyyyMMdd       null size=2           -> OXR5502: Null input pointer
  )",
           kMembers);
}

TEST(DateTimes, AreWrittenByThePattern) {
  runTable(R"(
    member                   pattern  value ->
    StrFromDateTime          yyyy`T`  2001                    -> STRING 2001T
    ~                        {null,''} 2001/2/3/4/5/6         -> STRING 2001-02-03 04:05:06
    ~                        null     2001/2/3/4/5/6/789000   -> STRING 2001-02-03 04:05:06.789
    ~                        null     {2001/2/3,2001/2/3/4/5} -> STRING 2001-02-03
    ~                        null     {u/u/u/4/5/6,2001/2/u/4/5/6} -> STRING 04:05:06
    ~                        null     {u/u/u/u/u/u/1,2001/2/u/4/5,u} -> OXR5502: Datetime does not match any standard template.
    ~                        I        2001/2/3 type=date      -> STRING 2001-02-03
    BinaryFromDateTime       MMdd     2001/2/3                -> 02000300
    SecondsFromDateTime      ''       1970/1/1/0/1            -> 60
    MilliSecondsFromDateTime ''       1970/1/1/0/1            -> 60000
    PckdDecFromDateTime      yyyyMMdd 2001/2/3 size=5         -> 020010203F
    ~                        yyyyMMdd 2001/2/3 size=4         -> OXR5507: decimal | packed decimal | 4 | 20010203
    ~                        ss.SSS   u/u/u/u/u/6/789000 size=3 places=2 -> 00678F
    ~                        null     u size=3                -> OXR5502: Datetime does not match any standard template.
  )",
           kMembers);
}

// The properties are those of the first use, and empty texts are none.
TEST(DateTimes, FormatterIsMadeOnceWithTheProperties) {
  DataCnv converter = converterFor(37);
  const KelWstring zone = u"Etc/GMT-5"_k, empty, pattern = u"yyyy"_k, text = u"2001"_k, week = u"Monday"_k;
  const auto idOfZone = [&] {
    const PWFDateTime value = converter.StrToDateTime(text.characters(), pattern.characters(), -1);
    return value.iTimeZone != nullptr ? toUtf8(value.iTimeZone->getID()) : "none";
  };
  converter.setDateTimeProperties(53, zone.characters(), week.characters(), 4, false, true);
  EXPECT_EQ(idOfZone(), "Etc/GMT-5");
  converter.setDateTimeProperties(53, empty.characters(), empty.characters(), 0, true, false);
  EXPECT_EQ(idOfZone(), "Etc/GMT-5");
}

TEST(DateTimes, TraceShowsTheFields) {
  const KelWstring pattern = u"yyyy-MM-ddZ"_k, text = u"2001-02-03+0000"_k;
  const std::string lines = tracedAt(4, [&] {
    DataCnv converter = converterFor(37);
    converter.StrToDateTime(text.characters(), pattern.characters(), -1);
  });
  const std::string zone = "DataCnv::StrToDateTime: dtOut.iTimeZone|";
  std::string facts;
  std::istringstream all(lines);
  for (std::string line; std::getline(all, line);)
    if (line.find("dtOut") != line.npos || line.find("Deleting") != line.npos)
      facts += line.starts_with(zone) ? " zone" : ' ' + line.substr(line.find(": ") + 2);
  EXPECT_EQ(facts,
            " dtOut._year|2001 dtOut._month|2 dtOut._day|3 dtOut._hour|0 dtOut._minute|0 dtOut._second|0 "
            "dtOut._subsecond|0 dtOut._scale|6 zone dtOut._hasLocalTimezone|1 dtOut.iTimeZoneFormatControl|0 "
            "Deleting dtFormatter");
}

}  // namespace
}  // namespace oxr::test
