#pragma once

#include <cstdint>

#include "kelexport.hpp"
#include "keltimezone.hpp"
#include "kelwstring.hpp"

// Dates, times of day, spans of time and time stamps, on the Gregorian calendar as if it had always been in use.
//
// They are plain values. Making one checks nothing, so that whatever a message holds can be carried and shown; what
// calculates with one that is not on the calendar, or leaves the years 1 to 9999, raises a KelRecoverableException,
// host message 2140.

// A number of days or microseconds, which may be negative. The numbers of the qualifiers go outside: they never change.
class KelInterval {
 public:
  // What an interval counts.
  enum Qualifier : int { microseconds = 1, days = 8 };

  // Makes an interval of `value` times what `qualifier` says.
  constexpr KelInterval(Qualifier qualifier, long value) : value_(value), qualifier_(qualifier) {}

  constexpr Qualifier qualifier() const { return qualifier_; }  // what is counted
  constexpr long value() const { return value_; }               // how many; negative for the way back

 private:
  long value_;
  Qualifier qualifier_;
};

// A day: the day of the month, the month and the year.
class KELHOST_EXPORT KelDate {
 public:
  // A month, January as 1.
  enum Month : int {
    January = 1,
    February,
    March,
    April,
    May,
    June,
    July,
    August,
    September,
    October,
    November,
    December,
  };

  // Makes the first of January 1970.
  constexpr KelDate() : KelDate(1, January, 1970) {}
  // Makes a day as it is given: see isValid().
  constexpr KelDate(int day, Month month, int year) : day_(day), month_(month), year_(year) {}

  // Give what the day was made of.
  constexpr int day() const { return day_; }
  constexpr Month month() const { return month_; }
  constexpr int year() const { return year_; }

  // Tells whether this is a day of the calendar, in the years 1 to 9999.
  bool isValid() const;

  // Gives the number of days of a month; 0 for a number that is no month.
  static int daysOfMonth(Month month, bool leap);
  // Tells whether the year has a 29th of February.
  static bool isLeapYear(int year);
  // Gives the time from `from` to `date`, negative when `date` comes first. Raises for a day that is not on the
  // calendar.
  static KelInterval dateSubtract(const KelDate& date, const KelDate& from, KelInterval::Qualifier qualifier);

 private:
  int day_;
  Month month_;
  int year_;
};

// A time of day: hours, minutes, and the microseconds within the minute.
class KELHOST_EXPORT KelTimeBase {
 public:
  // Makes midnight.
  constexpr KelTimeBase() : KelTimeBase(0, 0, 0L) {}
  // Make a time as it is given: see isValid(). What is less than a minute comes as seconds and microseconds, which are
  // added up, or as microseconds alone.
  constexpr KelTimeBase(int hour, int minute, int second, int microsecond)
      : KelTimeBase(hour, minute, second * 1'000'000L + microsecond) {}
  constexpr KelTimeBase(int hour, int minute, long microseconds)
      : hour_(hour), minute_(minute), microseconds_(microseconds) {}
  // Takes seconds with a fraction to the nearest microsecond. They lie within a billion of 0.
  KelTimeBase(int hour, int minute, double seconds);

  // Give what the time was made of.
  constexpr int hour() const { return hour_; }
  constexpr int minute() const { return minute_; }
  // Gives the microseconds within the minute: whole seconds and their fraction.
  constexpr long microseconds() const { return microseconds_; }

  // Tells whether a clock shows this time: there is no hour 24 and no second 60.
  constexpr bool isValid() const {
    return hour_ >= 0 && hour_ < 24 && minute_ >= 0 && minute_ < 60 && microseconds_ >= 0 && microseconds_ < 60'000'000;
  }

  // Gives the time from `from` to `time`, negative when `time` comes first; of days, only whole ones. Times that no
  // clock shows count for what they add up to, in 64 bits of microseconds.
  static KelInterval timeSubtract(const KelTimeBase& time, const KelTimeBase& from, KelInterval::Qualifier qualifier);

 private:
  int hour_;
  int minute_;
  long microseconds_;
};

// A date and a time of day.
class KELHOST_EXPORT KelTimeStampBase {
 public:
  constexpr KelTimeStampBase() = default;
  // Makes a time stamp as it is given: see isValid().
  constexpr KelTimeStampBase(const KelDate& date, const KelTimeBase& time) : date_(date), time_(time) {}

  // Give the two parts, valid as long as the time stamp.
  constexpr const KelDate& date() const { return date_; }
  constexpr const KelTimeBase& time() const { return time_; }

  // Tells whether date and time both are.
  bool isValid() const { return date_.isValid() && time_.isValid(); }

  // Moves the time stamp on, or back. Raises when it is not on the calendar or would leave it, and then changes
  // nothing.
  void addInterval(const KelInterval& interval);

  // Gives the fields as "1970-01-01 00:00:00.000000", whatever they are.
  KelWstring asString() const;

 protected:
  KelDate date_;      // checked by isValid() alone
  KelTimeBase time_;  // checked by isValid() alone
};

// A time stamp with the time zone that its clock stands in, or none. The zone lives as long as the process.
class KELHOST_EXPORT KelTimeStamp : public KelTimeStampBase {
 public:
  constexpr KelTimeStamp() = default;
  // Makes a time stamp as it is given, whose clock stands in `zone`; null for none.
  constexpr KelTimeStamp(const KelDate& date, const KelTimeBase& time, const KelTimeZone* zone = nullptr)
      : KelTimeStampBase(date, time), zone_(zone) {}

  // Gives the present time, in the zone "Etc/GMT-0".
  static KelTimeStamp currentGMTTime();

  constexpr const KelTimeZone* timeZone() const { return zone_; }  // null for none
  // Gives the stamp another zone. When it has one, date and time change so that they tell the same instant in the new
  // zone, which may lie just outside the years 1 to 9999. A stamp that has none, or is not on the calendar, or is given
  // none (null), keeps date and time.
  void setTimeZone(const KelTimeZone* zone);
  // Gives the seconds that the stamp's clock is ahead of UTC. The stamp has a zone and is on the calendar. After a
  // shift this tells the two times apart that the clock shows twice; otherwise such a time counts as the later one.
  int offset() const;

 private:
  std::int64_t localSeconds() const;

  const KelTimeZone* zone_ = nullptr;
  // What the last shift came to: the local time, in seconds since 1970, and the offset then. It counts only as long as
  // the stamp still tells that time.
  std::int64_t shiftedLocal_ = INT64_MIN;
  int shiftedOffset_ = 0;
};
