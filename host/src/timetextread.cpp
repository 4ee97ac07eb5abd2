// Reads time stamps from text.
//
// The fields of the pattern are walked along, each takes its units from the text and leaves a value; afterwards the
// values are put together. Most texts are simpler than that: a shape, and perhaps an offset after it. They are held
// against the shape at once and their numbers read where they stand; what has any other form, or does not tell a time
// of the calendar as it stands, is left to the walk.

#include <unicode/uchar.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "calendar.hpp"
#include "timenames.hpp"
#include "timetext.hpp"

namespace oxr {

namespace {

constexpr std::size_t kMaxDigits = 9;  // of a number that is read leniently: it fits 32 bits
constexpr std::size_t kMicrosecondDigits = 6;

constexpr std::array<int, kMicrosecondDigits + 1> kPowersOfTen = {1, 10, 100, 1'000, 10'000, 100'000, 1'000'000};

bool isDigit(unsigned short unit) {
  return unit >= '0' && unit <= '9';
}
int digit(unsigned short unit) {
  return unit - '0';
}
int twoDigits(const unsigned short* units) {
  return 10 * units[0] + units[1] - 11 * '0';
}

// The microseconds that digits after the point stand for; those beyond six are dropped.
int fractionOf(UnitView digits) {
  int value = 0;
  const std::size_t kept = std::min(digits.size(), kMicrosecondDigits);
  for (std::size_t i = 0; i < kept; ++i)
    value = value * 10 + digit(digits[i]);
  return value * kPowersOfTen[kMicrosecondDigits - kept];
}

int secondOf(const KelTimeBase& time) {
  return static_cast<int>(time.microseconds() / kMicrosecondsPerSecond);
}
int fractionOf(const KelTimeBase& time) {
  return static_cast<int>(time.microseconds() % kMicrosecondsPerSecond);
}

constexpr std::uint32_t kHourKinds =
    bitOf(TimeKind::hour) | bitOf(TimeKind::hour24) | bitOf(TimeKind::hour11) | bitOf(TimeKind::hour12);
constexpr std::uint32_t kWeekKinds =
    bitOf(TimeKind::weekOfYear) | bitOf(TimeKind::weekOfMonth) | bitOf(TimeKind::weekdayInMonth);
constexpr std::uint32_t kWeekdayKinds = bitOf(TimeKind::weekdayName) | bitOf(TimeKind::localWeekday);
constexpr std::uint32_t kDayKinds = bitOf(TimeKind::day) | bitOf(TimeKind::dayOfYear);
// What a text told.
struct Told {
  std::array<int, kValueKinds> values;  // of the kinds that `kinds` has a bit for
  std::uint32_t kinds = 0;
  // Of several fields that give the hour, or the day, the last one counts.
  TimeKind hourKind = TimeKind::hour;
  TimeKind dayKind = TimeKind::day;
  const KelTimeZone* zone = nullptr;
  SavingTime saving = SavingTime::unknown;

  bool has(TimeKind kind) const { return (kinds & bitOf(kind)) != 0; }
  bool hasAny(std::uint32_t bits) const { return (kinds & bits) != 0; }
  int operator[](TimeKind kind) const { return values[indexOf(kind)]; }
  int valueOr(TimeKind kind, int otherwise) const { return has(kind) ? (*this)[kind] : otherwise; }
  std::optional<int> optional(TimeKind kind) const { return has(kind) ? std::optional((*this)[kind]) : std::nullopt; }
  void set(TimeKind kind, int value) {
    values[indexOf(kind)] = value;
    kinds |= bitOf(kind);
  }
};

// The year that two digits stand for: in the hundred years that begin in a year ending with the window's two digits and
// hold the present one.
int yearInWindow(int twoDigitYear, int window, int presentYear) {
  const auto begin = static_cast<int>(presentYear - floorRemainder(std::int64_t{presentYear} - window, 100));
  return begin + static_cast<int>(floorRemainder(std::int64_t{twoDigitYear} - begin, 100));
}

class Reader {
 public:
  Reader(const TimeProgram& program, UnitView text, const TimeReading& reading, Told& told)
      : program_(program), at_(text.data()), end_(text.data() + text.size()), reading_(reading), told_(told) {}

  bool read() {
    return std::all_of(program_.fields.begin(), program_.fields.end(),
                       [this](const TimeField& field) { return readField(field); }) &&
           (reading_.lenient || at_ == end_);
  }

 private:
  std::size_t left() const { return static_cast<std::size_t>(end_ - at_); }
  UnitView rest() const { return {at_, left()}; }

  bool readField(const TimeField& field) {
    switch (field.kind) {
      case TimeKind::literal:
        return readLiteral(field);
      case TimeKind::offset:
        return readOffset(field);
      case TimeKind::zoneName:
        return readZoneName(field);
      case TimeKind::monthName:
      case TimeKind::weekdayName:
      case TimeKind::halfDay:
      case TimeKind::era:
        return readName(field);
      default:
        return readNumber(field);
    }
  }

  void skipWhiteSpace() {
    while (at_ != end_ && u_isUWhiteSpace(*at_) != 0)
      ++at_;
  }

  bool readLiteral(const TimeField& field) {
    if (reading_.lenient) {
      if (u_isUWhiteSpace(field.unit) != 0) return skipWhiteSpace(), true;
      if (at_ != end_ && *at_ != field.unit) skipWhiteSpace();
    }
    if (at_ == end_ || *at_ != field.unit) return false;
    ++at_;
    return true;
  }

  // How many of `found` digits a field takes; 0 when they are too few or too many for it.
  std::size_t digitsTaken(const TimeField& field, std::size_t found) const {
    if (field.isLaterInRow) return found >= field.least ? field.least : 0;
    const std::size_t own = found > field.digitsAfter ? found - field.digitsAfter : 0;
    if (!reading_.lenient) return own >= field.least && own <= field.most ? own : 0;
    if (field.digitsAfter != 0) return std::min<std::size_t>(own, field.least);
    return own <= kMaxDigits || field.kind == TimeKind::fraction ? own : 0;
  }

  bool readNumber(const TimeField& field) {
    if (reading_.lenient) skipWhiteSpace();
    // A row of numbers sees all its digits, and one more so that too many show.
    const std::size_t limit = field.isLaterInRow ? field.least
                              : reading_.lenient ? left()
                                                 : std::size_t{field.most} + field.digitsAfter + 1;
    const auto digitsEnd = std::find_if_not(at_, at_ + std::min(limit, left()), isDigit);
    const std::size_t taken = digitsTaken(field, static_cast<std::size_t>(digitsEnd - at_));
    if (taken == 0) return false;
    const UnitView digits(at_, taken);
    at_ += taken;
    return setNumber(field, digits);
  }

  bool setNumber(const TimeField& field, UnitView digits) {
    if (field.kind == TimeKind::fraction) return told_.set(field.kind, fractionOf(digits)), true;
    const auto significant = digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
    if (significant.size() > kMaxDigits) return false;
    int value = 0;
    for (const unsigned short unit : significant)
      value = value * 10 + digit(unit);
    if (field.kind == TimeKind::year && field.letters <= 2 && digits.size() == 2)
      value = yearInWindow(value, reading_.centuryWindow, reading_.otherwise.date().year());
    told_.set(field.kind, value);
    if ((bitOf(field.kind) & kHourKinds) != 0) told_.hourKind = field.kind;
    if ((bitOf(field.kind) & kDayKinds) != 0) told_.dayKind = field.kind;
    return true;
  }

  bool readName(const TimeField& field) {
    if (reading_.lenient) skipWhiteSpace();
    std::optional<NameMatch> match = matchName(field.kind, field.width, rest());
    // In lenient reading full and abbreviated names stand for each other, the longer one first.
    if (reading_.lenient)
      for (const NameWidth width : {NameWidth::abbreviated, NameWidth::full})
        if (const auto other = matchName(field.kind, width, rest()); other && (!match || other->length > match->length))
          match = other;
    if (!match) return false;
    at_ += match->length;
    const auto value = static_cast<int>(match->value);
    if (field.kind == TimeKind::monthName)
      told_.set(TimeKind::month, value + 1);
    else
      told_.set(field.kind, value);
    return true;
  }

  // Reads two digits up to `most`.
  bool readPair(int most, int& value) {
    if (left() < 2 || !isDigit(at_[0]) || !isDigit(at_[1])) return false;
    const int found = twoDigits(at_);
    if (found > most) return false;
    value = found;
    at_ += 2;
    return true;
  }

  // Reads a minute or second of an offset, after a colon if `hasColon`; leaves the place where it is if there is none.
  bool readPart(bool hasColon, int& value) {
    const unsigned short* const before = at_;
    if (hasColon && (at_ == end_ || *at_ != ':')) return false;
    at_ += hasColon ? 1 : 0;
    if (readPair(59, value)) return true;
    at_ = before;
    return false;
  }

  // offset = "Z" | sign hours [minutes [seconds]], with or without colons as the form asks. Seconds, which only old
  // local times have, belong to one form and are let pass in the others when lenient.
  bool readOffset(const TimeField& field) {
    if (reading_.lenient) skipWhiteSpace();
    if (at_ == end_) return false;
    const unsigned short sign = *at_;
    const bool isLocalized = field.form == OffsetForm::localized;
    if (sign == 'Z' && (!isLocalized || program_.writesUtcAsZ)) return ++at_, setOffset(0);
    if (isLocalized) return readLocalizedOffset();
    if (sign != '+' && sign != '-') return reading_.lenient && readLocalizedOffset();
    ++at_;
    int hours = 0, minutes = 0, seconds = 0;
    if (!readPair(23, hours)) return false;
    const bool hasColon = reading_.lenient ? at_ != end_ && *at_ == ':' : field.form != OffsetForm::basic;
    const bool mayEnd = reading_.lenient || field.form == OffsetForm::hours;
    const bool hasMinutes = readPart(hasColon, minutes);
    if (!hasMinutes && !mayEnd) return false;
    // Without a colon digits that follow may be the next field's.
    const bool mayHaveSeconds = reading_.lenient || field.form == OffsetForm::extendedOrZ;
    if (mayHaveSeconds && hasMinutes && (hasColon || !field.isBeforeDigits)) readPart(hasColon, seconds);
    const int offset = (hours * 60 + minutes) * 60 + seconds;
    return setOffset(sign == '-' ? -offset : offset);
  }

  bool readLocalizedOffset() {
    const std::optional<OffsetMatch> match = matchLocalizedOffset(rest());
    if (!match) return false;
    at_ += match->length;
    return setOffset(match->seconds);
  }

  bool setOffset(int seconds) {
    told_.zone = KelTimeZone::ofOffset(seconds);
    told_.saving = SavingTime::unknown;
    return true;
  }

  bool readZoneName(const TimeField& field) {
    if (reading_.lenient) skipWhiteSpace();
    const std::optional<ZoneMatch> match = matchZone(field.width, rest());
    if (!match) return false;
    at_ += match->length;
    told_.zone = match->zone;
    told_.saving = match->saving;
    return true;
  }

  const TimeProgram& program_;
  const unsigned short* at_;
  const unsigned short* const end_;
  const TimeReading& reading_;
  Told& told_;
};

// Whether all numbers are in their ranges; the days of a month and the weeks are looked at with the date.
bool areInRange(const Told& told) {
  struct Range {
    TimeKind kind;
    int least, most;
  };
  constexpr Range kRanges[] = {
      {TimeKind::year, kFirstYear, kLastYear},
      {TimeKind::month, 1, 12},
      {TimeKind::day, 1, 31},
      {TimeKind::hour, 0, 23},
      {TimeKind::minute, 0, 59},
      {TimeKind::second, 0, 59},
      {TimeKind::dayOfYear, 1, 366},
      {TimeKind::hour24, 1, 24},
      {TimeKind::hour11, 0, 11},
      {TimeKind::hour12, 1, 12},
      {TimeKind::weekOfYear, 1, 53},
      {TimeKind::weekOfMonth, 0, 6},
      {TimeKind::weekdayInMonth, 1, 5},
      {TimeKind::localWeekday, 1, 7},
  };
  return std::all_of(std::begin(kRanges), std::end(kRanges), [&](const Range& range) {
    return !told.has(range.kind) || (told[range.kind] >= range.least && told[range.kind] <= range.most);
  });
}

// The hour of the day. One of 24 hours needs no half of the day and leaves it out of account.
int hourOf(const Told& told, int otherwise) {
  const int half = told.valueOr(TimeKind::halfDay, otherwise / 12);
  if (!told.has(told.hourKind)) return otherwise % 12 + 12 * half;
  const int hour = told[told.hourKind];
  switch (told.hourKind) {
    case TimeKind::hour12:
      return (hour == 12 ? 0 : hour) + 12 * half;
    case TimeKind::hour11:
      return hour + 12 * half;
    case TimeKind::hour24:
      return hour == 24 ? 0 : hour;
    default:
      return hour;
  }
}

// Puts a date together.
class DateOf {
 public:
  DateOf(const Told& told, const TimeReading& reading)
      : told_(told),
        reading_(reading),
        year_(told.valueOr(TimeKind::year, reading.otherwise.date().year())),
        month_(told.valueOr(TimeKind::month, reading.otherwise.date().month())) {
    if (told.has(TimeKind::era) && told[TimeKind::era] == 0) year_ = 1 - year_;
  }

  // The number of the day; nothing where there is none.
  std::optional<std::int64_t> day() {
    if (told_.hasAny(kWeekKinds)) return dayOfWeek();
    if (told_.hasAny(kWeekdayKinds) && !told_.hasAny(kDayKinds)) return weekdayNear();
    return told_.dayKind == TimeKind::dayOfYear ? dayOfYear() : dayOfMonth();
  }

 private:
  std::optional<std::int64_t> dayOfYear() const {
    const int day = told_[TimeKind::dayOfYear];
    if (!reading_.lenient && day > (isLeap(year_) ? 366 : 365)) return std::nullopt;
    return dayNumber(year_, 1, day);
  }

  // A month out of its range counts from January of the year.
  std::optional<std::int64_t> dayOfMonth() const {
    const std::int64_t year = year_ + floorDivide(std::int64_t{month_} - 1, 12);
    const int month = static_cast<int>(floorRemainder(std::int64_t{month_} - 1, 12)) + 1;
    const int length = daysInMonth(month, isLeap(year));
    const int day = told_.valueOr(TimeKind::day, std::min(reading_.otherwise.date().day(), length));
    if (!reading_.lenient && (day < 1 || day > length)) return std::nullopt;
    return dayNumber(year, month, day);
  }

  int firstDay() {
    if (!rule_) rule_ = weekRuleOf(reading_.weekBegin, reading_.firstWeekDays);
    return rule_->firstDay;
  }
  // The day of the week that the text tells; 0 for Sunday.
  std::optional<int> weekday() {
    if (told_.has(TimeKind::weekdayName)) return told_[TimeKind::weekdayName];
    if (!told_.has(TimeKind::localWeekday)) return std::nullopt;
    return static_cast<int>(floorRemainder(std::int64_t{told_[TimeKind::localWeekday]} - 1 + firstDay(), 7));
  }

  // The day of that name in the week of the day that the other fields give.
  std::optional<std::int64_t> weekdayNear() {
    const std::optional<std::int64_t> near = dayOfMonth();
    if (!near) return near;
    const std::int64_t begin = *near - floorRemainder(std::int64_t{weekdayOf(*near)} - firstDay(), 7);
    return begin + floorRemainder(std::int64_t{*weekday()} - firstDay(), 7);
  }

  std::optional<std::int64_t> dayOfWeek() {
    const KelDate& otherwise = reading_.otherwise.date();
    const int weekdayOtherwise = weekdayOf(dayNumber(otherwise.year(), otherwise.month(), otherwise.day()));
    firstDay();
    const WeekDate date{year_,
                        month_,
                        weekday().value_or(weekdayOtherwise),
                        told_.optional(TimeKind::day),
                        told_.optional(TimeKind::dayOfYear),
                        told_.optional(TimeKind::weekOfYear),
                        told_.optional(TimeKind::weekOfMonth),
                        told_.optional(TimeKind::weekdayInMonth)};
    return dayOfWeekDate(date, *rule_, reading_.lenient);
  }

  const Told& told_;
  const TimeReading& reading_;
  int year_;
  int month_;
  std::optional<WeekRule> rule_;
};

// The zone of the stamp. A name may tell standard or daylight time where the zone has the other: then the clocks are
// those of the name.
const KelTimeZone* zoneOf(const Told& told, std::int64_t localSeconds, const KelTimeZone* otherwise) {
  if (told.zone == nullptr) return otherwise;
  if (told.saving == SavingTime::unknown) return told.zone;
  return zoneWithSaving(*told.zone, told.saving == SavingTime::daylight, localSeconds);
}

// Puts the stamp together, whatever was told.
[[gnu::noinline]] bool resolve(const Told& told, const TimeReading& reading, KelTimeStamp& stamp) {
  if (!reading.lenient && !areInRange(told)) return false;
  const std::optional<std::int64_t> day = DateOf(told, reading).day();
  const KelTimeBase& otherwise = reading.otherwise.time();
  const std::int64_t seconds =
      (std::int64_t{hourOf(told, otherwise.hour())} * 60 + told.valueOr(TimeKind::minute, otherwise.minute())) * 60 +
      told.valueOr(TimeKind::second, secondOf(otherwise));
  if (!day ||
      !stampAt(*day, seconds * kMicrosecondsPerSecond + told.valueOr(TimeKind::fraction, fractionOf(otherwise)), stamp))
    return false;
  const std::int64_t local = *day * kSecondsPerDay + seconds;
  stamp = KelTimeStamp(stamp.date(), stamp.time(), zoneOf(told, local, reading.otherwise.timeZone()));
  return true;
}

[[gnu::noinline]] bool readGeneral(const TimeProgram& program, UnitView text, const TimeReading& reading,
                                   KelTimeStamp& stamp) {
  Told told;
  return reading.otherwise.isValid() && Reader(program, text, reading, told).read() && resolve(told, reading, stamp);
}

// Whether the units are of the shape. Vectors of 16-bit units: all of a block are compared in a few instructions.
[[gnu::always_inline]] inline bool fitsShape(const TimeShape& shape, const unsigned short* units) {
  using Vector = unsigned short __attribute__((vector_size(sizeof(TimeShape::Block))));
  const auto load = [](const unsigned short* from) {
    Vector vector;
    std::memcpy(&vector, from, sizeof vector);
    return vector;
  };
  Vector misfits{};
  for (std::size_t block = 0; block * TimeShape::kBlock < shape.width; ++block) {
    const Vector above = load(units + shape.blockBegin(block)) - load(shape.lowest[block].data());
    misfits |= static_cast<Vector>(above > load(shape.range[block].data()));
  }
  using Halves = std::uint64_t __attribute__((vector_size(sizeof(Vector))));
  const auto halves = reinterpret_cast<Halves>(misfits);
  return (halves[0] | halves[1]) == 0;
}

// Reads an offset that is all that is left of a text: "+hh:mm", "+hhmm" where the form has no colon, "Z". False for any
// other.
[[gnu::always_inline]] inline bool readOffsetFast(OffsetForm form, const unsigned short* at, std::size_t length,
                                                  int& seconds) {
  seconds = 0;
  if (length == 1) return *at == 'Z';
  const bool hasColon = form != OffsetForm::basic;
  if (length != (hasColon ? 6 : 5) || (hasColon && at[3] != ':')) return false;
  const unsigned short* const minutes = at + length - 2;
  if (!isDigit(at[1]) || !isDigit(at[2]) || !isDigit(minutes[0]) || !isDigit(minutes[1])) return false;
  const int hour = twoDigits(at + 1), minute = twoDigits(minutes);
  seconds = (hour * 60 + minute) * 60;
  if (*at == '-') seconds = -seconds;
  return hour < 24 && minute < 60 && (*at == '+' || *at == '-');
}

// Reads a text of a pattern that is a shape, or a shape and an offset, where the text has all of the date or nothing of
// it and tells a time of the calendar.
[[gnu::always_inline]] inline bool readFast(const TimeProgram& program, UnitView text, const KelTimeStamp& otherwise,
                                            KelTimeStamp& stamp) {
  const TimeShape& shape = program.shape;
  const unsigned short* const at = text.data();
  if (!shape.isWhole || text.size() < shape.width || !fitsShape(shape, at)) return false;
  const KelTimeZone* zone = otherwise.timeZone();
  if (shape.fieldCount != program.fields.size()) {
    int seconds;
    if (!readOffsetFast(program.fields.back().form, at + shape.width, text.size() - shape.width, seconds)) return false;
    zone = KelTimeZone::ofOffset(seconds);
  } else if (text.size() != shape.width) {
    return false;
  }
  const auto number = [&](TimeKind kind, int absent) __attribute__((always_inline)) {
    const std::uint8_t place = shape.places[indexOf(kind)];
    return place != TimeShape::kAbsent ? twoDigits(at + place) : absent;
  };
  int year = otherwise.date().year(), month = otherwise.date().month(), day = otherwise.date().day();
  if (const std::uint8_t place = shape.places[indexOf(TimeKind::year)]; place != TimeShape::kAbsent) {
    year = 100 * twoDigits(at + place) + twoDigits(at + place + 2);
    month = number(TimeKind::month, month);
    day = number(TimeKind::day, day);
  }
  const int hour = number(TimeKind::hour, otherwise.time().hour());
  const int minute = number(TimeKind::minute, otherwise.time().minute());
  const int second = number(TimeKind::second, secondOf(otherwise.time()));
  const int fraction = shape.fractionDigits != 0
                           ? fractionOf({at + shape.places[indexOf(TimeKind::fraction)], shape.fractionDigits})
                           : fractionOf(otherwise.time());
  if (!isOnCalendar(year, month, day) || hour > 23 || minute > 59 || second > 59) return false;
  // Made where it stays: a copy would wait for all of its fields to reach memory.
  std::construct_at(&stamp, KelDate(day, static_cast<KelDate::Month>(month), year),
                    KelTimeBase(hour, minute, second, fraction), zone);
  return true;
}

}  // namespace

bool stampAt(std::int64_t day, std::int64_t microseconds, KelTimeStamp& stamp) {
  const std::int64_t carried = day + floorDivide(microseconds, kMicrosecondsPerDay);
  if (carried < kFirstDay || carried > kLastDay) return false;
  const Date date = dateOfDay(carried);
  const std::int64_t time = floorRemainder(microseconds, kMicrosecondsPerDay);
  stamp = KelTimeStamp(KelDate(date.day, static_cast<KelDate::Month>(date.month), date.year),
                       KelTimeBase(static_cast<int>(time / kMicrosecondsPerMinute / 60),
                                   static_cast<int>(time / kMicrosecondsPerMinute % 60),
                                   static_cast<long>(time % kMicrosecondsPerMinute)));
  return true;
}

bool readTimeText(const TimeProgram& program, UnitView text, const TimeReading& reading, KelTimeStamp& stamp) {
  return readFast(program, text, reading.otherwise, stamp) || readGeneral(program, text, reading, stamp);
}

}  // namespace oxr
