#include "keltime.hpp"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "calendar.hpp"
#include "kelwstringconvertor.hpp"
#include "timefailures.hpp"

namespace oxr {

void raiseTimeFailure(TimeFailure failure, const char* function, const char* what, const KelWstring& subject,
                      const KelLogSource* source) {
  KelRecoverableException exception(source, __FILE__, __LINE__, function, KelLog::iDefaultLogSource,
                                    static_cast<int>(failure), 0);
  exception << what << subject;
  exception.throwThis();
  __builtin_unreachable();
}

}  // namespace oxr

using namespace oxr;

namespace {

std::int64_t numberOf(const KelDate& date) {
  return dayNumber(date.year(), date.month(), date.day());
}

// The microseconds since midnight. They fit whatever hour and minute are, and wrap around where the microseconds alone
// come near 64 bits.
std::int64_t microsecondsOf(const KelTimeBase& time) {
  const std::int64_t minutes = std::int64_t{time.hour()} * 60 + time.minute();
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(minutes * kMicrosecondsPerMinute) +
                                   static_cast<std::uint64_t>(time.microseconds()));
}

KelTimeBase timeOf(std::int64_t microseconds) {
  const std::int64_t minutes = microseconds / kMicrosecondsPerMinute;
  return {static_cast<int>(minutes / 60), static_cast<int>(minutes % 60),
          static_cast<long>(microseconds % kMicrosecondsPerMinute)};
}

KelDate dateOf(std::int64_t day) {
  const Date date = dateOfDay(day);
  return {date.day, static_cast<KelDate::Month>(date.month), date.year};
}

KelInterval intervalOf(std::int64_t microseconds, KelInterval::Qualifier qualifier) {
  return {qualifier, qualifier == KelInterval::days ? microseconds / kMicrosecondsPerDay : microseconds};
}

[[noreturn]] void raiseOutOfRange(const char* function, const KelTimeStampBase& stamp) {
  raiseTimeFailure(TimeFailure::outOfRange, function, "Date or time outside possible range", stamp.asString());
}

}  // namespace

bool KelDate::isValid() const {
  return isOnCalendar(year_, month_, day_);
}

int KelDate::daysOfMonth(Month month, bool leap) {
  return month >= January && month <= December ? daysInMonth(month, leap) : 0;
}

bool KelDate::isLeapYear(int year) {
  return isLeap(year);
}

KelInterval KelDate::dateSubtract(const KelDate& date, const KelDate& from, KelInterval::Qualifier qualifier) {
  for (const KelDate& each : {date, from})
    if (!each.isValid()) raiseOutOfRange("KelDate::dateSubtract", KelTimeStampBase(each, KelTimeBase()));
  return intervalOf((numberOf(date) - numberOf(from)) * kMicrosecondsPerDay, qualifier);
}

KelTimeBase::KelTimeBase(int hour, int minute, double seconds)
    : KelTimeBase(hour, minute, std::lround(seconds * 1'000'000.0)) {}

KelInterval KelTimeBase::timeSubtract(const KelTimeBase& time, const KelTimeBase& from,
                                      KelInterval::Qualifier qualifier) {
  const std::uint64_t difference =
      static_cast<std::uint64_t>(microsecondsOf(time)) - static_cast<std::uint64_t>(microsecondsOf(from));
  return intervalOf(static_cast<std::int64_t>(difference), qualifier);
}

void KelTimeStampBase::addInterval(const KelInterval& interval) {
  if (!isValid()) raiseOutOfRange("KelTimeStampBase::addInterval", *this);
  const std::int64_t unit = interval.qualifier() == KelInterval::days ? kMicrosecondsPerDay : 1;
  const std::int64_t now = numberOf(date_) * kMicrosecondsPerDay + microsecondsOf(time_);
  std::int64_t span = 0, then = 0;
  if (__builtin_mul_overflow(std::int64_t{interval.value()}, unit, &span) || __builtin_add_overflow(now, span, &then) ||
      then < kFirstDay * kMicrosecondsPerDay || then >= (kLastDay + 1) * kMicrosecondsPerDay)
    raiseOutOfRange("KelTimeStampBase::addInterval", *this);
  date_ = dateOf(floorDivide(then, kMicrosecondsPerDay));
  time_ = timeOf(floorRemainder(then, kMicrosecondsPerDay));
}

KelWstring KelTimeStampBase::asString() const {
  // Seconds and their fraction have one sign, which stands before both.
  const long microseconds = time_.microseconds();
  const auto magnitude =
      microseconds < 0 ? 0 - static_cast<unsigned long>(microseconds) : static_cast<unsigned long>(microseconds);
  std::array<char, 128> text;
  const int length = std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%s%02lu.%06lu", date_.year(),
                                   static_cast<int>(date_.month()), date_.day(), time_.hour(), time_.minute(),
                                   microseconds < 0 ? "-" : "", magnitude / 1'000'000, magnitude % 1'000'000);
  return fromUtf8(std::string_view(text.data(), static_cast<std::size_t>(length)));
}

KelTimeStamp KelTimeStamp::currentGMTTime() {
  using std::chrono::microseconds;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  KelTimeStamp stamp(KelDate(), KelTimeBase(), KelTimeZone::ofOffset(0));
  stamp.addInterval({KelInterval::microseconds, std::chrono::duration_cast<microseconds>(now).count()});
  return stamp;
}

std::int64_t KelTimeStamp::localSeconds() const {
  return numberOf(date_) * kSecondsPerDay + microsecondsOf(time_) / 1'000'000;
}

int KelTimeStamp::offset() const {
  if (zone_->isFixed()) return zone_->offsetAt(0);
  const std::int64_t local = localSeconds();
  return local == shiftedLocal_ ? shiftedOffset_ : zone_->offsetAtLocal(local);
}

void KelTimeStamp::setTimeZone(const KelTimeZone* zone) {
  if (zone == zone_) return;
  const bool isShift = zone_ != nullptr && zone != nullptr && isValid();
  const std::int64_t local = isShift ? localSeconds() : 0;
  const std::int64_t instant = isShift ? local - offset() : 0;
  zone_ = zone;
  shiftedLocal_ = INT64_MIN;
  if (!isShift) return;
  shiftedOffset_ = zone->offsetAt(instant);
  shiftedLocal_ = instant + shiftedOffset_;
  if (shiftedLocal_ == local) return;
  date_ = dateOf(floorDivide(shiftedLocal_, kSecondsPerDay));
  time_ = timeOf(floorRemainder(shiftedLocal_, kSecondsPerDay) * 1'000'000 + time_.microseconds() % 1'000'000);
}
