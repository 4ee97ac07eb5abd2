#include <unicode/timezone.h>

#include "dataconv.hpp"
#include "fuzz/allocation/operations.hpp"
#include "harness/converter.hpp"
#include "keltime.hpp"
#include "keltimestampformatter.hpp"
#include "pwffrmtr.hpp"

namespace oxr::test {
namespace {

const KelWstring kText = u"2001-02-03T04:05:06.789+05:30"_k, kPattern = u"yyyy-MM-dd'T'HH:mm:ss.SSSZZZ"_k,
                 kNames = u"EEEE, d MMMM yyyy HH:mm:ss zzzz"_k, kBinary = u"yyyy+1900MMddHHmmssSSSS"_k,
                 kEpoch = u"2001-02-03T04:05+06:00"_k, kZone = u"Europe/Paris"_k, kWords = u"words and more words"_k;

const unsigned short* units(const KelWstring& text) {
  return text.characters();
}

PWFDateTime someTime() {
  PWFDateTime value{};
  value._year = 2001, value._month = 2, value._day = 3, value._hour = 4, value._minute = 5, value._second = 6;
  value._subsecond = 789000, value._scale = 6;
  return value;
}

const struct {
  const char* name;
  std::string (*use)(DataCnv&);
} kRows[] = {
    {"StrToDateTime", [](DataCnv& c) { return told(c.StrToDateTime(units(kText), units(kPattern), -1)); }},
    {"StrToDateTime, I", [](DataCnv& c) { return told(c.StrToDateTime(units(kText), units(u"I"_k), -1)); }},
    {"StrToDateTime, names",
     [](DataCnv& c) {
       return told(c.StrToDateTime(units(u"Saturday, 3 February 2001 04:05:06 GMT+01:00"_k), units(kNames), -1));
     }},
    {"StrToDateTime, bad", [](DataCnv& c) { return told(c.StrToDateTime(units(kWords), units(kPattern), -1)); }},
    {"StrToDateTime, bad pattern",
     [](DataCnv& c) { return told(c.StrToDateTime(units(kText), units(u"yyyy'words and more words"_k), -1)); }},
    {"StrToDateTime, no pattern", [](DataCnv& c) { return told(c.StrToDateTime(units(kText), nullptr, -1)); }},
    {"StrFromDateTime", [](DataCnv& c) { return told(c.StrFromDateTime(someTime(), units(kPattern), nullptr)); }},
    {"StrFromDateTime, names", [](DataCnv& c) { return told(c.StrFromDateTime(someTime(), units(kNames), nullptr)); }},
    {"StrFromDateTime, week",
     [](DataCnv& c) { return told(c.StrFromDateTime(someTime(), units(u"yyyy-DDD-ww-W-F-a"_k), nullptr)); }},
    {"StrFromDateTime, I",
     [](DataCnv& c) { return told(c.StrFromDateTime(someTime(), units(u"IU"_k), units(u"dateTime"_k))); }},
    {"StrFromDateTime, standard", [](DataCnv& c) { return told(c.StrFromDateTime(someTime(), nullptr, nullptr)); }},
    {"StrFromDateTime, bad",
     [](DataCnv& c) {
       PWFDateTime value = someTime();
       value._month = 13;
       return told(c.StrFromDateTime(value, units(kPattern), nullptr));
     }},
    {"StandardStrToData, DATETIME",
     [](DataCnv& c) { return told(c.StandardStrToData(DATETIME, kText).getDateTimeValue()); }},
    {"StandardStrToData, bad DATETIME", [](DataCnv& c) { return told(c.StandardStrToData(DATETIME, kWords)); }},
    {"StandardStrFromData, DATETIME", [](DataCnv& c) { return told(c.StandardStrFromData(PWFData(someTime()))); }},
    {"BinaryToDateTime",
     [](DataCnv& c) {
       const unsigned char field[14] = {101, 0, 0, 0, 2, 0, 3, 0, 4, 0};
       return told(c.BinaryToDateTime(field, 14, units(kBinary)));
     }},
    {"BinaryFromDateTime",
     [](DataCnv& c) {
       unsigned char field[20] = {};
       c.BinaryFromDateTime(someTime(), field, 20, units(u"yyyyMMddHHmmssXXXXXX"_k));
       return toldBytes(field, 20);
     }},
    {"BinaryFromDateTime, bad",
     [](DataCnv& c) {
       unsigned char field[4] = {};
       return c.BinaryFromDateTime(someTime(), field, 4, units(kBinary)), told("written");
     }},
    {"MilliSecondsToDateTime", [](DataCnv& c) { return told(c.MilliSecondsToDateTime(86'400'001, units(kEpoch))); }},
    {"MilliSecondsFromDateTime",
     [](DataCnv& c) { return told(c.MilliSecondsFromDateTime(someTime(), units(kEpoch))); }},
    {"SecondsToDateTime, bad epoch", [](DataCnv& c) { return told(c.SecondsToDateTime(1, units(kWords))); }},
    {"SecondsFromDateTime, too far",
     [](DataCnv& c) {
       PWFDateTime value = someTime();
       value._year = 9999;
       return told(c.SecondsFromDateTime(value, units(u"1970-01-01T00:00+00:00"_k)));
     }},
    {"PckdDecToDateTime",
     [](DataCnv& c) {
       const unsigned char field[] = {0x20, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x00, 0x7C};
       return told(c.PckdDecToDateTime(field, 9, 0, eSignNone, units(u"yyyyMMddHHmmssSSS"_k)));
     }},
    {"PckdDecFromDateTime",
     [](DataCnv& c) {
       unsigned char field[12] = {};
       c.PckdDecFromDateTime(someTime(), field, 12, units(u"yyyyMMddHHmmssSSS"_k), 0, eSignNone);
       return toldBytes(field, 12);
     }},
};

const struct {
  const char* name;
  std::string (*use)();
} kHostRows[] = {
    {"zone of an ID", [] { return told(KelTimeZone::createTimeZone(kZone, nullptr)->offsetAt(981'173'106)); }},
    {"zone of an offset", [] { return told(KelTimeZone::createTimeZone(u"GMT+05:30"_k, nullptr)->getID()); }},
    {"zone of no ID",
     [] { return told(KelTimeZone::createTimeZone(u"Nowhere/At all"_k, nullptr) == nullptr ? "none" : "some"); }},
    {"zone of the process", [] { return told(KelTimeZone::createDefault(nullptr)->getID()); }},
    {"zone of seconds", [] { return told(KelTimeZone::ofOffset(19'800)->getID()); }},
    {"time stamp as text",
     [] {
       return told(KelTimeStampBase({3, KelDate::February, 2001}, {4, 5, 6, 7}).asString());
     }},
    {"time stamp in a zone",
     [] {
       KelTimeStamp stamp({3, KelDate::July, 2001}, {4, 5, 6, 7}, KelTimeZone::ofOffset(0));
       stamp.setTimeZone(KelTimeZone::createTimeZone(kZone, nullptr));
       return told(stamp.asString());
     }},
    {"time stamp out of range",
     [] {
       KelTimeStamp stamp({3, KelDate::July, 9999}, {4, 5, 6, 7});
       return stamp.addInterval({KelInterval::days, 1000}), told(stamp.asString());
     }},
    {"pattern",
     [] {
       const KelTimeStampPattern pattern(kPattern);
       const KelTimeStamp today({3, KelDate::July, 2001}, {4, 5, 6, 7});
       const KelTimeStamp stamp = KelTimeStampFormatter(nullptr, nullptr, kText.view(), pattern, today, 53);
       return told(stamp.asString());
     }},
};

}  // namespace

Operations dateTimeOperations() {
  Operations operations;
  // The reading and writing of date-times and epochs replaces every exception by its own failure.
  constexpr char kStated[] = "5516 5539 5540 5523";
  for (const auto& row : kRows) {
    addBoth(
        operations, row.name, [] { return sharedOf([] { return converterFor(37); }); }, row.use);
    operations.push_back({std::string(row.name) + ", in Paris", [row]() -> Call {
                            const auto converter = sharedOf([] { return converterFor(37); });
                            converter->setDateTimeProperties(53, units(kZone), units(u"Sunday"_k), 4, false, true);
                            return [converter, row] { return row.use(*converter); };
                          }});
  }
  for (Operation& operation : operations)
    operation.stated = kStated;
  for (const auto& row : kHostRows)
    addBoth(
        operations, row.name, [] { return std::make_shared<int>(); }, [row](int) { return row.use(); });
  return operations;
}

}  // namespace oxr::test
