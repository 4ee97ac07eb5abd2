#include <gtest/gtest.h>

#include "harness/datetimes.hpp"
#include "harness/rows.hpp"

namespace oxr::test {
namespace {

void expectZones(const char* cases) {
  for (const Row& c : rows(cases))
    EXPECT_EQ(toUtf8(PWFDateTimeFormatter::EvaluateTimeZone(k(c.at(0)).characters())), c.size() > 1 ? c[1] : "")
        << shown(c);
}

TEST(DefaultZones, Offsets) {
  expectZones(
      "+0 Etc/GMT; -0 Etc/GMT; +5 Etc/GMT-5; -5 Etc/GMT+5; +00 Etc/GMT; +05 Etc/GMT-5; -09 Etc/GMT+9; +10 Etc/GMT-10; "
      "+12 Etc/GMT-12; +14 Etc/GMT-14; +15; +5:0 Etc/GMT-5; +0:0 Etc/GMT-0; +5:3 Asia/Calcutta; +5:30 Asia/Calcutta; "
      "+05:30 Asia/Calcutta; +05:3 Asia/Calcutta; +5:00 Etc/GMT-5; +05:00 Etc/GMT-5; +05:0 Etc/GMT-5; +00:00 Etc/GMT; "
      "-14:00 Etc/GMT+14; +15:00; +01:20 GMT+01:20; +5:05 GMT+05:05; -9:30 Pacific/Marquesas; "
      "+3:3 Asia/Tehran; +04:30 Asia/Kabul; +05:45 Asia/Katmandu; +06:30 Asia/Rangoon; "
      "+09:30 Australia/Darwin; +11:30 Pacific/Norfolk; +12:45 Pacific/Chatham");
  expectZones(
      "''; +; +x; +0530; +5x30; +5x3; +x:0; +5:x; +5:x0; +x5; +1x; +15:3; +0x:00; +05x30; +05:300; Europe/Paris");
}

// Only some characters are looked at.
TEST(DefaultZones, OddOffsets) {
  expectZones("x5 Etc/GMT+5; x05 Etc/GMT+5; +a:00 Etc/GMT-a; +05:ab GMT+05:ab; +5:3x GMT+05:3x; +05:x GMT+05:x0");
}

TEST(DefaultZones, WhatTheyAreMadeOf) {
  KelWstring suffix = u"as it was"_k;
  EXPECT_TRUE(PWFDateTimeFormatter::timeZoneAllowed(u"+00"_k, suffix));
  EXPECT_FALSE(PWFDateTimeFormatter::timeZoneAllowed(u"+15"_k, suffix));
  EXPECT_FALSE(PWFDateTimeFormatter::timeZoneAllowed(KelWstring(), suffix));
  EXPECT_EQ(suffix, u"as it was"_k);
  EXPECT_TRUE(PWFDateTimeFormatter::timeZoneAllowed(u"-10:00"_k, suffix));
  EXPECT_EQ(suffix, u"+10"_k);
  EXPECT_EQ(PWFDateTimeFormatter::specialCaseTimezones(u"-03:30"_k), u"America/St_Johns"_k);
  EXPECT_EQ(PWFDateTimeFormatter::specialCaseTimezones(u"+10:30"_k), u"Australia/Lord_Howe"_k);
  const KelWstring offset = u" and an offset of any length"_k;
  EXPECT_EQ(PWFDateTimeFormatter::specialCaseTimezones(offset), u"GMT"_k + offset);
}

// Every ID that an offset gives is one of a zone, but for two that are as far behind as others are ahead.
TEST(DefaultZones, Exist) {
  for (int minutes = 0; minutes < 15 * 60; ++minutes)
    for (const char sign : {'+', '-'}) {
      char offset[16];
      std::snprintf(offset, sizeof offset, "%c%02d:%02d", sign, minutes / 60, minutes % 60);
      const KelWstring id = PWFDateTimeFormatter::EvaluateTimeZone(k(offset).characters());
      const bool isTooFar = minutes % 60 == 0 && minutes > 12 * 60 && sign == '-';
      EXPECT_EQ(raisedBy([&] { KelTimeZone::createTimeZone(id, nullptr); }).number != 0, isTooFar) << offset;
    }
}

}  // namespace
}  // namespace oxr::test
