#include "keltimestampformatter.hpp"

#include "calendar.hpp"
#include "timefailures.hpp"
#include "timetext.hpp"

using namespace oxr;

namespace {

// The stamp that the fields of another carry over to; false when that is outside the calendar.
bool carryOver(const KelTimeStamp& stamp, KelTimeStamp& carried) {
  const KelDate& date = stamp.date();
  const KelTimeBase& time = stamp.time();
  const std::int64_t monthsBefore = std::int64_t{date.month()} - 1;
  const std::int64_t day = dayNumber(date.year() + floorDivide(monthsBefore, 12),
                                     static_cast<int>(floorRemainder(monthsBefore, 12)) + 1, date.day());
  const std::int64_t minutes = std::int64_t{time.hour()} * 60 + time.minute();
  constexpr std::int64_t kMinutesPerDay = 24 * 60;
  const std::int64_t allMinutes = minutes + floorDivide(time.microseconds(), kMicrosecondsPerMinute);
  if (!stampAt(day + floorDivide(allMinutes, kMinutesPerDay),
               floorRemainder(allMinutes, kMinutesPerDay) * kMicrosecondsPerMinute +
                   floorRemainder(time.microseconds(), kMicrosecondsPerMinute),
               carried))
    return false;
  carried = KelTimeStamp(carried.date(), carried.time(), stamp.timeZone());
  return true;
}

}  // namespace

KelTimeStampPattern::KelTimeStampPattern(UnitView pattern) {
  auto program = std::make_shared<TimeProgram>();
  if (const char* const fault = compileTimePattern(pattern, *program))
    raiseTimeFailure(TimeFailure::badPattern, "KelTimeStampPattern::KelTimeStampPattern", fault, KelWstring(pattern));
  program_ = std::move(program);
}

KelTimeStampFormatter::operator KelTimeStamp() const {
  KelTimeStamp stamp;
  if (!readTimeText(pattern_.program(), text_, {stamp_, centuryWindow_, weekBegin_, firstWeekDays_, lenient_}, stamp))
      [[unlikely]]
    raiseTimeFailure(TimeFailure::textMismatch, "KelTimeStampFormatter::operator KelTimeStamp",
                     "The text does not fit the pattern", KelWstring(text_), source_);
  return stamp;
}

KelTimeStampFormatter::operator KelWstring() const {
  KelWstring text;
  write(text);
  return text;
}

void KelTimeStampFormatter::write(KelWstring& target) const {
  const TimeProgram& program = pattern_.program();
  const bool needsZone = (program.kinds & (bitOf(TimeKind::offset) | bitOf(TimeKind::zoneName))) != 0;
  if (stamp_.isValid() && (!needsZone || stamp_.timeZone() != nullptr)) [[likely]]
    return writeTimeText(program, stamp_, weekBegin_, firstWeekDays_, target);
  KelTimeStamp stamp = stamp_;
  if (!stamp_.isValid() && !(lenient_ && carryOver(stamp_, stamp)))
    raiseTimeFailure(TimeFailure::outOfRange, "KelTimeStampFormatter::write", "Date or time outside possible range",
                     stamp_.asString(), source_);
  if (needsZone && stamp.timeZone() == nullptr) stamp.setTimeZone(KelTimeZone::createDefault(nullptr));
  writeTimeText(program, stamp, weekBegin_, firstWeekDays_, target);
}
