#include "keltime.hpp"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <ctime>

#include "harness/rows.hpp"
#include "host/process.hpp"
#include "host/stamps.hpp"

namespace oxr::test {
namespace {

constexpr auto kDays = KelInterval::days;
constexpr auto kMicroseconds = KelInterval::microseconds;

long valueOf(const std::string& word) {
  return word == "least" ? LONG_MIN : word == "most" ? LONG_MAX : std::stol(word);
}
const KelTimeZone* zoneOf(const std::string& id) {
  return KelTimeZone::createTimeZone(k(id), nullptr);
}

TEST(KelDate, KnowsTheCalendar) {
  EXPECT_EQ(shown(KelTimeStamp()), "1970-01-01");
  for (const Row& row : rows("0001-01-01 1; 9999-12-31 1; 2000-02-29 1; 2004-02-29 1; 1900-02-29 0; 2001-02-29 0;"
                             "2001-04-31 0; 2001-00-01 0; 2001-13-01 0; 2001-01-00 0; 2001-01-32 0; 0-12-31 0;"
                             "10000-01-01 0"))
    EXPECT_EQ(stampOf(row[0]).date().isValid(), row[1] == "1") << row[0];
  const int days[] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31, 0};
  for (int month = 0; month <= 13; ++month)
    for (const bool leap : {false, true})
      EXPECT_EQ(KelDate::daysOfMonth(static_cast<KelDate::Month>(month), leap), days[month] + (leap && month == 2));
}

TEST(KelDate, SubtractsDaysOfTheCalendarOnly) {
  for (const Row& row : rows("2001-03-01 2000-02-29 366; 1970-01-01 2001-02-03 -11356; 9999-12-31 0001-01-01 3652058;"
                             "1582-10-15 1582-10-04 11; 2001-02-29 2001-01-01 2140; 2001-01-01 0-12-31 2140")) {
    const auto value = [&row = row](auto unit) {
      return KelDate::dateSubtract(stampOf(row[0]).date(), stampOf(row[1]).date(), unit).value();
    };
    EXPECT_EQ(resultOf([&] { return std::to_string(value(kDays)); }), row[2]) << shown(row);
    if (row[2] != "2140") {
      EXPECT_EQ(value(kMicroseconds), value(kDays) * 86'400'000'000);
    }
  }
}

TEST(KelTimeBase, TakesSecondsToTheNearestMicrosecondAndSubtractsAnyTimes) {
  EXPECT_EQ(KelTimeBase(1, 2, 3, 4).microseconds(), 3'000'004);
  EXPECT_EQ(KelTimeBase(1, 2, 59.9999996).microseconds(), 60'000'000);
  EXPECT_EQ(KelTimeBase(1, 2, -0.0000016).microseconds(), -2);
  EXPECT_EQ(KelTimeBase(0, 0, 1e9).microseconds(), 1'000'000'000'000'000);
  for (const Row& row : rows("23:59:59.999999 1; 24:00:00 0; 00:60:00 0; 23:59:60 0; -1:00:00 0; 00:00:-1 0"))
    EXPECT_EQ(stampOf(row[0]).time().isValid(), row[1] == "1") << row[0];
  for (const Row& row : rows("23:59:59.999999 00:00:00 86399999999 0; 00:00:00 23:59:59.5 -86399500000 0;"
                             "49:-60:61 00:00:00 172861000000 2; 00:00:00 47:00:00 -169200000000 -1")) {
    const KelTimeBase time = stampOf(row[0]).time(), from = stampOf(row[1]).time();
    EXPECT_EQ(KelTimeBase::timeSubtract(time, from, kMicroseconds).value(), std::stol(row[2])) << shown(row);
    EXPECT_EQ(KelTimeBase::timeSubtract(time, from, kDays).value(), std::stol(row[3])) << shown(row);
  }
}

// Each case is gone back too. The last ones leave the calendar, or were never on it: they change nothing.
TEST(KelTimeStamp, MovesWithinTheCalendar) {
  for (const Row& row : rows("2000-02-28_23:59:59.999999 1 0 2000-02-29; 1970-01-01 -1 0 1969-12-31_23:59:59.999999;"
                             "2001-01-31 0 29 2001-03-01; 0001-01-01 0 3652058 9999-12-31;"
                             "0001-01-01 315537897599999999 0 9999-12-31_23:59:59.999999;"
                             "2001-02-03_04:05:06.789012_Europe/Paris 0 -1 2001-02-02_04:05:06.789012_Europe/Paris;"
                             "9999-12-31_23:59:59.999999 1 0 2140; 0001-01-01 -1 0 2140; 9999-12-31 0 1 2140;"
                             "1970-01-01 most 0 2140; 1970-01-01 least 0 2140; 1970-01-01 0 most 2140;"
                             "1970-01-01 0 least 2140; 9999-12-31 0 106751991 2140; 2001-02-29 0 0 2140;"
                             "1970-01-01_24:00:00 0 0 2140; 1970-01-01_23:59:60 -1 0 2140")) {
    const KelTimeStamp before = stampOf(row[0]);
    const bool isDays = row[2] != "0";
    const KelInterval interval(isDays ? kDays : kMicroseconds, valueOf(row[isDays ? 2 : 1]));
    KelTimeStamp stamp = before;
    EXPECT_EQ(resultOf([&] { return stamp.addInterval(interval), shown(stamp); }), row[3]) << shown(row);
    if (row[3] != "2140") stamp.addInterval({interval.qualifier(), -interval.value()});
    EXPECT_EQ(shown(stamp), shown(before)) << shown(row);
  }
}

TEST(KelTimeStamp, ShowsFieldsThatAreOnNoCalendar) {
  EXPECT_EQ(toUtf8(KelTimeStampBase().asString()), "1970-01-01 00:00:00.000000");
  EXPECT_EQ(shown(stampOf("12345-13-40 25:61:61.000001")), "12345-13-40 25:61:61.000001");
  const KelTimeStampBase extreme(KelDate(INT_MIN, static_cast<KelDate::Month>(INT_MIN), INT_MIN),
                                 KelTimeBase(INT_MIN, INT_MIN, LONG_MIN));
  EXPECT_EQ(toUtf8(extreme.asString()),
            "-2147483648--2147483648--2147483648 -2147483648:-2147483648:-9223372036854.775808");
}

// Paris and New York change their clocks in the nights of 2001-03-25 and 2001-04-01, and back in that of 2001-10-28.
TEST(KelTimeStamp, KeepsTheInstantWhenTheZoneChanges) {
  for (const Row& row :
       rows("2001-02-03_04:05:06.789012_Etc/GMT Europe/Paris 2001-02-03_05:05:06.789012;"
            "2001-07-03_04:05:06_Europe/Paris US/Eastern 2001-07-02_22:05:06;"
            "2001-03-25_00:59:59_Etc/GMT Europe/Paris 2001-03-25_01:59:59;"
            "2001-03-25_01:00:00_Etc/GMT Europe/Paris 2001-03-25_03:00:00;"
            "2001-03-25_02:30:00_Europe/Paris Etc/GMT 2001-03-25_01:30:00;"  // skipped: by the offset from before
            "2001-10-28_02:30:00_Europe/Paris Etc/GMT 2001-10-28_01:30:00;"  // shown twice: by the one from after
            "2001-04-01_02:30:00_US/Eastern Etc/GMT 2001-04-01_07:30:00;"
            "2001-10-28_01:30:00_US/Eastern Etc/GMT 2001-10-28_06:30:00;"
            "1850-01-01_Etc/GMT Europe/Paris 1850-01-01_00:09:21; 9999-12-31_23:30:00_Etc/GMT Europe/Paris"
            " 10000-01-01_00:30:00; 0001-01-01_Etc/GMT GMT-01:00 0000-12-31_23:00:00;"
            "2001-02-29_Etc/GMT Europe/Paris 2001-02-29; 2001-02-03_24:00:00_Etc/GMT GMT+01:00 2001-02-03_24:00:00;"
            "2001-02-03 Europe/Paris 2001-02-03")) {
    KelTimeStamp stamp = stampOf(row[0]);
    stamp.setTimeZone(zoneOf(row[1]));
    EXPECT_EQ(shown(stamp), row[2] + ' ' + row[1]) << shown(row);
    stamp.setTimeZone(nullptr);
    EXPECT_EQ(shown(stamp), row[2]) << "without a zone";
  }
  KelTimeStamp twice = stampOf("2001-10-28 00:30:00 Etc/GMT");  // the first half past two
  twice.setTimeZone(zoneOf("Europe/Paris"));
  EXPECT_EQ(twice.offset(), 7200);
  twice.addInterval({kMicroseconds, 1'000'000});
  EXPECT_EQ(twice.offset(), 3600) << "by the local time alone";
}

TEST(KelTimeStamp, CurrentTimeIsThatOfTheClock) {
  const KelTimeStamp stamp = KelTimeStamp::currentGMTTime();
  EXPECT_EQ(toUtf8(stamp.timeZone()->getID()), "Etc/GMT-0");
  EXPECT_TRUE(stamp.isValid());
  const long days = KelDate::dateSubtract(stamp.date(), KelDate(), kDays).value();
  const KelInterval time = KelTimeBase::timeSubtract(stamp.time(), KelTimeBase(), kMicroseconds);
  EXPECT_LE(std::labs(days * 86'400 + time.value() / 1'000'000 - std::time(nullptr)), 5);
}

TEST(KelTimeZone, HasTheIdThatIcuKeepsAndTheOffsetsOfItsRules) {
  for (const Row& row : rows("Europe/Paris Europe/Paris 3600; Etc/GMT-5 Etc/GMT-5 18000; EST5EDT EST5EDT -18000;"
                             "GMT+1:20 GMT+01:20 4800; GMT-00:30 GMT-00:30 -1800; Etc/GMT Etc/GMT 0; GMT GMT 0")) {
    EXPECT_EQ(toUtf8(zoneOf(row[0])->getID()), row[1]);
    EXPECT_EQ(zoneOf(row[0])->offsetAt(0), std::stoi(row[2])) << row[0];
    EXPECT_EQ(zoneOf(row[0]), zoneOf(row[0])) << "one zone an ID";
  }
  for (const char* const id : {"", "Nowhere", "europe paris", "+05:30", "GMT+24:00", "Etc/GMT-15", "Etc/Unknown"})
    EXPECT_EQ(resultOf([&] { return toUtf8(zoneOf(id)->getID()); }), "2143") << id;
  for (const Row& row : rows("0 Etc/GMT-0; 19800 GMT+05:30; -1800 GMT-00:30; 86340 GMT+23:59; -86399 GMT-23:59:59;"
                             "-1 GMT-00:00:01")) {
    const KelTimeZone* const zone = KelTimeZone::ofOffset(std::stoi(row[0]));
    EXPECT_EQ(toUtf8(zone->getID()), row[1]);
    EXPECT_TRUE(zone->offsetAt(-1) == std::stoi(row[0]) && zone->offsetAtLocal(LONG_MAX) == std::stoi(row[0]));
  }
}

using KelTimeZoneEnvironment = OwnProcess;

TEST_F(KelTimeZoneEnvironment, DefaultIsTheZoneOfTheProcess) {
  // The second is a rule that no ID stands for.
  for (const Row& row : rows("Asia/Kolkata Asia/Kolkata_19800; XYZ-3 .*_10800")) {
    const ScopedEnvironment variable("TZ", row[0].c_str());
    EXPECT_EXIT(
        {
          const KelTimeZone* const zone = KelTimeZone::createDefault(nullptr);
          std::fprintf(stderr, "%s %d", toUtf8(zone->getID()).c_str(), zone->offsetAt(0));
          std::exit(0);
        },
        testing::ExitedWithCode(0), "^" + row[1] + "$");
  }
}

}  // namespace
}  // namespace oxr::test
