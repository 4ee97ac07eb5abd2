// The calendar repeats after 400 years, which are 146097 days. So a day that is out of range by any number is first
// brought to within one such cycle by a division, and the year too; what is left is within the reach of std::chrono.

#include "core/binarydatetime.hpp"

#include <chrono>

namespace oxr::core {

namespace {

constexpr std::int64_t kCycleYears = 400, kCycleDays = 146'097;
constexpr std::int64_t kLeastMonthDays = 28;

// Divides, rounding down, and leaves the rest, which is not negative.
std::int64_t divideDown(std::int64_t& value, std::int64_t by) {
  const std::int64_t rest = (value % by + by) % by, quotient = (value - rest) / by;
  value = rest;
  return quotient;
}

// Carries a field that has reached its limit upwards.
void carryUp(std::int64_t& field, std::int64_t limit, std::int64_t& next) {
  if (field >= limit) next += divideDown(field, limit);
}

// REQUIRES: the month lies in 1 to 12.
void carryDays(std::int64_t& year, std::int64_t& month, std::int64_t& day) {
  if (day >= 1 && day <= kLeastMonthDays) return;
  std::int64_t cycles = divideDown(year, kCycleYears);
  --day;
  cycles += divideDown(day, kCycleDays);
  using namespace std::chrono;
  const year_month_day first(std::chrono::year(static_cast<int>(year)) / static_cast<int>(month) / 1);
  const year_month_day date(sys_days(first) + days(day));
  year = int{date.year()} + kCycleYears * cycles;
  month = unsigned{date.month()};
  day = unsigned{date.day()};
}

}  // namespace

void carryOver(PWFDateTime& value) {
  std::int64_t year = value._year, month = value._month, day = value._day;
  std::int64_t hour = value._hour, minute = value._minute, second = value._second;
  carryUp(second, 60, minute);
  carryUp(minute, 60, hour);
  carryUp(hour, 24, day);
  --month;
  year += divideDown(month, 12);
  ++month;
  carryDays(year, month, day);
  value._year = static_cast<PWFInt32>(year);
  value._month = static_cast<PWFInt32>(month);
  value._day = static_cast<PWFInt32>(day);
  value._hour = static_cast<PWFInt32>(hour);
  value._minute = static_cast<PWFInt32>(minute);
  value._second = static_cast<PWFInt32>(second);
}

}  // namespace oxr::core
