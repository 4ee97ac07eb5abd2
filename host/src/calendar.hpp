#pragma once

#include <array>
#include <cstdint>

// Days as numbers and as dates of the Gregorian calendar, taken as if it had always been in use.
//
// The year of the calculation begins in March, so that the day that comes and goes is its last; months are then 30.6
// days long, near enough that a division gives the month. Eras of 400 years, 146097 days, all have the same days.
namespace oxr {

struct Date {
  int year;
  int month;  // January is 1
  int day;
};

constexpr std::int64_t kSecondsPerDay = 86'400;
constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;
constexpr std::int64_t kMicrosecondsPerMinute = 60 * kMicrosecondsPerSecond;
constexpr std::int64_t kMicrosecondsPerDay = kSecondsPerDay * kMicrosecondsPerSecond;
constexpr int kFirstYear = 1;
constexpr int kLastYear = 9999;

constexpr bool isLeap(std::int64_t year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

inline constexpr std::array<std::int8_t, 13> kDaysOfCommonYear = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

// The days of a month from 1 to 12.
constexpr int daysInMonth(int month, bool leap) {
  return kDaysOfCommonYear[static_cast<std::size_t>(month)] + (month == 2 && leap ? 1 : 0);
}

constexpr std::int64_t floorDivide(std::int64_t value, std::int64_t divisor) {
  return value / divisor - (value % divisor < 0 ? 1 : 0);
}
constexpr std::int64_t floorRemainder(std::int64_t value, std::int64_t divisor) {
  return value - floorDivide(value, divisor) * divisor;
}

// The number of a day: days since the first of January 1970. The month is 1 to 12; any day counts from the first.
constexpr std::int64_t dayNumber(std::int64_t year, int month, std::int64_t day) {
  const std::int64_t marchYear = year - (month <= 2 ? 1 : 0);
  const std::int64_t era = floorDivide(marchYear, 400);
  const std::int64_t yearOfEra = marchYear - era * 400;
  const std::int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  return era * 146'097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 719'468;
}

// The date of such a number, which lies within two thousand million years of 1970.
constexpr Date dateOfDay(std::int64_t number) {
  const std::int64_t shifted = number + 719'468;
  const std::int64_t era = floorDivide(shifted, 146'097);
  const auto dayOfEra = static_cast<unsigned>(shifted - era * 146'097);
  const unsigned yearOfEra = (dayOfEra - dayOfEra / 1'460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
  const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const unsigned marchMonth = (5 * dayOfYear + 2) / 153;
  const auto day = static_cast<int>(dayOfYear - (153 * marchMonth + 2) / 5 + 1);
  const auto month = static_cast<int>(marchMonth < 10 ? marchMonth + 3 : marchMonth - 9);
  return {static_cast<int>(era * 400 + yearOfEra + (month <= 2 ? 1 : 0)), month, day};
}

static_assert(dayNumber(1970, 1, 1) == 0 && dayNumber(2000, 3, 1) == 11'017 && dayNumber(0, 12, 31) == -719'163);
static_assert(dateOfDay(11'016).month == 2 && dateOfDay(11'016).day == 29);

constexpr std::int64_t kFirstDay = dayNumber(kFirstYear, 1, 1);
constexpr std::int64_t kLastDay = dayNumber(kLastYear, 12, 31);

constexpr bool isOnCalendar(int year, int month, int day) {
  return year >= kFirstYear && year <= kLastYear && month >= 1 && month <= 12 && day >= 1 &&
         (day <= 28 || day <= daysInMonth(month, isLeap(year)));
}

// The place of a day in its week: 0 for Sunday.
constexpr int weekdayOf(std::int64_t number) {
  return static_cast<int>(floorRemainder(number + 4, 7));
}
static_assert(weekdayOf(0) == 4);

}  // namespace oxr
