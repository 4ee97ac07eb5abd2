// Durations as text. The core reads and spells them (core/duration.hpp); here texts are padded and failures raised, and
// trace shows a duration as it is written field by field.

#include <algorithm>
#include <cstdint>

#include "core/duration.hpp"
#include "datacnv/padchar.hpp"
#include "datacnv/sourcepath.hpp"
#include "datacnv/textedit.hpp"
#include "dataconv.hpp"
#include "support/support.hpp"
#include "values/textinplace.hpp"

using namespace oxr;

namespace {

constexpr int kTerminated = -1;  // the length of a text that is zero-terminated
constexpr char kType[] = "interval";
constexpr int kPlainUnits = 256;  // of the plain form's buffer; every duration has fewer
static_assert(core::kMaxDurationLength < kPlainUnits);

// A null text counts as empty.
UnitView viewOf(const unsigned short* text, int length) {
  if (text == nullptr) return {};
  return length == kTerminated ? UnitView(text) : UnitView(text, static_cast<unsigned>(std::max(length, 0)));
}

// An event and no failure: the reading goes on without the digits that are too many.
[[gnu::cold, gnu::noinline]] void warnOfFineSeconds(const FailureSite& site, UnitView text) {
  if (KelLog::iEffectiveLogFilter < 0) return;
  KelLog::WarningItem item(site.source, site.file, site.line, site.function, KelLog::iDefaultLogSource,
                           failures::kFineSeconds.number, site.handle);
  item << failures::kFineSeconds.text << kType << KelWstring(text);
  item.writeToFile();
}

constexpr const Failure& failureOf(core::DurationFault fault) {
  switch (fault) {
    case core::DurationFault::range:
      return failures::kDurationRange;
    case core::DurationFault::tooManyDays:
      return failures::kDurationTooManyDays;
    case core::DurationFault::combination:
      return failures::kDurationCombination;
    default:
      return failures::kInvalidData;
  }
}

// A duration with a negative field is left to the general way, which raises.
inline bool writeFast(const PWFInterval& value, KelWstring& out) {
  unsigned short text[core::kMaxDurationLength];
  const std::uint32_t length = core::writeDuration(value, text);
  if (length != 0) out.assignInternal(text, length, 0);
  return length != 0;
}

[[gnu::cold, gnu::noinline]] void writeGeneral(DataCnv& cnv, const PWFInterval& value, KelWstring& out) {
  out.eraseInternal(0, KelWstring::npos);
  core::spellDuration(
      value, [&](char unit) { appendUnit(out, static_cast<unsigned char>(unit)); },
      [&](std::int32_t number, bool isFraction) { cnv.AppendIntervalField(number, out, isFraction); });
}

[[gnu::cold, gnu::noinline]] PWFData writePlainGeneral(DataCnv& cnv, const PWFInterval& value) {
  const FunctionTrace trace(&cnv, "DataCnv::StrFromInterval", kDataCnvPath);
  if (cnv.isDebugTraceActive()) {
    trace.fact("intervalIn._years", value._years);
    trace.fact("intervalIn._months", value._months);
    trace.fact("intervalIn._microseconds", value._microseconds);
    trace.fact("intervalIn._sign", value._sign);
  }
  unsigned short text[kPlainUnits];
  int length = kPlainUnits;
  cnv.StrFromInterval(value, text, length, false, eJustifyLeft, 0, true);
  return PWFData(text, length);
}

}  // namespace

PWFInterval DataCnv::StrToInterval(const unsigned short* text, int length) {
  const FunctionTrace trace(this, "DataCnv::StrToInterval", kDataCnvPath);
  const UnitView view = viewOf(text, length);
  core::DurationReading reading = core::readDuration(view);
  for (; reading.fineFractions != 0; --reading.fineFractions)
    warnOfFineSeconds(trace.site(), view);
  if (reading.fault != core::DurationFault::none) [[unlikely]]
    raise<KelConversionException>(trace.site(), failureOf(reading.fault), kType, KelWstring(view));
  return reading.value;
}

void DataCnv::AppendIntervalField(int value, KelWstring& out, bool fraction) {
  const FunctionTrace trace(this, "DataCnv::AppendIntervalField", kDataCnvPath);
  if (value < 0) raise<KelConversionException>(trace.site(), failures::kOutOfBounds, kType, "positive integer", value);
  const core::DurationField field(value, fraction);
  field.write(out.appendForOverwrite(field.length()));
}

// Nothing tests that the text fits the field: Intervals.AreWritten.
void DataCnv::StrFromInterval(const PWFInterval& interval, KelWstring& out, int& length, bool padField,
                              EJustification justification, unsigned short padChar, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::StrFromInterval", kDataCnvPath);
  if (!wentFast([&] { return writeFast(interval, out); })) [[unlikely]]
    writeGeneral(*this, interval, out);
  if (padField) {
    const unsigned short pad = padCharIsUnicode ? padChar : uncheckedPadUnit(*this, padChar);
    const std::int64_t missing = std::max<std::int64_t>(std::int64_t{length} - out.length(), 0);
    PadData(out, static_cast<int>(missing), justification, pad, true);
  }
  length = static_cast<int>(out.length());
}

void DataCnv::StrFromInterval(const PWFInterval& interval, unsigned short* out, int& length, bool padField,
                              EJustification justification, unsigned short padChar, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::StrFromInterval", kDataCnvPath);
  if (out == nullptr) raiseInternalError(trace.site(), "Null output buffer pointer");
  KelBufferedWstring<16u> text;
  StrFromInterval(interval, text, length, padField, justification, padChar, padCharIsUnicode);
  std::copy_n(text.characters(), text.length(), out);
}

PWFData DataCnv::StrFromInterval(const PWFInterval& interval) {
  unsigned short text[core::kMaxDurationLength];
  std::uint32_t length;
  if (wentFast([&] { return (length = core::writeDuration(interval, text)) != 0; })) [[likely]]
    return TextInPlace::make(STRING, length, [&](unsigned short* out) { std::copy_n(text, length, out); });
  return writePlainGeneral(*this, interval);
}
