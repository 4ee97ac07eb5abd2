#pragma once

#include <cstdlib>
#include <string>

#include "fuzz/harness/choices.hpp"
#include "fuzz/harness/generalway.hpp"
#include "fuzz/host/keltimepattern_check.hpp"
#include "fuzz/pwffrmtr/datetimes.hpp"
#include "pwffrmtr.hpp"

// Date-times as text, by the patterns for ISO 8601 and by any other, and as counts from an epoch.
namespace oxr::fuzz {

struct IsoForm {
  const char* pattern;
  bool mayHaveTime = false;
};
constexpr IsoForm kIsoDates[] = {{"-yy"},
                                 {"yyyy"},
                                 {"--MM"},
                                 {"---dd", true},
                                 {"-yy-MM"},
                                 {"yyyy-MM"},
                                 {"--MM-dd", true},
                                 {"-yy-MM-dd", true},
                                 {"yyyy-MM-dd", true}};
constexpr const char* kIsoTimes[] = {"HH", "HH:mm", "HH:mm:ss", "HH:mm:ss.S", "HH:mm:ss,SS", "HH:mm:ss.SSS"};

// Text for a pattern of ISO 8601: digits within the ranges of most months, mostly.
inline std::string drawIsoDigits(Choices& choices, std::string pattern) {
  for (std::size_t i = 0; i < pattern.size();) {
    const char letter = pattern[i];
    const std::size_t end = std::min(pattern.find_first_not_of(letter, i), pattern.size());
    const std::size_t count = end - i;
    const bool isField = std::string_view("yMdHmsS").find(letter) != std::string_view::npos;
    const int least = letter == 'M' || letter == 'd' || letter == 'y' ? 1 : 0;
    const int most = letter == 'M'                    ? 12
                     : letter == 'd'                  ? 29
                     : letter == 'H'                  ? 23
                     : letter == 'm' || letter == 's' ? 59
                                                      : 9999;
    std::string digits = std::to_string(choices.upTo(31) == 0 ? choices.between(0, 99) : choices.between(least, most));
    digits.insert(0, count, '0');
    if (isField) pattern.replace(i, count, digits.substr(digits.size() - count));
    i = end;
  }
  return pattern;
}

// A text of one of the forms of ISO 8601, and the pattern that it goes by; an empty one for forms that do not combine.
inline std::string drawIsoText(Choices& choices, std::string& pattern) {
  const std::size_t kind = choices.upTo(3);  // a date, a time, a time alone after "T", both
  const IsoForm& date = choices.oneOf(kIsoDates);
  const std::string time = choices.oneOf(kIsoTimes);
  std::string text;
  if (kind == 0 || kind == 3) pattern += date.pattern, text += drawIsoDigits(choices, date.pattern);
  if (kind == 0) return text;
  if (kind >= 2) pattern += "'T'", text += 'T';
  pattern += time;
  text += drawIsoDigits(choices, time);
  // Hours alone come with hours of an offset only, or with none.
  const bool isHourOnly = time == "HH";
  switch (choices.upTo(isHourOnly ? 1 : 3)) {
    case 0:
      break;
    case 1:
      pattern += "ZZ";
      text += (choices.coin() ? '+' : '-') + drawIsoDigits(choices, "HH");
      break;
    case 2:
      pattern += "ZZZ";
      text += 'Z';
      break;
    default:
      pattern += "ZZZ";
      text += (choices.coin() ? '+' : '-') + drawIsoDigits(choices, "HH:mm");
  }
  if (kind == 3 && !date.mayHaveTime) pattern.clear();
  return text;
}

inline KelWstring drawDefaultZone(Choices& choices) {
  static constexpr const char* kZones[] = {"0", "+05:30", "-8", "Europe/Paris", "America/St_Johns", "Etc/GMT"};
  return fromUtf8(choices.oneOf(kZones));
}

// A text of ISO 8601 goes by its pattern, which writes it again; what the pattern of a schema type makes of it is read
// as the same time.
inline void checkIsoDateTime(Choices& choices) {
  const KelWstring iso = fromUtf8("I");
  DateTimeSettings set;
  set.zone = drawDefaultZone(choices);
  DataCnv converter = dateTimeConverter(set);
  std::string pattern;
  const std::string text = drawIsoText(choices, pattern);
  PWFDateTimeFormatter formatter(false, nullptr, 53, nullptr, 0, true);
  const std::string identified = outcomeOf([&] { return formatter.IdentifyIFormatPattern(fromUtf8(text)); });
  requireEqual(identified, pattern.empty() ? "OXR5544" : pattern, "the pattern of " + text);
  const KelWstring units = fromUtf8(text);
  const auto parse = [&] { return converter.StrToDateTime(units.characters(), iso.characters(), -1); };
  const std::string outcome = outcomeOf(parse);
  requireEqual(outcomeOf([&] { return theGeneralWay(parse); }), outcome, text + ", traced");
  if (outcome.starts_with("OXR")) return require(outcome == (pattern.empty() ? "OXR5544" : "OXR5540"), text + outcome);
  const PWFDateTime value = parse();
  const KelWstring by = fromUtf8(pattern);
  const std::string again = outcomeOf([&] { return converter.StrFromDateTime(value, by.characters(), nullptr); });
  const bool isMinusZero = text.ends_with("-00") || text.ends_with("-00:00");
  if (!isMinusZero) requireEqual(again, text, "read and written again by " + pattern);
  const auto format = [&] { return converter.StrFromDateTime(value, iso.characters(), nullptr); };
  const KelWstring full = fromUtf8(outcomeOf(format));
  requireEqual(outcomeOf([&] { return theGeneralWay(format); }), toUtf8(full), text + " written, traced");
  if (full.length() > 29) return;  // old local times have seconds in their offset, which ISO 8601 has not
  const PWFDateTime reread = converter.StrToDateTime(full.characters(), iso.characters(), -1);
  const auto fieldsOf = [](const PWFDateTime& each) { return shown(each).substr(0, shown(each).find(' ')); };
  requireEqual(fieldsOf(reread), fieldsOf(value), text + ", written as " + toUtf8(full));
}

// Texts of any kind by patterns of any kind, one after the other: a converter that has read and written others gives
// what a new one gives, traced or not, and raises nothing but its failures.
inline void checkDateTimeText(Choices& choices) {
  static constexpr std::string_view kPatternUnits = "yMdDEeFwWHhkKmsSaGzZUIT'-:/. Q";
  static constexpr std::string_view kTextUnits = "0123456789-+:/. TZGMTAPFebSat,";
  DateTimeSettings set;
  set.lenient = choices.coin();
  set.remembersUtc = choices.coin();
  set.zone = drawDefaultZone(choices);
  DataCnv used = dateTimeConverter(set);
  std::string pattern = "I";
  for (int round = 0; round < 3; ++round) {
    const KelTimeStamp stamp = stampAt(drawInstant(choices), zoneAt(choices.upTo(kZoneCount - 1)));
    bool hasZone = false;
    if (choices.coin()) pattern = drawTellingPattern(choices, stamp, hasZone);
    if (choices.upTo(3) == 0) pattern = mutated(choices, pattern, kPatternUnits);
    const KelWstring by = fromUtf8(pattern);
    PWFDateTime value{stamp.date().year(),
                      stamp.date().month(),
                      stamp.date().day(),
                      stamp.time().hour(),
                      stamp.time().minute(),
                      static_cast<PWFInt32>(stamp.time().microseconds() / 1'000'000),
                      static_cast<PWFInt32>(stamp.time().microseconds() % 1'000'000),
                      6,
                      choices.coin() ? stamp.timeZone() : nullptr,
                      static_cast<PWFInt32>(choices.upTo(1)),
                      static_cast<PWFInt32>(choices.upTo(2))};
    PWFInt32* const fields[] = {&value._year, &value._month, &value._day, &value._hour, &value._subsecond};
    if (choices.upTo(7) == 0) *choices.oneOf(fields) = choices.any<PWFInt32>();
    const auto format = [&](DataCnv& converter) {
      return outcomeOf([&] { return converter.StrFromDateTime(value, by.characters(), nullptr); });
    };
    DataCnv fresh = dateTimeConverter(set);
    const std::string text = format(fresh);
    const std::string what = pattern + " of " + shown(value);
    requireEqual(format(used), text, what + ", written after others");
    requireEqual(theGeneralWay([&] { return format(used); }), text, what + ", traced");

    const KelWstring units = fromUtf8(choices.coin() ? text : mutated(choices, text, kTextUnits));
    const auto parse = [&](DataCnv& converter) {
      return outcomeOf([&] { return converter.StrToDateTime(units.characters(), by.characters(), -1); });
    };
    const std::string read = parse(fresh);
    requireEqual(parse(used), read, toUtf8(units) + " by " + pattern + ", read after others");
    requireEqual(theGeneralWay([&] { return parse(used); }), read, toUtf8(units) + " by " + pattern + ", traced");
  }
}

// Counts from an epoch against the host's calendar, and back.
inline void checkEpochDateTime(Choices& choices) {
  DataCnv converter = dateTimeConverter({});
  const KelTimeStamp epoch = stampAt(drawInstant(choices) / (60 * kPerSecond) * (60 * kPerSecond), nullptr);
  const bool isPlain = choices.upTo(3) == 0;
  std::string text = toUtf8(epoch.asString()).substr(0, 16);
  text[10] = 'T';
  text += choices.coin() ? "+05:30" : " -11:00";
  const KelWstring from = isPlain ? KelWstring() : fromUtf8(text);
  KelTimeStamp stamp = isPlain ? KelTimeStamp() : epoch;
  const std::int64_t count = choices.any<std::int64_t>() >> choices.upTo(50);
  const std::string what = std::to_string(count) + " after " + toUtf8(from);
  const auto read = [&] { return converter.MilliSecondsToDateTime(count, from.characters()); };
  std::string expected = "OXR5561";
  if (std::abs(count / 2) <= INT64_MAX / 2000 && count <= INT64_MAX / 1000 && count >= -INT64_MAX / 1000)
    expected = unlessRefused([&] {
      return stamp.addInterval({KelInterval::microseconds, count * 1000}), 0;
    })
                   ? toUtf8(stamp.asString())
                   : "OXR2140";
  const std::string found = outcomeOf([&] {
    const PWFDateTime value = read();
    requireEqual(converter.MilliSecondsFromDateTime(value, from.characters()), count, what + ", and back");
    return KelTimeStampBase(KelDate(value._day, static_cast<KelDate::Month>(value._month), value._year),
                            KelTimeBase(value._hour, value._minute, value._second, value._subsecond))
        .asString();
  });
  requireEqual(found, expected, what);
  const auto seconds = static_cast<int>(count);
  const auto bySeconds = [&] { return converter.SecondsToDateTime(seconds, from.characters()); };
  const auto byMilliseconds = [&] { return converter.MilliSecondsToDateTime(seconds * 1000L, from.characters()); };
  requireEqual(outcomeOf(bySeconds), outcomeOf(byMilliseconds), what + " as seconds");
  if (!outcomeOf(bySeconds).starts_with("OXR"))
    requireEqual(converter.SecondsFromDateTime(bySeconds(), from.characters()), seconds,
                 what + " as seconds, and back");
}

}  // namespace oxr::fuzz
