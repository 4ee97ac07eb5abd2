#include <gtest/gtest.h>

#include "harness/datetimes.hpp"
#include "harness/headers.hpp"

namespace oxr::test {
namespace {

const Members kMembers = {
    {"parse",
     [](Case& c) {
       PWFDateTimeFormatter formatter = formatterOf(c);
       const KelDate today = formatter.getCurrentDate();
       const unsigned short *const text = c.text("text"), *const pattern = patternOf(c);
       return shown(formatter.parse(text, lengthOf(text), pattern, lengthOf(pattern)), today);
     }},
    {"format",
     [](Case& c) {
       const unsigned short* const pattern = patternOf(c);
       return shown(formatterOf(c).format(dateTimeOf(c), pattern, lengthOf(pattern), c.text("type", "null")));
     }},
};

TEST(Formatter, ObjectsCarryTheirHeader) {
  const unsigned short* const none = nullptr;
  EXPECT_EQ(headerOfA<PWFDateTimeFormatter>("QVDF", false, none, 53, none, 0, false), "QVDF 32 224 / 0OXR QVDF 32 224");
}

TEST(Formatter, RefusesOffsetsThatAreNone) {
  runTable(R"(
    member text pattern ->
    parse  2001 yyyy    default={+15,-x} -> OXR5529: {default}
  )",
           kMembers);
}

TEST(Parse, Zones) {
  runTable(R"(
    member text                        pattern ->
    parse  2001-02-03T04:05:06Z        I                  -> 2001-02-03 04:05:06.000000 Etc/GMT-0 own zulu
    ~      2001-02-03T04:05:06+00:00   {I,Tx}             -> 2001-02-03 04:05:06.000000 Etc/GMT-0 own zeroes
    ~      ~                           I follow=0         -> 2001-02-03 04:05:06.000000 Etc/GMT-0 own
    ~      2001-02-03T04:05:06,7-05:30 I                  -> 2001-02-03 04:05:06.700000 GMT-05:30 own
    ~      12:30:00                    I                  -> today 12:30:00.000000
    ~      ~                           ~  default={+05:30,-0,Europe/Paris} -> {today 12:30:00.000000 Asia/Calcutta,today 12:30:00.000000 Etc/GMT,today 12:30:00.000000 Europe/Paris}
    ~      2001-02-03                  yyyy-MM-dd default={0,01:00,''} -> 2001-02-03 00:00:00.000000
    ~      2001-02-03{Z,z}             yyyy-MM-dd`{Z,z}` default=+01   -> 2001-02-03 00:00:00.000000 own
    ~      '2001-02-03 GMT'            'yyyy-MM-dd z'     -> 2001-02-03 00:00:00.000000 Etc/GMT-0 own zeroes
  )",
           kMembers);
}

// The pattern that a failure shows is the one gone by. In format() the "U" stands at the second place.
TEST(Parse, ModifierAtTheEnd) {
  runTable(R"(
    member text               pattern ->
    parse  --02-30T04:05Z     {IU,TxU}    -> KelParserException OXR5540: {text} | --MM-dd'T'HH:mmZZZU | 1
    ~      ~                  {I,IUx}     -> KelParserException OXR5540: {text} | --MM-dd'T'HH:mmZZZ | 1
    ~      --02-30T04:05      IU          -> KelParserException OXR5540: {text} | --MM-dd'T'HH:mm | 1
    ~      2001-02-03Z        yyyy-MM-ddZU -> 2001-02-03 00:00:00.000000 Etc/GMT-0 own zulu
  )",
           kMembers);
}

TEST(Parse, Refuses) {
  runTable(R"(
    member text        pattern ->
    parse  2001-02-03  null                       -> OXR5502 bare: Null pattern pointer.
    ~      ''          I                          -> OXR5544
    ~      ''          yyyy                       -> KelParserException OXR5540:  | yyyy | 1
    ~      2001-02-30  yyyy-MM-dd                 -> KelParserException OXR5540: 2001-02-30 | yyyy-MM-dd | 1
    ~      2001-02-30  yyyy-MM-dd lenient=1       -> 2001-03-02 00:00:00.000000
    ~      x           yyyy       lenient=1       -> KelParserException OXR5540: x | yyyy | 0
    ~      2001        {qqq,yyyyU]}               -> KelParserException OXR5540: 2001 | {pattern} | 1
    ~      2001-02-03  yyyy-MM-dd default={ZZZ,-13} -> KelParserException OXR5540: 2001-02-03 | yyyy-MM-dd | 1
  )",
           kMembers);
}

TEST(Formatter, HandsItsSettingsOn) {
  runTable(R"(
    member pattern  text ->
    parse  yy-MM-dd {53-01-01,52-12-31} -> {1953-01-01 00:00:00.000000,2052-12-31 00:00:00.000000}
    format ww       '' value=2005/1/1 week={Monday,Sunday} weekdays=4 -> {STRING 53,STRING 52}
    ~      ww       '' value=2005/1/1 week=Monday weekdays={1,7}      -> {STRING 01,STRING 52}
  )",
           kMembers);
}

TEST(Format, WritesFieldsAndDefaults) {
  runTable(R"(
    member value                  pattern ->
    format {2001/2/3/4/5/6/789000,2001/2/3/4/5/6/789000/3} yyyy-MM-dd`T`HH:mm:ss.SSS -> STRING 2001-02-03T04:05:06.789
    ~      u/u/u/4                yyyy-MM-dd`T`HH:mm:ss.SSSSSS   -> STRING 1970-01-01T04:00:00.000000
    ~      2001                   I type={date,gYear,gMonthDay}  -> {STRING 2001-01-01,STRING 2001,STRING --01-01}
    ~      2001                   {I,T,I-U} default=+05:30       -> STRING 2001-01-01T00:00:00.000+05:30
  )",
           kMembers);
}

TEST(Format, ModifierAtTheSecondPlace) {
  runTable(R"(
    member value  pattern ->
    format 2001   {IU,TUx,I,IxU} type=time default=+0:0 -> {STRING 00:00:00.000Z,STRING 00:00:00.000Z,STRING 00:00:00.000+00:00,STRING 00:00:00.000+00:00}
    ~      2001   IU             type=date default=+0:0 -> STRING 2001-01-01
    ~      2001   {yyyyZZZU,yyyyZZZ} default=+0:0       -> {STRING 2001Z,STRING 2001+00:00}
  )",
           kMembers);
}

TEST(Format, WritesUtcAsItCameIn) {
  runTable(R"(
    member value  pattern ->
    format 2001   yyyyZZZ  own=1 zone=Etc/GMT-0 utc={0,1,2} -> {STRING 2001+00:00,STRING 2001Z,STRING 2001+00:00}
    ~      2001   yyyyZZZU own=1 zone=Etc/GMT-0 utc={0,1,2} -> {STRING 2001Z,STRING 2001Z,STRING 2001+00:00}
    ~      2001   yyyyZZZ  own=1 zone=Etc/GMT-0 utc=1 follow=0 -> STRING 2001+00:00
    ~      2001   yyyyU    own=1 zone=Etc/GMT-0 utc=2       -> STRING 2001
  )",
           kMembers);
}

// Clocks that are put forward skip an hour, which counts by the offset from before; of the one that they show twice,
// the second counts.
TEST(Format, ShiftsIntoTheZoneItIsWrittenIn) {
  runTable(R"(
    member value             pattern ->
    format 2001/7/1/12       HH:mmZ own=1 zone=Europe/Paris            -> STRING 12:00+0200
    ~      2001/7/1/12       HH:mmZ own=0 zone=Europe/Paris default=-5 -> STRING 05:00-0500
    ~      2001/7/1/12       HH:mmZ own=0 default={-5,Europe/Paris}    -> {STRING 12:00-0500,STRING 12:00+0200}
    ~      2001/3/25/2/30    HH:mmZ zone=Europe/Paris default=Etc/GMT  -> STRING 01:30+0000
    ~      2001/10/28/2/30   HH:mmZ zone=Europe/Paris default=Etc/GMT  -> STRING 01:30+0000
    ~      {2001/3/25/0,2001/3/25/1}   HH:mmZ zone=Etc/GMT default=Europe/Paris  -> {STRING 01:00+0100,STRING 03:00+0200}
    ~      {2001/10/28/0,2001/10/28/1} HH:mmZ zone=Etc/GMT default=Europe/Paris  -> {STRING 02:00+0200,STRING 02:00+0100}
    ~      2001/2/30/12      HH:mmZ zone=Etc/GMT default=Europe/Paris  -> KelParserException OXR5539: 2001-02-30 12:00:00.000000 | HH:mmZ
  )",
           kMembers);
  // Without a default zone that of the process counts.
  const std::string process = toUtf8(KelTimeZone::createDefault(nullptr)->getID());
  Case zoned, unzoned;
  zoned.words = unzoned.words = {{"value", "2001/7/1/12"}, {"pattern", "HH:mmZ"}};
  zoned.words["default"] = process;
  EXPECT_EQ(kMembers.at("format")(unzoned), kMembers.at("format")(zoned));
}

TEST(Format, Refuses) {
  runTable(R"(
    member value         pattern ->
    format 2001          null    -> OXR5502 bare: Null pattern pointer.
    ~      2001/13       yyyy    -> KelParserException OXR5539: 2001-13-01 00:00:00.000000 | yyyy
    ~      0             IU      lenient=1 own=1 -> KelParserException OXR5539: 0000-01-01 00:00:00.000000 | yyyy-MM-dd'T'HH:mm:ss.SSSZZZU
    ~      2001/1/1/24   yyyy    -> KelParserException OXR5539: 2001-01-01 24:00:00.000000 | yyyy
    ~      2001          qq      -> KelParserException OXR5539: 2001-01-01 00:00:00.000000 | qq
    ~      2001          yyyy    default=ZZZ     -> KelRecoverableException OXR2143 bare: Unknown time zone | ZZZ
  )",
           kMembers);
}

// More than are kept, each twice.
TEST(Formatter, PatternsComeAgain) {
  PWFDateTimeFormatter formatter(false, nullptr, 53, nullptr, 0, true);
  Case c;
  c.words["value"] = "2001";
  for (int i = 0; i < 80; ++i) {
    const std::string literal = std::to_string(i % 40);
    const KelWstring pattern = k("yyyy'" + literal + "'");
    EXPECT_EQ(shown(formatter.format(dateTimeOf(c), pattern.characters(),
                                     i % 2 != 0 ? -1 : lengthOf(pattern.characters()), nullptr)),
              "STRING 2001" + literal);
  }
}

TEST(Formatter, TracesWhatItDecides) {
  PWFDateTimeFormatter formatter(false, nullptr, 53, nullptr, 0, true);
  const std::string process = toUtf8(KelTimeZone::createDefault(nullptr)->getID());
  const auto expectTraced = [&](const char* text, const char* pattern, const std::string& parse,
                                const std::string& format) {
    const KelWstring units = k(text), by = k(pattern);
    std::string expected = "> P::parse\n" + parse + "< P::parse\n> P::format\n" + format + "< P::format\n";
    for (std::size_t at = 0; (at = expected.find("P::", at)) != expected.npos; at += 22)
      expected.replace(at, 1, "PWFDateTimeFormatter");
    EXPECT_EQ(tracedAt(4,
                       [&] {
                         const PWFDateTime value =
                             formatter.parse(units.characters(), static_cast<int>(units.length()), by.characters(), -1);
                         formatter.format(value, by.characters(), -1, nullptr);
                       }),
              expected);
  };
  const std::string shift = "P::format: Shifting time zones|Etc/GMT-0|Etc/GMT-0\n";
  expectTraced("12:30Z", "I",
               "> P::IdentifyIFormatPattern\n< P::IdentifyIFormatPattern\n"
               "P::parse: Time came in as GMT\nP::parse: Format control set to UTC_AS_ZULU\n",
               shift);
  expectTraced("12:30+00:00", "HH:mmZZZ",
               "P::parse: Time came in as GMT\nP::parse: Format control set to UTC_AS_ZEROES\n", shift);
  expectTraced(
      "12:30", "HH:mm",
      "P::parse: the incoming string doesn't have a timezone, we'll use the one that came with the message set\n"
      "P::parse: There was no timezone on the input, and default is set to Broker Default, hence don't set it and let "
      "the Broker sort it out later\nP::parse: Format control set to UTC_AS_FORMAT\n",
      "P::format: The datetime doesn't have it's own time zone, using the one from the message set\n"
      "P::format: the message set timezone is zero, setting to broker locale\n"
      "P::format: Shifting time zones|NULL|" +
          process + '\n');
}

}  // namespace
}  // namespace oxr::test
