// Writes time stamps as text: the fields of the pattern one after the other, the shape that it may begin with first and
// at once. Two digits at a time come from a table.

#include <algorithm>
#include <bit>
#include <cstring>

#include "calendar.hpp"
#include "timenames.hpp"
#include "timetext.hpp"

namespace oxr {

namespace {

using Pair = std::array<unsigned short, 2>;
constexpr std::array<Pair, 100> kPairs = [] {
  std::array<Pair, 100> pairs{};
  for (unsigned i = 0; i < pairs.size(); ++i)
    pairs[i] = {static_cast<unsigned short>('0' + i / 10), static_cast<unsigned short>('0' + i % 10)};
  return pairs;
}();

void putPair(unsigned short* target, int value) {
  std::memcpy(target, kPairs[static_cast<std::size_t>(value)].data(), sizeof(Pair));
}

// Writes the first `count` of six digits.
[[gnu::always_inline]] inline void putFractionDigits(unsigned short* target, int microseconds, std::size_t count) {
  std::array<unsigned short, 6> digits;
  putPair(digits.data(), microseconds / 10'000);
  putPair(digits.data() + 2, microseconds / 100 % 100);
  putPair(digits.data() + 4, microseconds % 100);
  std::copy_n(digits.data(), count, target);
}

class Writer {
 public:
  Writer(const KelTimeStamp& stamp, UnitView weekBegin, int firstWeekDays, bool writesUtcAsZ, unsigned short* target)
      : stamp_(stamp),
        weekBegin_(weekBegin),
        firstWeekDays_(firstWeekDays),
        writesUtcAsZ_(writesUtcAsZ),
        at_(target),
        second_(static_cast<int>(stamp.time().microseconds() / kMicrosecondsPerSecond)),
        microseconds_(static_cast<int>(stamp.time().microseconds() % kMicrosecondsPerSecond)) {}

  unsigned short* end() const { return at_; }

  [[gnu::always_inline]] void putShape(const TimeShape& shape) {
    if (shape.width == 0) return;
    std::memcpy(at_, shape.units.data(), sizeof shape.units);
    const auto put = [&](TimeKind kind, int value) {
      if (const std::uint8_t place = shape.places[indexOf(kind)]; place != TimeShape::kAbsent)
        putPair(at_ + place, value);
    };
    if (const std::uint8_t place = shape.places[indexOf(TimeKind::year)]; place != TimeShape::kAbsent) {
      putPair(at_ + place, stamp_.date().year() / 100);
      putPair(at_ + place + 2, stamp_.date().year() % 100);
    }
    put(TimeKind::month, stamp_.date().month());
    put(TimeKind::day, stamp_.date().day());
    put(TimeKind::hour, stamp_.time().hour());
    put(TimeKind::minute, stamp_.time().minute());
    put(TimeKind::second, second_);
    if (const std::uint8_t place = shape.places[indexOf(TimeKind::fraction)]; place != TimeShape::kAbsent)
      putFractionDigits(at_ + place, microseconds_, shape.fractionDigits);
    at_ += shape.width;
  }

  void put(const TimeField& field) {
    switch (field.kind) {
      case TimeKind::literal:
        *at_++ = field.unit;
        break;
      case TimeKind::fraction:
        putFraction(field);
        break;
      case TimeKind::offset:
        putOffset(field);
        break;
      case TimeKind::monthName:
      case TimeKind::weekdayName:
      case TimeKind::halfDay:
      case TimeKind::era:
        putName(field);
        break;
      default:
        putNumber(field);
    }
  }

  void putText(UnitView text) { at_ = std::copy(text.begin(), text.end(), at_); }

 private:
  std::int64_t day() const { return dayNumber(stamp_.date().year(), stamp_.date().month(), stamp_.date().day()); }

  int valueOf(TimeKind kind) const {
    const KelDate& date = stamp_.date();
    const int hour = stamp_.time().hour();
    switch (kind) {
      case TimeKind::year:
        return date.year();
      case TimeKind::month:
        return date.month();
      case TimeKind::day:
        return date.day();
      case TimeKind::hour:
        return hour;
      case TimeKind::minute:
        return stamp_.time().minute();
      case TimeKind::second:
        return second_;
      case TimeKind::dayOfYear:
        return static_cast<int>(day() - dayNumber(date.year(), 1, 1)) + 1;
      case TimeKind::hour24:
        return hour == 0 ? 24 : hour;
      case TimeKind::hour11:
        return hour % 12;
      case TimeKind::hour12:
        return hour % 12 == 0 ? 12 : hour % 12;
      case TimeKind::weekdayInMonth:
        return (date.day() - 1) / 7 + 1;
      default:
        return weekValueOf(kind);
    }
  }

  int weekValueOf(TimeKind kind) const {
    const WeekRule rule = weekRuleOf(weekBegin_, firstWeekDays_);
    if (kind == TimeKind::localWeekday)
      return static_cast<int>(floorRemainder(std::int64_t{weekdayOf(day())} - rule.firstDay, 7)) + 1;
    const Weeks weeks = weeksOf(day(), rule);
    return kind == TimeKind::weekOfYear ? weeks.ofYear : weeks.ofMonth;
  }

  // Writes a value below 10,000 with leading zeros up to `least` digits.
  void putDigits(int value, std::size_t least) {
    const std::size_t digits = value < 10 ? 1 : value < 100 ? 2 : value < 1'000 ? 3 : 4;
    if (least > digits) at_ = std::fill_n(at_, least - digits, static_cast<unsigned short>('0'));
    at_ += digits;
    for (unsigned short* digit = at_; digit != at_ - digits; value /= 10)
      *--digit = static_cast<unsigned short>('0' + value % 10);
  }

  void putNumber(const TimeField& field) {
    const int value = valueOf(field.kind);
    putDigits(field.kind == TimeKind::year && field.letters == 2 ? value % 100 : value, field.letters);
  }

  void putFraction(const TimeField& field) {
    const std::size_t kept = std::min<std::size_t>(field.letters, 6);
    putFractionDigits(at_, microseconds_, kept);
    at_ = std::fill_n(at_ + kept, field.letters - kept, static_cast<unsigned short>('0'));
  }

  void putName(const TimeField& field) {
    int value = 1;  // the only era of the calendar
    if (field.kind == TimeKind::monthName) value = stamp_.date().month() - 1;
    if (field.kind == TimeKind::weekdayName) value = weekdayOf(day());
    if (field.kind == TimeKind::halfDay) value = stamp_.time().hour() / 12;
    putText(nameOf(field.kind, field.width, static_cast<std::size_t>(value)));
  }

  void putOffset(const TimeField& field) {
    // Old local times have seconds, which ISO 8601 has no place for: only the forms that are ICU's own keep them.
    const bool keepsSeconds = field.form == OffsetForm::localized || field.form == OffsetForm::extendedOrZ;
    const int offset = keepsSeconds ? stamp_.offset() : stamp_.offset() / 60 * 60;
    if (offset == 0 && (writesUtcAsZ_ || field.form == OffsetForm::extendedOrZ)) {
      *at_++ = 'Z';
      return;
    }
    if (field.form == OffsetForm::localized) {
      const std::u16string text = localizedOffset(offset);
      return putText({reinterpret_cast<const unsigned short*>(text.data()), text.size()});
    }
    const int magnitude = offset < 0 ? -offset : offset;
    *at_++ = static_cast<unsigned char>(offset < 0 ? '-' : '+');
    putPair(at_, magnitude / 3600);
    at_ += 2;
    const int minutes = magnitude / 60 % 60, seconds = magnitude % 60;
    const bool hasColon = field.form != OffsetForm::basic;
    if (field.form != OffsetForm::hours || minutes != 0) putPart(hasColon, minutes);
    if (seconds != 0) putPart(hasColon, seconds);
  }
  void putPart(bool hasColon, int value) {
    if (hasColon) *at_++ = ':';
    putPair(at_, value);
    at_ += 2;
  }

  const KelTimeStamp& stamp_;
  const UnitView weekBegin_;
  const int firstWeekDays_;
  const bool writesUtcAsZ_;
  unsigned short* at_;
  const int second_;
  const int microseconds_;
};

// The name of the stamp's zone, in the width that the pattern asks for first; where it asks for both the text is
// longer.
std::u16string zoneNameOf(const KelTimeStamp& stamp, NameWidth width) {
  const KelDate& date = stamp.date();
  const KelTimeBase& time = stamp.time();
  const std::int64_t local = dayNumber(date.year(), date.month(), date.day()) * kSecondsPerDay + time.hour() * 3600 +
                             time.minute() * 60 + time.microseconds() / kMicrosecondsPerSecond;
  return zoneNameAt(*stamp.timeZone(), width, local - stamp.offset());
}

}  // namespace

void writeTimeText(const TimeProgram& program, const KelTimeStamp& stamp, UnitView weekBegin, int firstWeekDays,
                   KelWstring& target) {
  // Names of zones are the only texts of any length: the room for them is added when they are known.
  std::array<std::u16string, 2> zoneNames;
  std::size_t room = program.maxUnits;
  if ((program.kinds & bitOf(TimeKind::zoneName)) != 0)
    for (const TimeField& field : program.fields) {
      if (field.kind != TimeKind::zoneName) continue;
      std::u16string& name = zoneNames[static_cast<std::size_t>(field.width)];
      if (name.empty()) name = zoneNameOf(stamp, field.width);
      room += name.size();
    }
  unsigned short* const begin = target.resizeForOverwrite(static_cast<unsigned>(room));
  Writer writer(stamp, weekBegin, firstWeekDays, program.writesUtcAsZ, begin);
  writer.putShape(program.shape);
  for (std::size_t i = program.shape.fieldCount; i < program.fields.size(); ++i) {
    const TimeField& field = program.fields[i];
    if (field.kind != TimeKind::zoneName) {
      writer.put(field);
      continue;
    }
    const std::u16string& name = zoneNames[static_cast<std::size_t>(field.width)];
    writer.putText({reinterpret_cast<const unsigned short*>(name.data()), name.size()});
  }
  target.cutTo(static_cast<unsigned>(writer.end() - begin));
}

}  // namespace oxr
