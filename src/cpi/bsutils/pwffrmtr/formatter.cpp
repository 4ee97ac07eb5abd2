// Date-times as text. The host reads and writes patterns; here stands what is around that: which pattern, which zone,
// how UTC is written, and what stands for fields that are not set.

#include "core/datetimefields.hpp"
#include "core/isoshape.hpp"
#include "kelwstringconvertor.hpp"
#include "pwffrmtr.hpp"
#include "pwffrmtr/memory.hpp"
#include "pwffrmtr/sourcepath.hpp"
#include "support/support.hpp"
#include "values/textinplace.hpp"

using namespace oxr;

namespace {

KelWstring textOrEmpty(const unsigned short* text) {
  return text != nullptr ? KelWstring(UnitView(text)) : KelWstring();
}

UnitView viewOf(const unsigned short* text, int length) {
  return text != nullptr && length > 0 ? UnitView(text, static_cast<std::size_t>(length)) : UnitView();
}

// A pattern as it is given: counted, or zero-terminated for -1.
UnitView patternView(const unsigned short* pattern, int length) {
  return length < 0 ? UnitView(pattern) : UnitView(pattern, static_cast<std::size_t>(length));
}
KeptPattern& givenPattern(PatternStore& patterns, const unsigned short* pattern, int length) {
  return length < 0 ? patterns.find(pattern) : patterns.find(patternView(pattern, length));
}

bool asksForIso(const unsigned short* pattern, int length) {
  return length != 0 && (pattern[0] == 'I' || pattern[0] == 'T');
}

bool endsIn(UnitView text, char letter) {
  return !text.empty() && text.back() == static_cast<unsigned short>(letter);
}

// The pattern of an ISO text. The "U" at the end of the pattern given asks for the modifier; format() looks for it at
// the second place: Parse.ModifierAtTheEnd and Format.ModifierAtTheSecondPlace.
KeptPattern& isoInputPattern(PatternStore& patterns, const core::IsoShape& shape, UnitView given) {
  core::IsoPattern pattern;
  core::appendIsoPattern(shape, pattern);
  if (given.size() > 1 && endsIn(given, 'U') && endsIn(pattern.view(), 'Z')) pattern.append('U');
  return patterns.find(pattern.view());
}

KeptPattern& isoOutputPattern(PatternStore& patterns, const unsigned short* typeName, UnitView given) {
  core::IsoPattern pattern;
  pattern.append(typeName != nullptr ? core::isoOutputPattern(typeName) : core::kIsoDateTimePattern);
  if (given.size() > 1 && given[1] == 'U' && endsIn(pattern.view(), 'Z')) pattern.append('U');
  return patterns.find(pattern.view());
}

// The pattern that writes UTC as it came in.
KeptPattern& withUtcForm(PatternStore& patterns, KeptPattern& pattern, PWFInt32 form) {
  const UnitView text = pattern.text().view();
  if (form == PWFDateTimeFormatter::UTC_AS_ZULU && endsIn(text, 'Z')) {
    KelBufferedWstring<64u> withModifier(text);
    constexpr unsigned short kModifier = 'U';
    withModifier.appendInternal(&kModifier, 1, 0);
    return patterns.find(withModifier.view());
  }
  if (form == PWFDateTimeFormatter::UTC_AS_ZEROES && endsIn(text, 'U'))
    return patterns.find(text.substr(0, text.size() - 1));
  return pattern;
}

bool isUtc(const KelTimeZone& zone) {
  const UnitView id = zone.getID().view();
  return core::isText(id, "Etc/GMT-0") || core::isText(id, "GMT");
}

KelTimeStamp stampOf(const PWFDateTime& value) {
  return {KelDate(value._day, static_cast<KelDate::Month>(value._month), value._year),
          KelTimeBase(value._hour, value._minute, value._second, value._subsecond), value.iTimeZone};
}

// Make a value of the text that `write(KelWstring&)` writes. The host asks for all the room that a pattern may need: a
// short text goes by way of other room, so that it comes to lie inside the value, and a long one at once into its
// block.
template <class Write>
PWFData shortText(Write write) {
  KelBufferedWstring<64u> text;
  write(text);
  return PWFData(text);
}
template <class Write>
PWFData longText(Write write) {
  PWFData value = TextInPlace::make(STRING);
  write(TextInPlace::text(value));
  TextInPlace::traceMade(value);
  return value;
}

void traceUtcForm(const FunctionTrace& trace, PWFInt32 form) {
  if (form != PWFDateTimeFormatter::UTC_AS_FORMAT) trace.fact("Time came in as GMT");
  trace.fact(form == PWFDateTimeFormatter::UTC_AS_FORMAT ? "Format control set to UTC_AS_FORMAT"
             : form == PWFDateTimeFormatter::UTC_AS_ZULU ? "Format control set to UTC_AS_ZULU"
                                                         : "Format control set to UTC_AS_ZEROES");
}

[[gnu::cold, gnu::noinline]] void traceShift(const FunctionTrace& trace, const KelTimeZone* from,
                                             const KelTimeZone* to) {
  const auto idOf = [](const KelTimeZone* zone) { return zone != nullptr ? zone->getID() : convertString(L"NULL"); };
  trace.fact("Shifting time zones", idOf(from), idOf(to));
}

}  // namespace

PWFDateTimeFormatter::PWFDateTimeFormatter(bool isLenient, const unsigned short* timeZoneName, int windowOfCentury,
                                           const unsigned short* textOfDateTime, int firstWeek, bool flagOfDateTime)
    : dateTimeFlag(flagOfDateTime),
      lenient(isLenient),
      dateTimeText(textOrEmpty(textOfDateTime)),
      firstWeekOfYear(firstWeek),
      centuryWindow(windowOfCentury),
      memory(std::make_unique<DateTimeMemory>()) {
  const FunctionTrace trace(this, "PWFDateTimeFormatter::PWFDateTimeFormatter", kFormatterPath);
  if (timeZoneName == nullptr || timeZoneName[0] == '0') {
    defaultTimeZone = convertString(L"0");
  } else if (timeZoneName[0] == '+' || timeZoneName[0] == '-') {
    defaultTimeZone = EvaluateTimeZone(timeZoneName);
    if (defaultTimeZone.length() == 0)
      raise<KelConversionException>(trace.site(), failures::kInvalidTimeZone, timeZoneName);
  } else {
    defaultTimeZone = textOrEmpty(timeZoneName);
  }
}

PWFDateTimeFormatter::~PWFDateTimeFormatter() {
  const FunctionTrace trace(this, "PWFDateTimeFormatter::~PWFDateTimeFormatter", kFormatterPath);
}

const KelDate& PWFDateTimeFormatter::getCurrentDate() {
  if (!haveCurrentDate) {
    currentDate = KelTimeStamp::currentGMTTime().date();
    haveCurrentDate = true;
  }
  return currentDate;
}

PWFDateTime PWFDateTimeFormatter::convertDateTime(const PWFDateTime& value) {
  return core::withDefaults(value);
}

void PWFDateTimeFormatter::createDateTimeFromTimeStamp(const KelTimeStamp& stamp, PWFDateTime& target) {
  constexpr long kMicroseconds = 1'000'000;
  target._year = stamp.date().year();
  target._month = stamp.date().month();
  target._day = stamp.date().day();
  target._hour = stamp.time().hour();
  target._minute = stamp.time().minute();
  target._second = static_cast<PWFInt32>(stamp.time().microseconds() / kMicroseconds);
  target._subsecond = static_cast<PWFInt32>(stamp.time().microseconds() % kMicroseconds);
  target._scale = core::kMicrosecondScale;
  target.iTimeZone = nullptr;
  target._hasLocalTimezone = 0;
  target.iTimeZoneFormatControl = UTC_AS_FORMAT;
}

// Null where date-times without a zone are in that of the process.
const KelTimeZone* PWFDateTimeFormatter::defaultZone() {
  if (memory->defaultZone == nullptr && defaultTimeZone.length() != 0 && !core::isText(defaultTimeZone.view(), "0"))
    memory->defaultZone = KelTimeZone::createTimeZone(defaultTimeZone, nullptr);
  return memory->defaultZone;
}

PWFInt32 PWFDateTimeFormatter::utcFormOf(const PWFDateTime& value, bool endsInZulu) const {
  if (!dateTimeFlag || value.iTimeZone == nullptr || value._hasLocalTimezone == 0 || !isUtc(*value.iTimeZone))
    return UTC_AS_FORMAT;
  return endsInZulu ? UTC_AS_ZULU : UTC_AS_ZEROES;
}

PWFDateTime PWFDateTimeFormatter::parse(const unsigned short* text, int textLength, const unsigned short* pattern,
                                        int patternLength) {
  const FunctionTrace trace(this, "PWFDateTimeFormatter::parse", kFormatterPath);
  if (pattern == nullptr)
    raiseBare<KelConversionException>(trace.site(), failures::kInternalError, "Null pattern pointer.");
  const UnitView input = viewOf(text, textLength);
  const auto isoPattern = [&]() -> KeptPattern& {
    core::IsoShape shape;
    const bool isKnown = core::isoShapeOf(input, shape);
    // The member tells the same, with a record of the trace, and raises for what has no shape.
    if (!isKnown || debugTraceOn()) IdentifyIFormatPattern(KelWstring(input));
    return isoInputPattern(memory->patterns, shape, patternView(pattern, patternLength));
  };
  KeptPattern& working =
      asksForIso(pattern, patternLength) ? isoPattern() : givenPattern(memory->patterns, pattern, patternLength);
  if (!working.hasZone())
    trace.fact("the incoming string doesn't have a timezone, we'll use the one that came with the message set");

  const auto read = [&] {
    const KelTimeStamp midnight(getCurrentDate(), KelTimeBase());
    KelTimeStamp stamp = KelTimeStampFormatter(owner(), nullptr, input, working.compiled(), midnight, centuryWindow,
                                               dateTimeText.view(), firstWeekOfYear, lenient);
    if (working.hasZone()) return stamp;
    if (const KelTimeZone* const zone = defaultZone())
      stamp.setTimeZone(zone);
    else
      trace.fact(
          "There was no timezone on the input, and default is set to Broker Default, hence don't set it and let the "
          "Broker sort it out later");
    return stamp;
  };
  PWFDateTime value;
  try {
    const KelTimeStamp stamp = read();
    createDateTimeFromTimeStamp(stamp, value);
    value.iTimeZone = stamp.timeZone();
  } catch (...) {
    raise<KelParserException>(trace.site(), failures::kDateTimeParse, KelWstring(input), working.text(),
                              lenient ? 0 : 1);
  }
  value._hasLocalTimezone = working.hasZone() ? 1 : 0;
  value.iTimeZoneFormatControl = utcFormOf(value, endsIn(input, 'Z'));
  traceUtcForm(trace, value.iTimeZoneFormatControl);
  return value;
}

PWFData PWFDateTimeFormatter::format(const PWFDateTime& value, const unsigned short* pattern, int patternLength,
                                     const unsigned short* typeName) {
  const FunctionTrace trace(this, "PWFDateTimeFormatter::format", kFormatterPath);
  if (pattern == nullptr)
    raiseBare<KelConversionException>(trace.site(), failures::kInternalError, "Null pattern pointer.");
  KeptPattern& chosen = asksForIso(pattern, patternLength)
                            ? isoOutputPattern(memory->patterns, typeName, patternView(pattern, patternLength))
                            : givenPattern(memory->patterns, pattern, patternLength);
  KeptPattern& working = dateTimeFlag ? withUtcForm(memory->patterns, chosen, value.iTimeZoneFormatControl) : chosen;

  const KelTimeZone* zone = value.iTimeZone;
  if (value._hasLocalTimezone == 0) {
    trace.fact("The datetime doesn't have it's own time zone, using the one from the message set");
    zone = defaultZone();
    if (zone == nullptr) {
      trace.fact("the message set timezone is zero, setting to broker locale");
      zone = KelTimeZone::createDefault(nullptr);
    }
  }
  KelTimeStamp stamp = stampOf(core::withDefaults(value));
  if (debugTraceOn()) traceShift(trace, stamp.timeZone(), zone);
  stamp.setTimeZone(zone);

  const auto write = [&](KelWstring& target) {
    try {
      KelTimeStampFormatter(owner(), nullptr, stamp, working.compiled(), centuryWindow, dateTimeText.view(),
                            firstWeekOfYear, false)
          .write(target);
    } catch (...) {
      raise<KelParserException>(trace.site(), failures::kDateTimeFormat, stamp.asString(), working.text());
    }
  };
  return working.text().length() > TextInPlace::kInlineUnits ? longText(write) : shortText(write);
}
