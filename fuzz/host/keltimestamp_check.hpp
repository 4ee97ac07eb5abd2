#pragma once

#include <unicode/basictz.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/harness/choices.hpp"
#include "fuzz/host/timestamps.hpp"

// The host's time stamps against ICU's calendar and its SimpleDateFormat.
namespace oxr::fuzz {

inline void requireIcu(UErrorCode status) {
  require(U_SUCCESS(status), std::string("ICU: ") + u_errorName(status));
}

// ICU's Gregorian calendar, always in use, in a zone.
inline std::unique_ptr<icu::GregorianCalendar> makeIcuCalendar(const KelTimeZone& zone) {
  UErrorCode status = U_ZERO_ERROR;
  auto calendar = std::make_unique<icu::GregorianCalendar>(zone.icuZone(), status);
  calendar->setGregorianChange(-1e18, status);
  requireIcu(status);
  return calendar;
}
inline icu::GregorianCalendar& icuCalendar(std::size_t zone) {
  static std::array<std::unique_ptr<icu::GregorianCalendar>, kZoneCount> calendars;
  if (calendars[zone] == nullptr) calendars[zone] = makeIcuCalendar(*zoneAt(zone));
  return *calendars[zone];
}

// A pattern that both understand, in the letters of both. ICU's Z has other counts; and where the year comes last, its
// calendar goes by the day of the month, whatever a week says.
struct TwinPattern {
  const char* ours;
  const char* icus;
  enum Use { kReadInItsZone, kReadInItsCentury, kReadWithAZone, kWriteOnly } use;
};
constexpr TwinPattern kTwinPatterns[] = {
    {"yyyy-MM-dd'T'HH:mm:ss.SSSZZZ", "yyyy-MM-dd'T'HH:mm:ss.SSSxxx", TwinPattern::kReadWithAZone},
    {"yyyyMMddHHmmssSSSZ", "yyyyMMddHHmmssSSSxx", TwinPattern::kReadWithAZone},
    {"yyyy-MM-dd'T'HH:mm:ss.SZZZU", "yyyy-MM-dd'T'HH:mm:ss.SXXX", TwinPattern::kReadWithAZone},
    {"yyyy-MM-dd HH:mm ZU", "yyyy-MM-dd HH:mm XX", TwinPattern::kReadWithAZone},
    {"EEEE, d MMMM y G h:mm:ss a ZZZZ", "EEEE, d MMMM y G h:mm:ss a ZZZZ", TwinPattern::kReadWithAZone},
    {"ZZZZZ yyyyy.D K'h'm a", "ZZZZZ yyyyy.D K'h'm a", TwinPattern::kReadWithAZone},
    {"dd MMM yyyy HH:mm zzz", "dd MMM yyyy HH:mm zzz", TwinPattern::kReadWithAZone},
    {"yyyy-MM-dd HH:mm:ss zzzz", "yyyy-MM-dd HH:mm:ss zzzz", TwinPattern::kReadWithAZone},
    {"yyyy-MM-dd HH:mm:ss.SSS", "yyyy-MM-dd HH:mm:ss.SSS", TwinPattern::kReadInItsZone},
    {"yyyyMMddHHmmss", "yyyyMMddHHmmss", TwinPattern::kReadInItsZone},
    {"M/dd/yyy k''m", "M/dd/yyy k''m", TwinPattern::kReadInItsZone},
    {"yy.MM.dd 'o''clock' HH", "yy.MM.dd 'o''clock' HH", TwinPattern::kReadInItsCentury},
    {"EEE, yyyy DDD", "EEE, yyyy DDD", TwinPattern::kReadInItsZone},
    {"yyyy MMM W E", "yyyy MMM W E", TwinPattern::kReadInItsZone},
    {"yyyyMM F EEEEEE", "yyyyMM F EEEEEE", TwinPattern::kReadInItsZone},
    {"yyyy ww e", "yyyy ww e", TwinPattern::kReadInItsZone},
    {"MMMMM EEEEE aaaaa GGGGG GGGG ee eee eeee", "MMMMM EEEEE aaaaa GGGGG GGGG ee eee eeee", TwinPattern::kWriteOnly},
    {"yyyy-MM-dd w W F SS", "yyyy-MM-dd w W F SS", TwinPattern::kWriteOnly},
};
constexpr std::size_t kTwinCount = std::size(kTwinPatterns);

struct Twin {
  KelTimeStampPattern ours;
  icu::SimpleDateFormat icus;
};
inline Twin& twinAt(std::size_t index) {
  static std::array<std::unique_ptr<Twin>, kTwinCount> twins;
  if (twins[index] == nullptr) {
    UErrorCode status = U_ZERO_ERROR;
    const TwinPattern& row = kTwinPatterns[index];
    twins[index].reset(new Twin{fromUtf8(row.ours), {icu::UnicodeString::fromUTF8(row.icus), status}});
    const KelDate centuryBegin(1, KelDate::January, 1953);
    twins[index]->icus.set2DigitYearStart(static_cast<double>(localTimeOf({centuryBegin, KelTimeBase()})) / 1000,
                                          status);
    requireIcu(status);
  }
  return *twins[index];
}

inline std::string icuText(Twin& twin, icu::GregorianCalendar& calendar, std::int64_t milliseconds) {
  UErrorCode status = U_ZERO_ERROR;
  calendar.setTime(static_cast<double>(milliseconds), status);
  icu::UnicodeString text;
  icu::FieldPosition position;
  twin.icus.format(calendar, text, position);
  requireIcu(status);
  std::string utf8;
  return text.toUTF8String(utf8);
}

// The milliseconds of the instant that ICU reads; fields that the pattern lacks come from a day in 2026.
inline std::int64_t icuReading(Twin& twin, icu::GregorianCalendar& calendar, const std::string& text,
                               const FormatSettings& set) {
  UErrorCode status = U_ZERO_ERROR;
  const KelDate& date = set.defaults.date();
  calendar.clear();
  calendar.set(date.year(), date.month() - 1, date.day());
  icu::ParsePosition position;
  twin.icus.parse(icu::UnicodeString::fromUTF8(text), calendar, position);
  const double milliseconds = calendar.getTime(status);
  requireIcu(status);
  require(position.getErrorIndex() < 0, "ICU does not read " + text);
  return static_cast<std::int64_t>(milliseconds);
}

// An instant, written by a pattern in each of the zones and read back, by both.
//
// A million instants in all zones take eight minutes:
//   OXR_RANDOM_CASES=1000000 build/release/oxr_tests --gtest_filter='*TimeStampIcu'
inline void checkTimeStampAgainstIcu(Choices& choices) {
  const std::size_t pattern = choices.upTo(kTwinCount - 1);
  const TwinPattern::Use use = kTwinPatterns[pattern].use;
  Twin& twin = twinAt(pattern);
  const std::int64_t instant = drawInstant(choices);
  const std::int64_t milliseconds = instant / 1000 - (instant % 1000 < 0 ? 1 : 0);
  for (std::size_t zone = 0; zone < kZoneCount; ++zone) {
    const FormatSettings set{{KelDate(21, KelDate::November, 2026), KelTimeBase(), zoneAt(zone)}};
    const KelTimeStamp stamp = stampAt(instant, zoneAt(zone));
    const std::string what = std::string(kTwinPatterns[pattern].ours) + " of " + shown(stamp);
    icu::GregorianCalendar& calendar = icuCalendar(zone);
    const KelWstring text = writtenBy(twin.ours, stamp, set);
    requireEqual(toUtf8(text), icuText(twin, calendar, milliseconds), what);
    if (use == TwinPattern::kWriteOnly) continue;
    // ICU's century begins at an instant, so that its first hours are those of another one in some zones.
    if (use == TwinPattern::kReadInItsCentury && stamp.date().month() == 1 && stamp.date().day() == 1) continue;
    const std::int64_t icus = icuReading(twin, calendar, toUtf8(text), set);
    if (use == TwinPattern::kReadWithAZone) calendar.setTimeZone(zoneAt(zone)->icuZone());
    for (const bool lenient : {false, true}) {
      const auto read = unlessRefused([&] { return readBy(twin.ours, text, set, lenient); });
      require(read.has_value(), what + " is refused");
      requireEqual(instantOf(*read), icus * 1000, what + ", \"" + toUtf8(text) + "\", read as " + shown(*read));
    }
  }
}

// The ways to give a date, and those to give a time, by letters; "1" is the half of the day.
constexpr const char* kDateForms[] = {"yMd", "yD", "ywe", "yMWe", "yMFe"};
constexpr const char* kTimeForms[] = {"Hms", "kms", "hams", "Kams", ""};

// The field of ICU's calendar that a letter stands for, and the value that a number means there.
inline std::pair<UCalendarDateFields, int> icuFieldOf(char letter, int number) {
  switch (letter) {
    case 'y':
      return {UCAL_YEAR, number};
    case 'M':
      return {UCAL_MONTH, number - 1};
    case 'd':
      return {UCAL_DATE, number};
    case 'D':
      return {UCAL_DAY_OF_YEAR, number};
    case 'w':
      return {UCAL_WEEK_OF_YEAR, number};
    case 'W':
      return {UCAL_WEEK_OF_MONTH, number};
    case 'F':
      return {UCAL_DAY_OF_WEEK_IN_MONTH, number};
    case 'e':
      return {UCAL_DOW_LOCAL, number};
    case 'H':
      return {UCAL_HOUR_OF_DAY, number};
    case 'k':
      return {UCAL_HOUR_OF_DAY, number == 24 ? 0 : number};
    case 'K':
      return {UCAL_HOUR, number};
    case 'h':
      return {UCAL_HOUR, number == 12 ? 0 : number};
    case 'm':
      return {UCAL_MINUTE, number};
    case 's':
      return {UCAL_SECOND, number};
    default:
      return {UCAL_AM_PM, number};
  }
}

inline int drawFieldValue(Choices& choices, char letter) {
  if (letter == 'a') return static_cast<int>(choices.upTo(1));
  if (letter == 'y') return choices.coin() ? choices.between(1990, 2030) : choices.between(0, 10'050);
  const int most = letter == 'D' ? 366 : letter == 'd' ? 31 : letter == 'H' || letter == 'k' ? 24 : 12;
  const std::size_t kind = choices.upTo(9);
  if (kind > 3) return choices.between(1, letter == 'm' || letter == 's' ? 60 : letter == 'e' ? 7 : most);
  return kind > 0 ? choices.between(0, 99) : choices.between(0, 99'999);
}

// Whether a number can be read strictly by one letter, or by four for a year: by its digits, and by the two hours that
// another hour stands for in ICU's calendar.
inline bool isStrictNumber(char letter, int number) {
  const int most = letter == 'y'                                                    ? 9'999
                   : letter == 'D'                                                  ? 999
                   : std::string_view("FeW").find(letter) != std::string_view::npos ? 9
                                                                                    : 99;
  return number <= most && (number != 0 || (letter != 'k' && letter != 'h'));
}

// Fields of a date and a time, in any order and out of their ranges, against ICU's calendar.
inline void checkTimeStampCarryOver(Choices& choices) {
  std::string letters = std::string(choices.oneOf(kDateForms)) + choices.oneOf(kTimeForms);
  for (std::size_t i = letters.size(); i > 1; --i)
    std::swap(letters[i - 1], letters[choices.upTo(i - 1)]);
  const bool lenient = choices.coin();
  const std::size_t zone = lenient ? choices.upTo(kZoneCount - 1) : 0;  // strictly ICU refuses what clocks skip
  FormatSettings set{{KelDate(), KelTimeBase(), zoneAt(zone)}};
  static constexpr const char* kDays[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
  const std::size_t weekBegin = choices.upTo(6);
  set.weekBegin = fromUtf8(kDays[weekBegin]);
  set.firstWeekDays = choices.between(1, 7);

  icu::GregorianCalendar calendar(icuCalendar(zone));
  calendar.clear();
  calendar.setLenient(lenient);
  calendar.setFirstDayOfWeek(static_cast<UCalendarDaysOfWeek>(weekBegin + UCAL_SUNDAY));
  calendar.setMinimalDaysInFirstWeek(static_cast<std::uint8_t>(set.firstWeekDays));
  std::string pattern, text;
  bool isTold = true;
  for (const char letter : letters) {
    const int number = drawFieldValue(choices, letter);
    isTold = isTold && (lenient || isStrictNumber(letter, number));
    std::string digits = std::to_string(number);
    if (letter == 'y') digits.insert(0, digits.size() < 4 ? 4 - digits.size() : 0, '0');
    pattern += letter + std::string(letter == 'y' ? "yyy/" : "/");
    text += (letter == 'a' ? (number == 0 ? "AM" : "PM") : digits) + '/';
    const auto [field, value] = icuFieldOf(letter, number);
    calendar.set(field, value);
  }
  const std::string what = pattern + " of " + text + (lenient ? ", lenient, in " : " in ") + kZoneIds[zone] +
                           ", weeks from " + kDays[weekBegin] + " of " + std::to_string(set.firstWeekDays);
  const KelTimeStampPattern compiled(fromUtf8(pattern));
  const auto read = unlessRefused([&] { return readBy(compiled, fromUtf8(text), set, lenient); });
  UErrorCode status = U_ZERO_ERROR;
  const auto icus = static_cast<std::int64_t>(calendar.getTime(status)) * 1000;
  if (status == U_ILLEGAL_ARGUMENT_ERROR) isTold = false;
  // The first and the last day of the calendar depend on the zone.
  if (icus < kFirstInstant - 2 * kPerDay || icus > kLastInstant + 3 * kPerDay) isTold = false;
  if (!isTold) return require(!read, what + ", read as " + (read ? shown(*read) : ""));
  requireIcu(status);
  require(read || icus < kFirstInstant + kPerDay || icus > kLastInstant, what + " is refused");
  if (read) requireEqual(instantOf(*read), icus, what + ", read as " + shown(*read));
}

}  // namespace oxr::fuzz
