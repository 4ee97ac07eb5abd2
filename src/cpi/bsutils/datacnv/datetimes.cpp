// Date-times in all their forms. The formatter does the work; here it is made, and a missing pattern is dealt with.

#include <algorithm>

#include "core/datetimefields.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "kelforkhold.hpp"
#include "pwffrmtr.hpp"
#include "support/support.hpp"

using namespace oxr;

namespace {

constexpr int kTerminated = -1;  // the length of a text that is zero-terminated

// The pattern for the fields that are set; null where there is none for them.
const unsigned short* standardPattern(const PWFDateTime& value) {
  using core::isSet;
  const bool hasDate = isSet(value._year) && isSet(value._month) && isSet(value._day);
  const bool hasTime = isSet(value._hour) && isSet(value._minute) && isSet(value._second);
  if (hasDate && hasTime) {
    const KelWstring& fine = madeOnce<[] { return DataCnv::TIMESTAMP_PATTERN + DataCnv::MILLISEC_PATTERN; }>();
    return (isSet(value._subsecond) ? fine : DataCnv::TIMESTAMP_PATTERN).characters();
  }
  if (hasDate) return DataCnv::DATE_PATTERN.characters();
  return hasTime ? DataCnv::TIME_PATTERN.characters() : nullptr;
}

[[gnu::cold, gnu::noinline]] void traceFields(const FunctionTrace& trace, const PWFDateTime& value) {
  trace.fact("dtOut._year", value._year);
  trace.fact("dtOut._month", value._month);
  trace.fact("dtOut._day", value._day);
  trace.fact("dtOut._hour", value._hour);
  trace.fact("dtOut._minute", value._minute);
  trace.fact("dtOut._second", value._second);
  trace.fact("dtOut._subsecond", value._subsecond);
  trace.fact("dtOut._scale", value._scale);
  trace.fact("dtOut.iTimeZone", static_cast<const void*>(value.iTimeZone));
  trace.fact("dtOut._hasLocalTimezone", value._hasLocalTimezone);
  trace.fact("dtOut.iTimeZoneFormatControl", value.iTimeZoneFormatControl);
}

}  // namespace

PWFDateTime DataCnv::StrToDateTime(const unsigned short* text, const unsigned short* pattern, int length) {
  const FunctionTrace trace(this, "DataCnv::StrToDateTime", kDataCnvPath);
  if (length == kTerminated) length = text != nullptr ? static_cast<int>(UnitView(text).size()) : 0;
  if (pattern == nullptr || pattern[0] == 0)
    raise<KelParserException>(
        trace.site(), failures::kEmptyDateTimeFormat,
        text != nullptr && length > 0 ? KelWstring(text, static_cast<unsigned>(length)) : KelWstring());
  const PWFDateTime value = DataCnvParts::dateTimes(*this).parse(text, length, pattern, kTerminated);
  if (debugTraceOn()) [[unlikely]]
    traceFields(trace, value);
  return value;
}

PWFData DataCnv::StrFromDateTime(const PWFDateTime& value, const unsigned short* pattern,
                                 const unsigned short* typeName) {
  const FunctionTrace trace(this, "DataCnv::StrFromDateTime", kDataCnvPath);
  PWFDateTimeFormatter& formatter = DataCnvParts::dateTimes(*this);
  if (pattern != nullptr && pattern[0] != 0) return formatter.format(value, pattern, kTerminated, typeName);
  const unsigned short* const standard = standardPattern(value);
  if (standard == nullptr) raiseInternalError(trace.site(), "Datetime does not match any standard template.");
  return formatter.format(value, standard, kTerminated, nullptr);
}

PWFDateTime DataCnv::BinaryToDateTime(const void* data, int length, const unsigned short* pattern) {
  const FunctionTrace trace(this, "DataCnv::BinaryToDateTime", kDataCnvPath);
  return DataCnvParts::dateTimes(*this).parseBinary(data, length, pattern);
}

void DataCnv::BinaryFromDateTime(const PWFDateTime& value, void* target, int length, const unsigned short* pattern) {
  const FunctionTrace trace(this, "DataCnv::BinaryFromDateTime", kDataCnvPath);
  DataCnvParts::dateTimes(*this).formatBinary(value, target, length, pattern);
}

PWFDateTime DataCnv::SecondsToDateTime(int count, const unsigned short* epoch) {
  const FunctionTrace trace(this, "DataCnv::SecondsToDateTime", kDataCnvPath);
  return DataCnvParts::dateTimes(*this).parseSeconds(count, epoch);
}

PWFDateTime DataCnv::MilliSecondsToDateTime(long count, const unsigned short* epoch) {
  const FunctionTrace trace(this, "DataCnv::MilliSecondsToDateTime", kDataCnvPath);
  return DataCnvParts::dateTimes(*this).parseMilliSeconds(count, epoch);
}

int DataCnv::SecondsFromDateTime(const PWFDateTime& value, const unsigned short* epoch) {
  const FunctionTrace trace(this, "DataCnv::SecondsFromDateTime", kDataCnvPath);
  return DataCnvParts::dateTimes(*this).formatSeconds(value, epoch);
}

long DataCnv::MilliSecondsFromDateTime(const PWFDateTime& value, const unsigned short* epoch) {
  const FunctionTrace trace(this, "DataCnv::MilliSecondsFromDateTime", kDataCnvPath);
  return DataCnvParts::dateTimes(*this).formatMilliSeconds(value, epoch);
}

// ---- As the digits of a packed decimal

PWFDateTime DataCnv::PckdDecToDateTime(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign,
                                       const unsigned short* pattern) {
  const FunctionTrace trace(this, "DataCnv::PckdDecToDateTime", kDataCnvPath);
  const PWFData decimal = PckdDecToDec(source, size, virtualDecimalPoint, sign);
  const UnitView digits(decimal.getDecimalValue(), static_cast<std::size_t>(decimal.getDecimalLength()));
  const std::size_t wanted = pattern != nullptr ? UnitView(pattern).size() : 0;
  if (digits.size() >= wanted) {
    const std::size_t leadingZeros = std::min(digits.find_first_not_of(u'0'), digits.size());
    const UnitView rest = digits.substr(std::min(leadingZeros, digits.size() - wanted));
    return StrToDateTime(rest.data(), pattern, static_cast<int>(rest.size()));
  }
  KelBufferedWstring<16u> padded;
  unsigned short* const units = padded.resizeForOverwrite(static_cast<unsigned>(wanted));
  std::copy(digits.begin(), digits.end(), std::fill_n(units, wanted - digits.size(), u'0'));
  return StrToDateTime(padded.characters(), pattern, static_cast<int>(wanted));
}

void DataCnv::PckdDecFromDateTime(const PWFDateTime& value, unsigned char* target, int size,
                                  const unsigned short* pattern, int virtualDecimalPoint, ESign sign) {
  const FunctionTrace trace(this, "DataCnv::PckdDecFromDateTime", kDataCnvPath);
  const PWFData text = StrFromDateTime(value, pattern, nullptr);
  PckdDecFromDec(text.getStringValue(), target, size, virtualDecimalPoint, sign);
}
