#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "keltimezone.hpp"
#include "timepattern.hpp"

// What only ICU knows: names in the language of the process, names of zones, and the numbering of weeks.
namespace oxr {

// Gives the name of a value, counted from 0: of a month (January first), a day of the week (Sunday first), a half of
// the day, an era (the one before Christ first). It lives to the end of the process.
UnitView nameOf(TimeKind kind, NameWidth width, std::size_t value);

struct NameMatch {
  std::size_t value;   // counted from 0
  std::size_t length;  // units of the text
};
// Finds the longest name that the text begins with, whatever its case; nothing where there is none, or where several
// values have it.
std::optional<NameMatch> matchName(TimeKind kind, NameWidth width, UnitView text);

// Gives the name of a zone at an instant, in seconds since 1970-01-01T00:00Z.
std::u16string zoneNameAt(const KelTimeZone& zone, NameWidth width, std::int64_t instant);
// Gives an offset, in seconds, as "GMT+05:30" is written in the language of the process.
std::u16string localizedOffset(int seconds);

enum class SavingTime : std::uint8_t { unknown, standard, daylight };
struct ZoneMatch {
  const KelTimeZone* zone;
  SavingTime saving;   // what the name tells
  std::size_t length;  // units of the text
};
// Finds the longest name of a zone, ID or localized offset that the text begins with.
std::optional<ZoneMatch> matchZone(NameWidth width, UnitView text);
// Gives the zone whose clocks show daylight (or standard) time at a local time: the zone itself where its clocks do,
// else the fixed offset that they would then have.
const KelTimeZone* zoneWithSaving(const KelTimeZone& zone, bool daylight, std::int64_t localSeconds);

struct OffsetMatch {
  int seconds;
  std::size_t length;
};
std::optional<OffsetMatch> matchLocalizedOffset(UnitView text);

// How weeks are counted: by the locale of the process but for what is given.
struct WeekRule {
  int firstDay;     // 0 for Sunday
  int minimalDays;  // of the first week of a year or month
};
// `firstDayName` is the English name of a day and `minimalDays` 1 to 7; others leave it to the locale.
WeekRule weekRuleOf(UnitView firstDayName, int minimalDays);

struct Weeks {
  int ofYear;
  int ofMonth;
};
// Gives the numbers of a day's weeks.
Weeks weeksOf(std::int64_t day, const WeekRule& rule);

// A date given by a week and the day in it, on top of which other fields may give the day, too.
struct WeekDate {
  int year;
  int month;
  int weekday;  // 0 for Sunday
  std::optional<int> day, dayOfYear, weekOfYear, weekOfMonth, weekdayInMonth;
};
// Gives the number of the day. A day of the month counts before one of the year, and that before a week. Nothing where
// a number is out of its range and `lenient` is false, or beyond any calendar.
std::optional<std::int64_t> dayOfWeekDate(const WeekDate& date, const WeekRule& rule, bool lenient);

}  // namespace oxr
