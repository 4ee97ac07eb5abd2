// Date-times as a count of seconds or milliseconds from an epoch.

#include <limits>

#include "core/datetimefields.hpp"
#include "kelforkhold.hpp"
#include "keltimestampformatter.hpp"
#include "kelwstringconvertor.hpp"
#include "pwffrmtr.hpp"
#include "pwffrmtr/memory.hpp"
#include "pwffrmtr/sourcepath.hpp"
#include "support/support.hpp"

using namespace oxr;

namespace {

constexpr KelTimeStamp kDefaultEpoch;  // 1970-01-01, midnight
constexpr int kEpochCenturyWindow = 53;
constexpr long kMicrosecondsPerMillisecond = 1000;
constexpr long kMillisecondsPerDay = 86'400'000;
constexpr long kMostMilliseconds = std::numeric_limits<long>::max() / kMicrosecondsPerMillisecond;

// The pattern of an epoch, told by its length; null for none.
const KelTimeStampPattern* epochPattern(std::size_t length) {
  if (length == 23) return &madeOnce<[] { return KelTimeStampPattern(convertString(L"yyyy-MM-dd'T'HH:mm ZZZ")); }>();
  if (length == 22) return &madeOnce<[] { return KelTimeStampPattern(convertString(L"yyyy-MM-dd'T'HH:mmZZZ")); }>();
  return nullptr;
}

// An epoch as a failure shows it.
KelWstring shownEpoch(const unsigned short* text) {
  return text[0] == 0 ? kDefaultEpoch.asString() : KelWstring(UnitView(text));
}

}  // namespace

// The epoch of a text never changes: the patterns have every field but the seconds.
void PWFDateTimeFormatter::convertEpoch(const unsigned short* text, KelTimeStamp& target) {
  const FunctionTrace trace(this, "PWFDateTimeFormatter::convertEpoch", kFormatterPath);
  if (text[0] == 0) {
    target = kDefaultEpoch;
    return;
  }
  if (isSameText(memory->epochText.view(), text)) {
    target = memory->epoch;
    return;
  }
  const UnitView epoch(text);
  const KelTimeStampPattern* const pattern = epochPattern(epoch.size());
  if (pattern == nullptr) raise<KelConversionException>(trace.site(), failures::kInvalidEpoch, text);
  try {
    const KelTimeStamp midnight(getCurrentDate(), KelTimeBase());
    target = KelTimeStampFormatter(owner(), nullptr, epoch, *pattern, midnight, kEpochCenturyWindow);
  } catch (...) {
    raise<KelConversionException>(trace.site(), failures::kInvalidEpoch, text);
  }
  memory->epochText = KelWstring(epoch);
  memory->epoch = target;
}

PWFDateTime PWFDateTimeFormatter::parseMilliSeconds(long count, const unsigned short* epoch) {
  const FunctionTrace trace(this, "PWFDateTimeFormatter::parseMilliSeconds", kFormatterPath);
  if (count < -kMostMilliseconds || count > kMostMilliseconds)
    raise<KelConversionException>(trace.site(), failures::kMillisecondRange, shownEpoch(epoch), count);
  KelTimeStamp stamp;
  convertEpoch(epoch, stamp);
  stamp.addInterval(KelInterval(KelInterval::microseconds, count * kMicrosecondsPerMillisecond));
  PWFDateTime value;
  createDateTimeFromTimeStamp(stamp, value);
  return value;
}

PWFDateTime PWFDateTimeFormatter::parseSeconds(int count, const unsigned short* epoch) {
  const FunctionTrace trace(this, "PWFDateTimeFormatter::parseSeconds", kFormatterPath);
  return parseMilliSeconds(count * 1000L, epoch);
}

long PWFDateTimeFormatter::formatMilliSeconds(const PWFDateTime& value, const unsigned short* epoch) {
  const FunctionTrace trace(this, "PWFDateTimeFormatter::formatMilliSeconds", kFormatterPath);
  const PWFDateTime full = core::withDefaults(value);
  KelTimeStamp from;
  convertEpoch(epoch, from);
  const KelDate date(full._day, static_cast<KelDate::Month>(full._month), full._year);
  const KelTimeBase time(full._hour, full._minute, full._second, full._subsecond);
  const long days = KelDate::dateSubtract(date, from.date(), KelInterval::days).value();
  const long rest = KelTimeBase::timeSubtract(time, from.time(), KelInterval::microseconds).value();
  return rest / kMicrosecondsPerMillisecond + days * kMillisecondsPerDay;
}

int PWFDateTimeFormatter::formatSeconds(const PWFDateTime& value, const unsigned short* epoch) {
  const FunctionTrace trace(this, "PWFDateTimeFormatter::formatSeconds", kFormatterPath);
  const long seconds = formatMilliSeconds(value, epoch) / 1000;
  if (seconds < std::numeric_limits<int>::min() || seconds > std::numeric_limits<int>::max())
    raise<KelConversionException>(trace.site(), failures::kDateTimeRange, shownEpoch(epoch));
  return static_cast<int>(seconds);
}
