#include "timenames.hpp"

#include <unicode/basictz.h>
#include <unicode/dtfmtsym.h>
#include <unicode/gregocal.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/tzfmt.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "calendar.hpp"
#include "kelforkhold.hpp"
#include "kelmemory.hpp"
#include "kelperthread.hpp"
#include "kelwstringconvertor.hpp"
#include "timefailures.hpp"

namespace oxr {

namespace {

constexpr double kMillisecondsPerDay = 86'400'000.0;
constexpr double kBeginningOfTime = -1e18;  // of a Gregorian calendar that was always in use

void requireIcu(UErrorCode status) {
  requireMemory(status);
  if (U_FAILURE(status))
    raiseTimeFailure(TimeFailure::icu, "oxr::requireIcu", "ICU cannot serve", fromUtf8(u_errorName(status)));
}

// A view that ICU may look at without a copy.
icu::UnicodeString aliasOf(UnitView text) {
  return {false, icu::ConstChar16Ptr(text.data()), static_cast<std::int32_t>(text.size())};
}

std::unique_ptr<icu::GregorianCalendar> makeCalendar() {
  UErrorCode status = U_ZERO_ERROR;
  auto calendar = std::make_unique<icu::GregorianCalendar>(*icu::TimeZone::getGMT(), icu::Locale::getDefault(), status);
  requireIcu(status);                               // a calendar that is half made must not be touched
  if (calendar == nullptr) throw std::bad_alloc();  // ICU's own operator new gives null
  calendar->setGregorianChange(kBeginningOfTime, status);
  requireIcu(status);
  return calendar;
}

// A family of names: the letter and the counts that ICU writes them by, and a day for each value, in steps.
struct NameFamily {
  TimeKind kind;
  char16_t letter;
  std::array<std::uint8_t, 4> letters;  // by width; 0 for one that there is not
  std::size_t count;
  double firstDay;  // since 1970
  double step;      // days
};
constexpr NameFamily kFamilies[] = {
    {TimeKind::monthName, u'M', {3, 4, 5, 0}, 12, 14, 30.5},
    {TimeKind::weekdayName, u'E', {3, 4, 5, 6}, 7, 3, 1},  // the fourth of January 1970 was a Sunday
    {TimeKind::halfDay, u'a', {1, 0, 5, 0}, 2, 0.25, 0.5},
    {TimeKind::era, u'G', {1, 4, 5, 0}, 2, static_cast<double>(dayNumber(-1, 6, 1)), 730'000},
};

using Names = std::vector<std::u16string>;

// Whether the names of months and days of the week are the same, and all there. ICU's own comparison does not expect
// symbols that were half made.
bool haveSameNames(const icu::DateFormatSymbols& left, const icu::DateFormatSymbols& right) {
  using Symbols = icu::DateFormatSymbols;
  const auto areSame = [](const icu::UnicodeString* a, int aCount, const icu::UnicodeString* b, int bCount) {
    return a != nullptr && b != nullptr && std::equal(a, a + aCount, b, b + bCount);
  };
  for (const auto width : {Symbols::ABBREVIATED, Symbols::WIDE, Symbols::NARROW}) {
    int leftMonths = 0, rightMonths = 0, leftDays = 0, rightDays = 0;
    const icu::UnicodeString* const monthsOfLeft = left.getMonths(leftMonths, Symbols::FORMAT, width);
    const icu::UnicodeString* const monthsOfRight = right.getMonths(rightMonths, Symbols::FORMAT, width);
    const icu::UnicodeString* const daysOfLeft = left.getWeekdays(leftDays, Symbols::FORMAT, width);
    const icu::UnicodeString* const daysOfRight = right.getWeekdays(rightDays, Symbols::FORMAT, width);
    if (!areSame(monthsOfLeft, leftMonths, monthsOfRight, rightMonths) ||
        !areSame(daysOfLeft, leftDays, daysOfRight, rightDays))
      return false;
  }
  return true;
}

// All names, made once in the language of the process.
class NameTable {
 public:
  NameTable() {
    UErrorCode status = U_ZERO_ERROR;
    const icu::DateFormatSymbols symbols(gregorianLocale(), status);
    requireIcu(status);
    for (const NameFamily& family : kFamilies)
      for (std::size_t width = 0; width < family.letters.size(); ++width)
        if (family.letters[width] != 0)
          at(family.kind, width) = askTwice([&] { return namesOf(family, family.letters[width], symbols); });
  }

  const Names& of(TimeKind kind, NameWidth width) const {
    return const_cast<NameTable*>(this)->at(kind, static_cast<std::size_t>(width));
  }

  static const NameTable& get() {
    return madeOnce<[] { return NameTable(); }>();
  }

 private:
  Names& at(TimeKind kind, std::size_t width) { return names_[indexOf(kind) - kNumberKinds][width]; }

  // The names of another calendar, which a locale may prefer, have no place here. The format has them from the start:
  // one that changes its calendar may do so by halves where memory fails.
  static icu::Locale gregorianLocale() {
    icu::Locale locale = icu::Locale::getDefault();
    UErrorCode status = U_ZERO_ERROR;
    locale.setKeywordValue("calendar", "gregorian", status);
    requireIcu(status);
    if (locale.isBogus() != 0) throw std::bad_alloc();
    return locale;
  }

  // `symbols` are the names as ICU reads them; a format may have others from a cache that was filled without memory.
  static Names namesOf(const NameFamily& family, std::uint8_t letters, const icu::DateFormatSymbols& symbols) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::SimpleDateFormat format(icu::UnicodeString(letters, family.letter, letters), gregorianLocale(), status);
    requireIcu(status);
    const icu::DateFormatSymbols* const ofFormat = format.getDateFormatSymbols();
    if (ofFormat == nullptr || !haveSameNames(*ofFormat, symbols)) throw std::bad_alloc();
    const auto calendar = makeCalendar();
    Names names;
    for (std::size_t i = 0; i < family.count; ++i) {
      icu::UnicodeString name;
      calendar->setTime((family.firstDay + static_cast<double>(i) * family.step) * kMillisecondsPerDay, status);
      format.format(*calendar, name, nullptr, status);
      requireIcu(status);
      if (requireMemory(name).isEmpty()) throw std::bad_alloc();  // all have a name
      names.emplace_back(name.getBuffer(), static_cast<std::size_t>(name.length()));
    }
    return names;
  }

  std::array<std::array<Names, 4>, kValueKinds - kNumberKinds> names_;
};

// ICU's zone texts, one object a thread: it keeps what it looked up. It takes a lock for each name.
const icu::TimeZoneFormat& zoneFormat() {
  return madeOnce<[] { return PerThread<icu::TimeZoneFormat>(); }>().get([] {
    const KelForkHold hold;
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::TimeZoneFormat> made(icu::TimeZoneFormat::createInstance(icu::Locale::getDefault(), status));
    requireIcu(status);
    if (made == nullptr) throw std::bad_alloc();
    return made;
  });
}

UTimeZoneFormatStyle styleOf(NameWidth width) {
  return width == NameWidth::full ? UTZFMT_STYLE_SPECIFIC_LONG : UTZFMT_STYLE_SPECIFIC_SHORT;
}

// The calendar of the thread, cleared, with the rule of weeks set.
icu::GregorianCalendar& weekCalendar(const WeekRule& rule) {
  icu::GregorianCalendar& calendar = madeOnce<[] { return PerThread<icu::GregorianCalendar>(); }>().get([] {
    const KelForkHold hold;
    return makeCalendar();
  });
  calendar.clear();
  calendar.setFirstDayOfWeek(static_cast<UCalendarDaysOfWeek>(rule.firstDay + UCAL_SUNDAY));
  calendar.setMinimalDaysInFirstWeek(static_cast<std::uint8_t>(rule.minimalDays));
  return calendar;
}

constexpr std::array<std::string_view, 7> kDaysOfWeek = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                         "Thursday", "Friday", "Saturday"};

bool isText(UnitView units, std::string_view ascii) {
  if (units.size() != ascii.size()) return false;
  for (std::size_t i = 0; i < ascii.size(); ++i)
    if (units[i] != static_cast<unsigned char>(ascii[i])) return false;
  return true;
}

}  // namespace

UnitView nameOf(TimeKind kind, NameWidth width, std::size_t value) {
  const std::u16string& name = NameTable::get().of(kind, width)[value];
  return {reinterpret_cast<const unsigned short*>(name.data()), name.size()};
}

std::optional<NameMatch> matchName(TimeKind kind, NameWidth width, UnitView text) {
  std::optional<NameMatch> best;
  bool isShared = false;
  const Names& names = NameTable::get().of(kind, width);
  for (std::size_t value = 0; value < names.size(); ++value) {
    const std::u16string& name = names[value];
    if (name.empty() || name.size() > text.size() || (best && name.size() < best->length) ||
        u_memcasecmp(name.data(), toIcu(text.data()), static_cast<std::int32_t>(name.size()), U_FOLD_CASE_DEFAULT) != 0)
      continue;
    isShared = best && name.size() == best->length;
    best = NameMatch{value, name.size()};
  }
  return isShared ? std::nullopt : best;
}

std::u16string zoneNameAt(const KelTimeZone& zone, NameWidth width, std::int64_t instant) {
  icu::UnicodeString name;
  const icu::TimeZoneFormat& format = zoneFormat();
  const KelForkHold hold;
  format.format(styleOf(width), zone.icuZone(), static_cast<double>(instant) * 1000, name);
  if (requireMemory(name).isEmpty()) throw std::bad_alloc();  // a zone without a name shows its offset
  return {name.getBuffer(), static_cast<std::size_t>(name.length())};
}

std::u16string localizedOffset(int seconds) {
  UErrorCode status = U_ZERO_ERROR;
  icu::UnicodeString text;
  zoneFormat().formatOffsetLocalizedGMT(seconds * 1000, text, status);
  requireIcu(status);
  requireMemory(text);
  return {text.getBuffer(), static_cast<std::size_t>(text.length())};
}

namespace {

std::unique_ptr<const icu::TimeZone> parseZone(UTimeZoneFormatStyle style, const icu::UnicodeString& text,
                                               icu::ParsePosition& position, UTimeZoneFormatTimeType& type) {
  const icu::TimeZoneFormat& format = zoneFormat();
  const KelForkHold hold;
  return std::unique_ptr<const icu::TimeZone>(format.parse(style, text, position, &type));
}

}  // namespace

std::optional<ZoneMatch> matchZone(NameWidth width, UnitView text) {
  const icu::UnicodeString units = aliasOf(text);
  std::optional<ZoneMatch> best;
  for (const UTimeZoneFormatStyle style : {styleOf(width), UTZFMT_STYLE_ZONE_ID}) {
    icu::ParsePosition position(0);
    UTimeZoneFormatTimeType type = UTZFMT_TIME_TYPE_UNKNOWN;
    const auto zone = parseZone(style, units, position, type);
    const auto length = static_cast<std::size_t>(position.getIndex());
    if (zone == nullptr || length == 0 || (best && length <= best->length)) continue;
    icu::UnicodeString id;
    if (zone->getID(id) == icu::UnicodeString(UCAL_UNKNOWN_ZONE_ID, -1, US_INV)) continue;
    const KelWstring name(reinterpret_cast<const unsigned short*>(id.getBuffer()), static_cast<unsigned>(id.length()));
    const SavingTime saving = type == UTZFMT_TIME_TYPE_STANDARD   ? SavingTime::standard
                              : type == UTZFMT_TIME_TYPE_DAYLIGHT ? SavingTime::daylight
                                                                  : SavingTime::unknown;
    // UTC has one zone, however it is written.
    const KelTimeZone* const found =
        id == icu::UnicodeString(u"Etc/GMT") ? KelTimeZone::ofOffset(0) : KelTimeZone::createTimeZone(name, nullptr);
    best = ZoneMatch{found, saving, length};
    if (length == text.size()) break;
  }
  return best;
}

const KelTimeZone* zoneWithSaving(const KelTimeZone& zone, bool daylight, std::int64_t localSeconds) {
  std::int32_t raw = 0, saving = 0;
  UErrorCode status = U_ZERO_ERROR;
  zone.icuZone().getOffsetFromLocal(static_cast<double>(localSeconds) * 1000, UCAL_TZ_LOCAL_FORMER,
                                    UCAL_TZ_LOCAL_LATTER, raw, saving, status);
  requireIcu(status);
  if ((saving != 0) == daylight) return &zone;
  return KelTimeZone::ofOffset((raw + (daylight ? zone.icuZone().getDSTSavings() : 0)) / 1000);
}

std::optional<OffsetMatch> matchLocalizedOffset(UnitView text) {
  icu::ParsePosition position(0);
  const int milliseconds = zoneFormat().parseOffsetLocalizedGMT(aliasOf(text), position);
  if (position.getIndex() == 0) return std::nullopt;
  return OffsetMatch{milliseconds / 1000, static_cast<std::size_t>(position.getIndex())};
}

WeekRule weekRuleOf(UnitView firstDayName, int minimalDays) {
  WeekRule rule = madeOnce<[] {
    const auto calendar = makeCalendar();
    UErrorCode status = U_ZERO_ERROR;
    const int first = calendar->getFirstDayOfWeek(status) - UCAL_SUNDAY;
    requireIcu(status);
    return WeekRule{first, calendar->getMinimalDaysInFirstWeek()};
  }>();
  for (std::size_t day = 0; day < kDaysOfWeek.size(); ++day)
    if (isText(firstDayName, kDaysOfWeek[day])) rule.firstDay = static_cast<int>(day);
  if (minimalDays >= 1 && minimalDays <= 7) rule.minimalDays = minimalDays;
  return rule;
}

Weeks weeksOf(std::int64_t day, const WeekRule& rule) {
  UErrorCode status = U_ZERO_ERROR;
  icu::GregorianCalendar& calendar = weekCalendar(rule);
  calendar.setTime(static_cast<double>(day) * kMillisecondsPerDay, status);
  const Weeks weeks{calendar.get(UCAL_WEEK_OF_YEAR, status), calendar.get(UCAL_WEEK_OF_MONTH, status)};
  requireIcu(status);
  return weeks;
}

std::optional<std::int64_t> dayOfWeekDate(const WeekDate& date, const WeekRule& rule, bool lenient) {
  const std::pair<UCalendarDateFields, std::optional<int>> fields[] = {
      {UCAL_YEAR, date.year},
      {UCAL_MONTH, date.month - 1},
      {UCAL_DAY_OF_WEEK, date.weekday + UCAL_SUNDAY},
      {UCAL_WEEK_OF_YEAR, date.weekOfYear},
      {UCAL_WEEK_OF_MONTH, date.weekOfMonth},
      {UCAL_DAY_OF_WEEK_IN_MONTH, date.weekdayInMonth},
      {UCAL_DAY_OF_YEAR, date.dayOfYear},
      {UCAL_DATE, date.day},
  };
  constexpr int kBeyond = 1'000'000;  // no such week or year is on the calendar, and ICU counts in 32 bits
  icu::GregorianCalendar& calendar = weekCalendar(rule);
  for (const auto& [field, value] : fields) {
    if (!value) continue;
    if (*value > kBeyond || *value < -kBeyond) return std::nullopt;
    calendar.set(field, *value);
  }
  calendar.setLenient(lenient);
  UErrorCode status = U_ZERO_ERROR;
  const double milliseconds = calendar.getTime(status);
  calendar.setLenient(true);
  requireMemory(status);
  if (U_FAILURE(status)) return std::nullopt;
  return static_cast<std::int64_t>(milliseconds / kMillisecondsPerDay);
}

}  // namespace oxr
