#pragma once

#include <unicode/uchar.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

#include "core/duration.hpp"
#include "dataconv.hpp"
#include "fuzz/harness/choices.hpp"
#include "fuzz/harness/generalway.hpp"
#include "kelexception.hpp"
#include "kelwstringconvertor.hpp"

// Durations against a model that knows no table: its rules are sentences on how far a text has come. And what is
// written, against the standard library, and read again.
namespace oxr::fuzz {

namespace duration {

constexpr int kInvalid = 5505, kOutOfBounds = 5506, kCombination = 5546, kRange = 5547, kTooManyDays = 5549;

// What comes of a text: a number of the catalogue, or the value. The warnings come in both cases.
struct Outcome {
  int refused = 0;
  long years = 0, months = 0, microseconds = 0, sign = 0;
  unsigned warnings = 0;

  friend bool operator==(const Outcome&, const Outcome&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Outcome& o) {
    return out << "OXR" << o.refused << " sign " << o.sign << ' ' << o.years << " years " << o.months << " months "
               << o.microseconds << " us, warnings " << o.warnings;
  }
};

inline Outcome refusal(int number, unsigned warnings) {
  Outcome outcome;
  outcome.refused = number;
  outcome.warnings = warnings;
  return outcome;
}

// How far a text has come: each designator of the standard's order is later than the one before it.
enum Progress {
  atStart,
  afterYears,
  afterMonths,
  afterDays,
  afterT,
  afterHours,
  afterMinutes,
  afterPoint,
  afterSeconds
};

// The microseconds of the digits after a point, which has `place` as the position of the "S" in the text.
inline long fractionModel(const std::u16string& digits, std::size_t place, unsigned& warnings) {
  const std::size_t count = digits.empty() ? place : digits.size();
  warnings += count > 6;
  bool isPlain = !digits.empty();
  for (const char16_t digit : digits)
    isPlain = isPlain && digit < 0x80;
  if (isPlain)
    return std::stol(toUtf8(UnitView(reinterpret_cast<const unsigned short*>((digits + u"000000").data()), 6)));
  // Digits of other scripts spill into the places before them, down to the 1 that stands before all.
  long value = 1;
  for (const char16_t digit : digits)
    value = value * 10 + digit - u'0';
  for (std::size_t i = count; i < 6; ++i)
    value *= 10;
  for (bool isFirst = true; count > 6 && (isFirst || value > 9'999'999); isFirst = false)
    value /= 10;
  return value % 1'000'000;
}

inline Outcome model(std::u16string text) {
  text = text.substr(0, text.find(u'\0'));
  Outcome outcome;
  std::size_t at = 0;
  if (text.starts_with(u'-')) outcome.sign = static_cast<long>(++at);
  if (text.substr(at, 1) != u"P" || at + 1 == text.size()) return refusal(kInvalid, 0);
  ++at;
  Progress progress = atStart;
  // The sum of all times; what 64 bits hold is exact.
  long double sum = 0;
  const auto refused = [&](int number) { return refusal(number, outcome.warnings); };
  while (at < text.size()) {
    std::u16string digits;
    while (at < text.size() && u_isdigit(text[at]))
      digits += text[at++];
    if (at == text.size()) return refused(kInvalid);
    long double value = progress == afterPoint ? 1 : 0;
    for (const char16_t digit : digits)
      value = value * 10 + (digit - u'0');
    if (!digits.empty() && value > 2147483647) return refused(kRange);
    const char16_t designator = text[at];
    if (designator == u'Y' && progress == atStart) {
      outcome.years = static_cast<long>(value);
      progress = afterYears;
    } else if (designator == u'M' && progress <= afterYears) {
      outcome.months = static_cast<long>(value);
      progress = afterMonths;
    } else if (designator == u'M' && (progress == afterT || progress == afterHours)) {
      sum += value * 60'000'000;
      progress = afterMinutes;
    } else if (designator == u'D' && progress <= afterMonths) {
      if (value > 99'999'999) return refused(kTooManyDays);
      sum += value * 86'400'000'000;
      progress = afterDays;
    } else if (designator == u'T' && digits.empty()) {
      progress = afterT;
    } else if (designator == u'H' && progress <= afterT) {
      sum += value * 3'600'000'000;
      progress = afterHours;
    } else if (designator == u'.' && progress <= afterMinutes) {
      sum += value * 1'000'000;
      progress = afterPoint;
    } else if (designator == u'S' && progress <= afterMinutes) {
      sum += value * 1'000'000;
      progress = afterSeconds;
    } else if (designator == u'S' && progress == afterPoint) {
      sum += fractionModel(digits, at, outcome.warnings);
      progress = afterSeconds;
    } else {
      return refused(kInvalid);
    }
    if (sum > static_cast<long double>(std::numeric_limits<long>::max())) return refused(kRange);
    ++at;
  }
  if (progress == afterT) return refused(kInvalid);
  outcome.microseconds = static_cast<long>(sum);
  if ((outcome.years != 0 || outcome.months != 0) && outcome.microseconds != 0) return refused(kCombination);
  return outcome;
}

inline UnitView viewOf(const std::u16string& text) {
  return {reinterpret_cast<const unsigned short*>(text.data()), text.size()};
}

// What the core makes of a text.
inline Outcome readByCore(const std::u16string& text) {
  const core::DurationReading reading = core::readDuration(viewOf(text));
  static constexpr std::array kNumbers = {0, kInvalid, kRange, kTooManyDays, kCombination};
  if (reading.fault != core::DurationFault::none)
    return refusal(kNumbers[static_cast<std::size_t>(reading.fault)], reading.fineFractions);
  const PWFInterval& value = reading.value;
  return {0, value._years, value._months, value._microseconds, value._sign, reading.fineFractions};
}

// What the exported member makes of it, the warnings as they are in the log.
inline Outcome readByMember(DataCnv& converter, const std::u16string& text, bool isTerminated) {
  const auto sink = std::make_shared<RecordingLogSink>();
  Outcome outcome;
  {
    const ScopedLogSink scope(sink);
    const KelWstring units(viewOf(text));
    try {
      const PWFInterval value =
          converter.StrToInterval(units.characters(), isTerminated ? -1 : static_cast<int>(units.length()));
      outcome = {0, value._years, value._months, value._microseconds, value._sign, 0};
    } catch (const KelConversionException& e) {
      outcome.refused = e.messageNumber() & 0xFFFF;
    }
  }
  for (const LogRecord& record : sink->records())
    outcome.warnings += record.kind == RecordKind::event && static_cast<unsigned>(record.messageNumber) == 0x800015AC;
  return outcome;
}

// The one form of a duration by the standard library's formatting; empty where a field is negative.
inline std::string writeModel(const PWFInterval& value) {
  std::string text = value._sign != 0 ? "-P" : "P";
  const long long all = value._microseconds;
  const auto field = [&](long long number, const char* designator) {
    if (number != 0) text += std::to_string(number) + designator;
  };
  field(value._years, "Y");
  field(value._months, "M");
  field(all / 86'400'000'000, "D");
  if (all % 86'400'000'000 != 0) text += 'T';
  field(all / 3'600'000'000 % 24, "H");
  field(all / 60'000'000 % 60, "M");
  if (all % 60'000'000 != 0) {
    char seconds[64];
    std::snprintf(seconds, sizeof seconds, "%lld.%06lld", all / 1'000'000 % 60, std::abs(all % 1'000'000));
    std::string digits = seconds;
    digits.erase(digits.find_last_not_of('0') + 1);
    if (digits.back() == '.') digits.pop_back();
    text += digits + 'S';
  }
  if (value._years < 0 || value._months < 0 || all < 0) return "";
  return text.size() == (value._sign != 0 ? 2u : 1u) ? text + "T0S" : text;
}

}  // namespace duration

// The text with an index among all of the units that matter, after a "P", the shorter ones first: every text of up to
// seven units has an index below kShortDurations.
inline constexpr long kShortDurations = (214'358'881L - 1) / 10;  // (11^8 - 1) / 10

inline std::u16string shortDuration(long index) {
  static constexpr std::u16string_view kUnits = u"09PYMDTH.S-";
  std::u16string text = u"P";
  long count = 1;
  for (; index >= count; count *= static_cast<long>(kUnits.size()))
    index -= count;
  for (; count > 1; count /= static_cast<long>(kUnits.size()), index /= static_cast<long>(kUnits.size()))
    text += kUnits[static_cast<std::size_t>(index) % kUnits.size()];
  return text;
}

// Compares the reader with the model on that text, as it is and with a sign.
inline void checkShortDuration(long index) {
  std::u16string text = shortDuration(index);
  for (const bool isSigned : {false, true}) {
    if (isSigned) text.insert(0, 1, u'-');
    const duration::Outcome found = duration::readByCore(text), expected = duration::model(text);
    if (!(found == expected)) requireEqual(found, expected, toUtf8(duration::viewOf(text)));
  }
}

// A text that is a duration as a rule, or nearly one: fields in the standard's order, some of them twice, some of them
// with strange digits.
inline std::u16string drawDuration(Choices& choices) {
  static constexpr std::u16string_view kOrder = u"YMDTHM.STHM.S";
  static constexpr std::u16string_view kNumbers[] = {u"",         u"0", u"1",         u"7",          u"012",
                                                     u"99999999", u"5", u"100000000", u"2147483647", u"2147483648"};
  static constexpr std::u16string_view kFractions[] = {u"",       u"5",        u"000001",    u"25000",     u"1234567",
                                                       u"999999", u"00000010", u"999999999", u"0123456789"};
  static constexpr char16_t kOthers[] = {u'0', u'9', u'P', u'-', u'T', u'S', u'.', u'y', u' ', u',', 0, 0x0661, 0xFF15};
  std::u16string text = choices.coin() ? u"P" : u"-P";
  for (const char16_t designator : kOrder) {
    if (choices.upTo(2) != 0) continue;
    const bool isFraction = text.ends_with(u'.') && designator == u'S';
    if (designator != u'T') text += isFraction ? choices.oneOf(kFractions) : choices.oneOf(kNumbers);
    text += designator;
  }
  for (std::size_t edits = choices.upTo(7); edits > 5; --edits) {
    const std::size_t at = choices.upTo(text.size() - 1);
    text.replace(at, choices.upTo(1), 1, choices.oneOf(kOthers));
  }
  return text;
}

// Any text is read as the model says; what was read is written in its one form, and that is read as the same.
inline void checkDurationRead(Choices& choices) {
  const std::u16string text = drawDuration(choices);
  DataCnv converter(37, eEndianBig, eEndianBig, eFloatHexadecimal, 53, nullptr, false, nullptr, 0, true, 12, false,
                    eMessageStandardDefault, nullptr);
  const duration::Outcome expected = duration::model(text);
  const std::string shown = toUtf8(duration::viewOf(text));
  duration::Outcome found = duration::readByMember(converter, text, choices.coin());
  requireEqual(found, expected, shown);
  if (expected.refused != 0) return;
  const PWFInterval value{static_cast<PWFInt32>(expected.years), static_cast<PWFInt32>(expected.months),
                          expected.microseconds, static_cast<PWFInt32>(expected.sign)};
  const std::string written = toUtf8(theFastWay([&] { return converter.StrFromInterval(value); }).getPWFStringValue());
  requireEqual(written, duration::writeModel(value), "written of " + shown);
  const std::u16string again(written.begin(), written.end());
  found = duration::readByMember(converter, again, true);
  // Hours can come to more days than a field of days may have.
  const bool isTooLong = expected.microseconds / 86'400'000'000 > 99'999'999;
  duration::Outcome same = expected;
  same.warnings = 0;
  requireEqual(found, isTooLong ? duration::refusal(duration::kTooManyDays, 0) : same, "read again: " + written);
}

// Any record is written as the model says, either way; a negative field is refused.
inline void checkDurationWrite(Choices& choices) {
  const auto small = [&](int most) {
    return choices.coin() ? 0 : choices.between(choices.upTo(15) == 0 ? -2 : 0, most);
  };
  PWFInterval value{small(100), small(100), 0, choices.between(0, 2)};
  for (const long unit : {86'400'000'000L, 3'600'000'000L, 60'000'000L, 1'000'000L, 1'000L, 1L})
    value._microseconds += unit * small(unit == 1'000'000 ? 59 : 23);
  if (choices.upTo(7) == 0) value = choices.any<PWFInterval>();
  DataCnv converter(37, eEndianBig, eEndianBig, eFloatHexadecimal, 53, nullptr, false, nullptr, 0, true, 12, false,
                    eMessageStandardDefault, nullptr);
  const std::string expected = duration::writeModel(value);
  const auto written = [&]() -> std::string {
    try {
      return toUtf8(converter.StrFromInterval(value).getPWFStringValue());
    } catch (const KelConversionException& e) {
      requireEqual(e.messageNumber() & 0xFFFF, duration::kOutOfBounds, "refused");
      return "";
    }
  };
  requireEqual(written(), expected, "written");
  requireEqual(theGeneralWay(written), expected, "written the general way");
}

}  // namespace oxr::fuzz
