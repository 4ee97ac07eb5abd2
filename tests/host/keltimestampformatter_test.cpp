#include "keltimestampformatter.hpp"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "harness/rows.hpp"
#include "host/stamps.hpp"

// Names are English: the tests run in the C locale. What ICU gives for the same patterns is compared at random in
// fuzz/host/keltimestamp_check.hpp; here stands what differs from ICU, what fails, and one case of everything.
namespace oxr::test {
namespace {

struct Settings {
  std::string stamp = "2026-11-21";  // to write, or what fields that are not read come from
  bool lenient = false;
  int centuryWindow = 53;
  std::string weekBegin = "";
  int firstWeekDays = 0;
};

std::string read(const std::string& pattern, const std::string& text, const Settings& set = {}) {
  return resultOf([&] {
    const KelTimeStamp defaults = stampOf(set.stamp);
    const KelWstring units = k(text), begin = k(set.weekBegin);
    return shown(KelTimeStamp(KelTimeStampFormatter(nullptr, nullptr, units.view(), k(pattern), defaults,
                                                    set.centuryWindow, begin.view(), set.firstWeekDays, set.lenient)));
  });
}

std::string written(const std::string& pattern, const Settings& set) {
  return resultOf([&] {
    const KelTimeStamp stamp = stampOf(set.stamp);
    const KelWstring begin = k(set.weekBegin);
    const KelTimeStampPattern compiled(k(pattern));
    const KelTimeStampFormatter formatter(nullptr, nullptr, stamp, compiled, set.centuryWindow, begin.view(),
                                          set.firstWeekDays, set.lenient);
    KelWstring target = u"what stood there before"_k;
    formatter.write(target);
    EXPECT_EQ(target, KelWstring(formatter)) << pattern;
    return toUtf8(target);
  });
}

// Cases "pattern text result", with a fourth word where lenient reading gives something else.
void expectReads(std::string_view table, Settings set = {}) {
  for (const Row& row : rows(table)) {
    set.lenient = false;
    EXPECT_EQ(read(row[0], row[1], set), row[2]) << shown(row);
    set.lenient = true;
    EXPECT_EQ(read(row[0], row[1], set), row.back()) << shown(row) << " lenient";
  }
}

TEST(KelTimeStampFormatter, WritesEachLetterAtEachCount) {
  const Settings set{"2001-02-03 16:05:06.789012 Europe/Paris"};
  for (const Row& row :
       rows("y 2001 01 2001 2001 02001 002001; M 2 02 Feb February F; d 3 03 003; D 34 34 034; F 1 01;"
            "E Sat Sat Sat Saturday S Sa; e 7 07 Sat Saturday S Sa; w 5 05; W 1 01; H 16 16 016; k 16 16; K 4 04;"
            "h 4 04; m 5 05; s 6 06; S 7 78 789 7890 78901 789012 7890120 78901200 789012000; a PM PM PM PM p;"
            "G AD AD AD Anno_Domini A; z GMT+1 GMT+1 GMT+1 Central_European_Standard_Time;"
            "Z +0100 +01 +01:00 GMT+01:00 +01:00"))
    for (std::size_t count = 1; count < row.size(); ++count)
      EXPECT_EQ(written(std::string(count, row[0][0]), set), row[count]) << row[0] << " times " << count;
  for (const Row& row : rows("00:00:00 24 12 0 AM; 11:59:59 11 11 11 AM; 12:00:00 12 12 0 PM; 13:00:00 13 1 1 PM"))
    EXPECT_EQ(written("k h K a", {row[0]}), row[1] + ' ' + row[2] + ' ' + row[3] + ' ' + row[4]);
}

TEST(KelTimeStampFormatter, WritesLiteralsAndOffsets) {
  for (const Row& row : rows("HH'h'mm'' 04h05'; yyyy''MM 2001'02; h_'o''clock'_a 4_o'clock_AM; 'yyyy' yyyy; yyyyU 2001;"
                             "yyyy\u5E74M\u6708\U0001F600 2001\u5E742\u6708\U0001F600; '' ''; 1.2,3- 1.2,3-;"
                             "HH:mm:ss.SSSSSSSSSSSS 04:05:06.700000000000; HHmmssSSS 040506700"))
    EXPECT_EQ(written(row[0], {"2001-02-03 04:05:06.7"}), row[1]) << shown(row);
  const auto table = rows(
      "zone Z ZZ ZZZ ZZZZ ZZZZZ ZU ZZU ZZZU; Etc/GMT +0000 +00 +00:00 GMT Z Z Z Z;"
      "GMT+05:30 +0530 +05:30 +05:30 GMT+05:30 +05:30 +0530 +05:30 +05:30;"
      "GMT-08:00 -0800 -08 -08:00 GMT-08:00 -08:00 -0800 -08 -08:00");
  for (const Row& row : table)
    for (std::size_t i = 1; i < row.size() && row != table[0]; ++i)
      EXPECT_EQ(written(table[0][i], {"2001-02-03 " + row[0]}), row[i]) << row[0] << ' ' << table[0][i];
  const std::string local = toUtf8(KelTimeZone::createDefault(nullptr)->getID());
  EXPECT_EQ(written("ZZZ", {"2001-02-03"}), written("ZZZ", {"2001-02-03 " + local})) << "the process's zone";
}

TEST(KelTimeStampFormatter, CountsWeeksAsTheFirstDayAndTheFirstWeekSay) {
  for (const Row& row : rows("'' 0 1_1_7; Sunday 1 1_1_7; Monday 4 53_0_6; Monday 7 52_0_6; Saturday 1 1_1_1;"
                             "Friday 6 1_1_2; Friday 7 53_0_2; Noday 9 1_1_7")) {
    const Settings set{"2005-01-01", false, 53, row[0], std::stoi(row[1])};  // a Saturday
    EXPECT_EQ(written("w W e", set), row[2]) << shown(row);
  }
}

TEST(KelTimeStampFormatter, ReadsNumbers) {
  expectReads(
      "yyyy-MM-dd 2001-02-03 2001-02-03; yyyy/MM-dd 2001-02-03 2141; yyyy-MM-dd. 2001-02-03, 2141;"
      "yyyy-MM-dd 2001-2-3 2141 2001-02-03; y-M-d 2001-02-03 2001-02-03;"
      "yyyy-MM-dd'T'HH:mm:ss.SSSSSS 2001-02-03T04:05:06.789012 2001-02-03_04:05:06.789012;"
      "d 003 2141 2026-11-03; yyyy 02001 2141 2001-11-21; yyyyy 02001 2001-11-21; yyyy 201 2141 0201-11-21;"
      "HH:mm _04:_5 2141 2026-11-21_04:05:00; HH 04x 2141 2026-11-21_04:00:00; HH:mm 04 2141; yyyy '' 2141;"
      "yyyy-MM 2001/02 2141; HH:mm :05 2141; MM -1 2141; 'now' now 2026-11-21; '' '' 2026-11-21;"
      // Rows of digits without anything between them.
      "yyyyMMddHHmmss 20010203040506 2001-02-03_04:05:06; Mdd 203 2026-02-03; Mdd 1203 2026-12-03 2026-01-20;"
      "yMMdd 50203 0005-02-03; HHmmssSSS 040506789 2026-11-21_04:05:06.789000; '7'HH 704 2026-11-21_04:00:00;"
      "HHmm 040 2141 2026-11-21_00:40:00; yyyyMMdd 200102030 2141 2001-02-03;"
      // Fractions: as many digits as letters, and no more than microseconds.
      "ss.S 06.7 2026-11-21_00:00:06.700000; ss.SSS 06.78 2141 2026-11-21_00:00:06.780000;"
      "ss.SSS 06.7890 2141 2026-11-21_00:00:06.789000; s.SSSSSSSSS 6.789012345 2026-11-21_00:00:06.789012");
}

// 2026 is no leap year; November has 30 days.
TEST(KelTimeStampFormatter, CarriesOverWhatIsOutOfRangeOnlyWhenLenient) {
  expectReads(
      "MM 12 2026-12-21; MM 13 2141 2027-01-21; MM 00 2141 2025-12-21; dd 30 2026-11-30; dd 31 2141 2026-12-01;"
      "yyyy-MM-dd 2000-02-29 2000-02-29; yyyy-MM-dd 1900-02-29 2141 1900-03-01; yyyy-MM-dd 2001-02-31 2141 2001-03-03;"
      "HH 24 2141 2026-11-22; mm 60 2141 2026-11-21_01:00:00; HH:mm:ss 23:59:60 2141 2026-11-22;"
      "DDD 366 2141 2027-01-01; yyyy-DDD 2000-366 2000-12-31; kk 24 2026-11-21; kk 00 2141 2026-11-21;"
      "hh_a 12_AM 2026-11-21; hh_a 00_PM 2141 2026-11-21_12:00:00; yyyy_M_F_E 2001_2_6_Sat 2141 2001-03-10;"
      "yyyy-MM-dd_HH:mm:ss 2001-14-35_25:61:61 2141 2002-03-08_02:02:01; yyyy-MM-dd 0001-01-01 0001-01-01");
  // No stamp lies outside of the years 1 to 9999, however it is read.
  expectReads(
      "yyyy 0000 2141; yyyy 10000 2141; yyyy-MM-dd 9999-12-32 2141; yyyy-MM-dd 0001-01-00 2141;"
      "G_yyyy BC_0005 2141; G_y_ww BC_11749915_10 2141; yyyy 99999999999999999999 2141; HH 99999999999 2141; yyyy-DDD "
      "9999-400 2141");
}

// Weeks and numbers of week days are compared with ICU's.
TEST(KelTimeStampFormatter, ReadsNames) {
  expectReads(
      "dd_MMM_yyyy 03_Feb_2001 2001-02-03; MMMM February 2026-02-21; MMM fEB 2026-02-21; MMM Foo 2141;"
      "MMMM Feb 2141 2026-02-21; MMM February 2141 2026-02-21; EEE,_yyyy-MM-dd Sat,_2001-02-03 2001-02-03;"
      "EEEE_yyyy-MM-dd Sunday_2001-02-03 2001-02-03; EEEEEE_dd Sa_05 2026-11-05; G_yyyy AD_2001 2001-11-21;"
      "hh_a 03_pm 2026-11-21_15:00:00; a_hh PM_03 2026-11-21_15:00:00; E_HH Mon_04 2026-11-16_04:00:00;"
      // The last of several fields for one thing counts.
      "kk_HH 06_05 2026-11-21_05:00:00; HH_kk 06_05 2026-11-21_05:00:00; hh_KK 05_06 2026-11-21_06:00:00;"
      "HH_a 05_PM 2026-11-21_05:00:00; a PM 2026-11-21_12:00:00; yyyy_dd_DDD 2001_05_100 2001-04-10;"
      "yyyy_DDD_dd 2001_100_05 2001-11-05");
}

TEST(KelTimeStampFormatter, ReadsZones) {
  expectReads(
      "ZZZ +05:30 2026-11-21_GMT+05:30; ZZZ -08:00 2026-11-21_GMT-08:00; ZZZ Z 2026-11-21_Etc/GMT-0;"
      "ZZZ +00:00 2026-11-21_Etc/GMT-0; ZZ +05 2026-11-21_GMT+05:00; ZZ -05:30 2026-11-21_GMT-05:30;"
      "ZZ Z 2026-11-21_Etc/GMT-0; Z +0530 2026-11-21_GMT+05:30; Z -0000 2026-11-21_Etc/GMT-0;"
      "Z Z 2026-11-21_Etc/GMT-0; ZZZZ GMT-03:30 2026-11-21_GMT-03:30; ZZZZ GMT 2026-11-21_Etc/GMT-0;"
      "ZZZZZ Z 2026-11-21_Etc/GMT-0; ZZZU Z 2026-11-21_Etc/GMT-0; ZZZU +00:00 2026-11-21_Etc/GMT-0;"
      "ZZZZU Z 2026-11-21_Etc/GMT-0; HH:mmZZ 04:05+01 2026-11-21_04:05:00_GMT+01:00; ZZZ +24:00 2141; ZZZ '' 2141;"
      "ZZZ +05:60 2141 2026-11-21_GMT+05:00; ZZZ 05:30 2141; z GMT+1 2026-11-21_GMT+01:00; z Foo 2141; z Etc/Unknown "
      "2141;"
      "z GMT 2026-11-21_Etc/GMT-0; z UTC 2026-11-21_Etc/GMT-0");
  EXPECT_EQ(read("zzzz", "Pacific Standard Time"), "2026-11-21 America/Los_Angeles");
  expectReads("ZZZ +05:30 2001-02-03_04:05:06_GMT+05:30; dd 05 2001-02-05_04:05:06_Europe/Paris",
              {"2001-02-03 04:05:06 Europe/Paris"});
}

TEST(KelTimeStampFormatter, CutsTheDefaultDayToTheMonth) {
  expectReads("yyyy-MM 2001-02 2001-02-28; yyyy-MM 2004-02 2004-02-29; MM 04 2026-04-30; MM 05 2026-05-31",
              {"2026-01-31"});
  expectReads("yyyy 2001 2001-02-28; yyyy 2004 2004-02-29; HH 05 2024-02-29_05:00:00", {"2024-02-29"});
}

// The hundred years begin in a year that ends with the window's digits, and hold the default stamp's year.
TEST(KelTimeStampFormatter, PutsYearsOfTwoDigitsIntoTheCenturyWindow) {
  for (const Row& row : rows("53 53 1953; 53 52 2052; 26 26 2026; 26 25 2125; 27 26 2026; 27 27 1927; 0 00 2000;"
                             "0 99 2099; 99 98 2098; 99 99 1999")) {
    const std::string year = row[2] + "-11-21";
    const int window = std::stoi(row[0]);
    EXPECT_EQ(read("yy", row[1], {"2026-11-21", false, window}), year) << shown(row);
    EXPECT_EQ(read("y", row[1], {"2026-11-21", false, window}), year) << shown(row);
    EXPECT_EQ(written("yy", {year, false, window}), row[1]) << shown(row);
  }
  expectReads(
      "yy 2001 2141 2001-11-21; y 2001 2001-11-21; y 5 0005-11-21; yy 5 2141 0005-11-21;"
      "yyMMdd 010203 2001-02-03; yyy 005 0005-11-21");
}

TEST(KelTimeStampPattern, RefusesWhatIsNoPattern) {
  for (const char* const pattern : {"Y", "yyyy-MM-ddX", "u", "L", "b", "MMMMMM", "EEEEEEE", "eeeeeee", "aaaaaa",
                                    "GGGGGG", "zzzzz", "ZZZZZZ", "'open", "'open''", "Uyyyy", "ZU'x'", "ZUU"})
    EXPECT_EQ(read(pattern, ""), "2142") << pattern;
}

TEST(KelTimeStampFormatter, WritesWhatIsNotOnTheCalendarOnlyWhenLenient) {
  for (const Row& row : rows("2001-02-31 2001-03-03_00:00:00.000000; 2001-02-03_24:00:00 2001-02-04_00:00:00.000000;"
                             "2001-02-03_23:59:60 2001-02-04_00:00:00.000000; 2001-13-00 2001-12-31_00:00:00.000000;"
                             "2001-02-03_00:-1:-0.5 2001-02-02_23:58:59.500000; 0-01-01 2140; 9999-12-32 2140")) {
    EXPECT_EQ(written("yyyy-MM-dd HH:mm:ss.SSSSSS", {row[0]}), "2140") << row[0];
    EXPECT_EQ(written("yyyy-MM-dd HH:mm:ss.SSSSSS", {row[0], true}), row[1]) << row[0];
  }
}

TEST(KelTimeStampFormatterThreads, SharePatternsAndZones) {
  const KelTimeStampPattern pattern(u"EEEE, dd MMMM yyyy HH:mm:ss.SSS zzzz"_k);
  const KelTimeStamp stamp = stampOf("2001-07-03 04:05:06.789 Europe/Paris");
  const KelWstring text = u"Tuesday, 03 July 2001 04:05:06.789 Central European Summer Time"_k;
  std::vector<std::vector<const KelTimeZone*>> zones(4);
  std::vector<std::thread> threads;
  for (auto& mine : zones)
    threads.emplace_back([&] {
      for (int round = 0; round < 50; ++round) {
        const KelTimeStampPattern copy(pattern);
        ASSERT_EQ(KelWstring(KelTimeStampFormatter(nullptr, nullptr, stamp, copy, 53, {}, 0, false)), text);
        const KelTimeStamp again = KelTimeStampFormatter(nullptr, nullptr, text.view(), pattern, KelTimeStamp(), 53);
        ASSERT_EQ(again.asString(), stamp.asString());
        mine.push_back(KelTimeZone::createTimeZone(k("GMT+03:0" + std::to_string(round % 10)), nullptr));
        mine.push_back(KelTimeZone::ofOffset(round * 40));
      }
    });
  for (std::thread& thread : threads)
    thread.join();
  for (const auto& each : zones)
    EXPECT_EQ(each, zones.front());
}

}  // namespace
}  // namespace oxr::test
