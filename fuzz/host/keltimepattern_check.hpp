#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/harness/choices.hpp"
#include "fuzz/host/timestamps.hpp"

// Time stamp patterns of any kind: those that tell all of a stamp give it back, and no pattern and no text do harm.
namespace oxr::fuzz {

// A field of a pattern that is composed.
struct DrawnField {
  char letter;
  std::size_t count;
  bool isNumber;
  bool isFixed;  // has as many digits as letters, whatever the value
};

inline std::string drawMost(Choices& choices, std::initializer_list<const char*> texts) {
  return *(texts.begin() + choices.upTo(texts.size() - 1));
}

// The letters that tell a stamp wholly; microseconds take six digits. The first week may be the year's last one too, so
// that weeks of the year tell days well within it only.
inline std::string drawTellingLetters(Choices& choices, const KelTimeStamp& stamp, bool& hasZone) {
  const bool isWithinYear = stamp.date().month() > KelDate::January && stamp.date().month() < KelDate::December;
  std::string letters = isWithinYear ? drawMost(choices, {"yMd", "yD", "yMWe", "yMWE", "yMFE", "yMFe", "ywE", "ywe"})
                                     : drawMost(choices, {"yMd", "yD", "yMWe", "yMFE"});
  letters += drawMost(choices, {"H", "k", "ha", "Ka"}) + "msS";
  hasZone = choices.coin();
  if (hasZone) letters += choices.upTo(3) == 0 ? 'z' : 'Z';
  for (const char letter : {'G', 'E', 'a'})
    if (letters.find(letter) == letters.npos && choices.upTo(3) == 0) letters += letter;
  for (std::size_t i = letters.size(); i > 1; --i)
    std::swap(letters[i - 1], letters[choices.upTo(i - 1)]);
  return letters;
}

inline std::size_t drawCount(Choices& choices, char letter, const KelTimeStamp& stamp) {
  static constexpr std::size_t kUnmistakable[] = {1, 2, 3, 4, 6};  // five letters: the first one of the name alone
  const auto upTo = [&](std::size_t most) { return 1 + choices.upTo(most - 1); };
  switch (letter) {
    case 'y': {
      const int year = stamp.date().year();
      if (year >= 1953 && year <= 2052 && choices.coin()) return upTo(2);
      return year < 10 || year > 99 ? std::size_t{choices.coin() ? 1u : 3u + choices.upTo(3)} : 3;
    }
    case 'S':
      return 6 + choices.upTo(4);
    case 'E':
      return choices.oneOf(kUnmistakable);
    case 'e':
      return choices.oneOf(kUnmistakable);
    case 'M':
      return upTo(4);
    case 'G':
      return upTo(4);
    case 'z':
      return upTo(4);
    case 'Z':
      return upTo(5);
    case 'a':
      return upTo(4);
    default:
      return upTo(4);
  }
}

inline DrawnField drawField(Choices& choices, char letter, const KelTimeStamp& stamp) {
  const std::size_t count = drawCount(choices, letter, stamp);
  const bool isName = std::string_view("EaGzZ").find(letter) != std::string_view::npos ||
                      (count > 2 && (letter == 'M' || letter == 'e'));
  const std::size_t widest = letter == 'y'                                     ? 4
                             : letter == 'D'                                   ? 3
                             : letter == 'e' || letter == 'W' || letter == 'F' ? 1
                                                                               : 2;
  return {letter, count, !isName, letter == 'S' || (count >= widest && !isName) || (letter == 'y' && count == 2)};
}

// What stands between two fields: of numbers, the later one may follow at once if its width is fixed.
inline std::string drawBetween(Choices& choices, const DrawnField& before, const DrawnField& after) {
  if (before.letter == 'Z' || before.letter == 'z') return choices.coin() ? " " : "/";
  if (choices.coin() && (!before.isNumber || !after.isNumber || after.isFixed)) return "";
  return drawMost(choices, {"-", "/", " ", ".", ",", ":", "'T'", "''", "' o''clock '", "\u5E74", "'at'", " - "});
}

inline std::string drawTellingPattern(Choices& choices, const KelTimeStamp& stamp, bool& hasZone) {
  std::string pattern;
  std::optional<DrawnField> before;
  for (const char letter : drawTellingLetters(choices, stamp, hasZone)) {
    const DrawnField field = drawField(choices, letter, stamp);
    // A letter beside itself would be one field.
    if (before) {
      const std::string between = drawBetween(choices, *before, field);
      pattern += between.empty() && before->letter == letter ? "-" : between;
    }
    pattern.append(field.count, letter);
    before = field;
  }
  if (hasZone && choices.coin()) pattern += 'U';
  return pattern;
}

inline FormatSettings drawSettings(Choices& choices, const KelTimeStamp& defaults) {
  static constexpr const char* kDays[] = {"", "Sunday", "Monday", "Saturday", "Noday"};
  FormatSettings set{defaults};
  set.weekBegin = fromUtf8(choices.oneOf(kDays));
  set.firstWeekDays = choices.between(0, 8);
  return set;
}

// A stamp, written by a pattern that tells all of it, is read back.
inline void checkTimeStampRoundTrip(Choices& choices) {
  const KelTimeZone* const zone = zoneAt(choices.upTo(kZoneCount - 1));
  const KelTimeStamp stamp = stampAt(drawInstant(choices), zone);
  bool hasZone = false;
  const std::string pattern = drawTellingPattern(choices, stamp, hasZone);
  const FormatSettings set =
      drawSettings(choices, {KelDate(31, KelDate::January, 2026), KelTimeBase(13, 14, 15.5), zone});
  const KelTimeStampPattern compiled(fromUtf8(pattern));
  const KelWstring text = writtenBy(compiled, stamp, set);
  const std::string what = pattern + " of " + shown(stamp) + ", \"" + toUtf8(text) + '"';
  const auto read = unlessRefused([&] { return readBy(compiled, text, set, false); });
  require(read.has_value(), what + " is refused");
  requireEqual(toUtf8(read->asString()), toUtf8(stamp.asString()), what);
  if (!hasZone) requireEqual(read->timeZone(), zone, what + ", the zone");
  // A name may be that of several places. Forms of ISO 8601 have no seconds of an old local time.
  const bool losesSeconds = pattern.find('Z') != std::string::npos && pattern.find("ZZZZ") == std::string::npos;
  const int offset = losesSeconds ? stamp.offset() / 60 * 60 : stamp.offset();
  if (hasZone) requireEqual(read->offset(), offset, what + ", the offset");
}

// Changes some units, takes some away, adds some.
inline std::string mutated(Choices& choices, std::string text, std::string_view units) {
  for (std::size_t changes = choices.upTo(3); changes > 0; --changes) {
    const std::size_t at = choices.upTo(text.size());
    switch (choices.upTo(2)) {
      case 0:
        text.erase(at, 1);
        break;
      case 1:
        text.insert(at, 1 + choices.upTo(2), units[choices.upTo(units.size() - 1)]);
        break;
      default:
        if (at < text.size()) text[at] = units[choices.upTo(units.size() - 1)];
    }
  }
  return text;
}

inline std::string drawAnyText(Choices& choices, std::string_view units, std::size_t most) {
  std::string text;
  for (std::size_t pieces = choices.upTo(most); pieces > 0; --pieces)
    text.append(1 + choices.upTo(4), units[choices.upTo(units.size() - 1)]);
  return text;
}

// Whether a pattern may write something from which it reads another stamp: weeks tell different things of days beside
// the year's or month's end, names of zones are those of more than one place, numbers that follow one another or an
// offset at once may vary in width, and the years 10 to 99 look like those of a century.
inline bool tellsAmbiguously(const std::string& pattern, const KelTimeStamp& stamp) {
  constexpr std::string_view kNumbers = "yMdDkKhHmsS";
  for (std::size_t i = 1; i < pattern.size(); ++i)
    if (pattern[i] != pattern[i - 1] && kNumbers.find(pattern[i]) != kNumbers.npos &&
        (pattern[i - 1] == 'Z' || kNumbers.find(pattern[i - 1]) != kNumbers.npos))
      return true;
  return pattern.find_first_of("wWFEez") != pattern.npos || stamp.date().year() < 100;
}

// Any pattern and any text, or good ones with some faults. What is read is on the calendar; read strictly, it gives
// itself back, unless by weeks and names, which tell different things of days beside the year's or month's end.
inline void checkTimePatternAndText(Choices& choices) {
  static constexpr std::string_view kPatternUnits = "yMdDEeFwWHhkKmsSaGzZU'-:/. TQ\xC3\xA9";
  static constexpr std::string_view kTextUnits = "0123456789-+:/. TZGMTAPFebSat,\xC3\xA9";
  const KelTimeStamp stamp = stampAt(drawInstant(choices), zoneAt(choices.upTo(kZoneCount - 1)));
  const FormatSettings set = drawSettings(choices, stamp);
  bool hasZone = false;
  const std::string good = drawTellingPattern(choices, stamp, hasZone);
  const std::string pattern =
      choices.upTo(3) == 0 ? drawAnyText(choices, kPatternUnits, 12) : mutated(choices, good, kPatternUnits);
  const auto compiled = unlessRefused([&] { return KelTimeStampPattern(fromUtf8(pattern)); });
  if (!compiled) return;
  const std::string fitting = toUtf8(writtenBy(*compiled, stamp, set));
  const bool isFitting = choices.coin();
  const KelWstring text =
      fromUtf8(isFitting ? mutated(choices, fitting, kTextUnits) : drawAnyText(choices, kTextUnits, 24));
  const std::string what = pattern + " of \"" + toUtf8(text) + '"';
  for (const bool lenient : {false, true}) {
    const auto read = unlessRefused([&] { return readBy(*compiled, text, set, lenient); });
    if (!read) continue;
    require(read->isValid(), what + ", read as " + shown(*read));
    if (lenient || tellsAmbiguously(pattern, *read)) continue;
    const KelWstring again = writtenBy(*compiled, *read, set);
    const auto reread = unlessRefused([&] { return readBy(*compiled, again, set, false); });
    require(reread.has_value(), what + ", written as \"" + toUtf8(again) + "\", is refused");
    requireEqual(shown(*reread), shown(*read), what + ", written as \"" + toUtf8(again) + '"');
  }
}

}  // namespace oxr::fuzz
