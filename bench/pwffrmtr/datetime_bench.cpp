// Date-times as text, as binary fields and as counts. Yardsticks: the C library's strptime and strftime, with the
// fraction and the zone by hand as they lack them, and ICU's SimpleDateFormat with a pattern that means the same. All
// rows walk the same instants, so many that no branch predictor learns them by heart.

#include <benchmark/benchmark.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "dataconv.hpp"
#include "keltimezone.hpp"
#include "kelwstringconvertor.hpp"

namespace {

constexpr std::size_t kCount = 8192;  // a power of two

struct Instant {
  std::int64_t milliseconds;  // since 1970
  int offset;                 // seconds, of the zone that it is told in
};

const std::vector<Instant>& instants() {
  static const std::vector<Instant> all = [] {
    std::mt19937_64 random(20240229);
    std::vector<Instant> drawn(kCount);
    for (Instant& each : drawn)
      each = {static_cast<std::int64_t>(random() % (80LL * 365 * 86'400'000)),
              (static_cast<int>(random() % 25) - 12) * 3600};
    return drawn;
  }();
  return all;
}

// A converter whose date-times without a zone are in this one.
DataCnv converterIn(const KelWstring& zone) {
  return DataCnv(37, eEndianBig, eEndianBig, eFloatHexadecimal, 53, zone.characters(), true, nullptr, 0, false, 12,
                 false, eMessageStandardDefault, nullptr);
}

std::unique_ptr<icu::SimpleDateFormat> icuFormat(const char* pattern, const char* zone) {
  UErrorCode status = U_ZERO_ERROR;
  auto format = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString::fromUTF8(pattern), status);
  format->adoptTimeZone(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(zone)));
  if (U_FAILURE(status)) std::abort();
  return format;
}

// The instant's text by the format string of strftime, in which %3 stands for the milliseconds and %Z for an offset
// with a colon.
std::string textOf(const Instant& instant, std::string form) {
  const std::time_t local = instant.milliseconds / 1000 + instant.offset;
  std::tm fields{};
  gmtime_r(&local, &fields);
  char part[64];
  const int minutes = std::abs(instant.offset) / 60;
  std::snprintf(part, sizeof part, "%c%02d:%02d", instant.offset < 0 ? '-' : '+', minutes / 60, minutes % 60);
  if (const auto at = form.find("%Z"); at != form.npos) form.replace(at, 2, part);
  std::snprintf(part, sizeof part, "%03d", static_cast<int>(instant.milliseconds % 1000));
  if (const auto at = form.find("%3"); at != form.npos) form.replace(at, 2, part);
  return std::string(part, std::strftime(part, sizeof part, form.c_str(), &fields));
}

std::vector<std::string> textsOf(const char* form) {
  std::vector<std::string> texts;
  texts.reserve(kCount);
  for (const Instant& each : instants())
    texts.push_back(textOf(each, form));
  return texts;
}

// Times `convert(i)` for each index.
template <class Convert>
void repeat(benchmark::State& state, Convert convert) {
  std::size_t i = 0;
  for (auto _ : state) {
    auto result = convert(i);
    benchmark::DoNotOptimize(result);
    i = (i + 1) & (kCount - 1);
  }
}

void read(benchmark::State& state, const char* form, const char* pattern) {
  const KelWstring by = oxr::fromUtf8(pattern);
  std::vector<KelWstring> texts;
  for (const std::string& text : textsOf(form))
    texts.push_back(oxr::fromUtf8(text));
  DataCnv converter = converterIn(oxr::fromUtf8("Etc/GMT"));
  repeat(state, [&](std::size_t i) {
    return converter.StrToDateTime(texts[i].characters(), by.characters(), static_cast<int>(texts[i].length()));
  });
}
void icuRead(benchmark::State& state, const char* form, const char* pattern) {
  std::vector<icu::UnicodeString> texts;
  for (const std::string& text : textsOf(form))
    texts.push_back(icu::UnicodeString::fromUTF8(text));
  const auto format = icuFormat(pattern, "Etc/GMT");
  repeat(state, [&](std::size_t i) {
    UErrorCode status = U_ZERO_ERROR;
    const UDate value = format->parse(texts[i], status);
    if (U_FAILURE(status)) std::abort();
    return value;
  });
}
// `offsetForm` is what follows the milliseconds; null where the text ends with the seconds.
void cRead(benchmark::State& state, const char* form, const char* secondsForm, const char* offsetForm) {
  const std::vector<std::string> texts = textsOf(form);
  repeat(state, [&](std::size_t i) {
    std::tm fields{}, zone{};
    const char* rest = strptime(texts[i].c_str(), secondsForm, &fields);
    if (rest == nullptr) std::abort();
    char* end = nullptr;
    const long milliseconds = offsetForm != nullptr ? std::strtol(rest + 1, &end, 10) : 0;
    if (offsetForm != nullptr && strptime(end, offsetForm, &zone) == nullptr) std::abort();
    return (timegm(&fields) - zone.tm_gmtoff) * 1000 + milliseconds;
  });
}

constexpr char kIsoForm[] = "%Y-%m-%dT%H:%M:%S.%3%Z";
constexpr char kIsoPattern[] = "yyyy-MM-dd'T'HH:mm:ss.SSSZZZ";
constexpr char kIcuIsoPattern[] = "yyyy-MM-dd'T'HH:mm:ss.SSSxxx";

BENCHMARK_CAPTURE(cRead, , kIsoForm, "%Y-%m-%dT%H:%M:%S", "%z")->Name("StrToDateTime/ISO pattern, strptime");
BENCHMARK_CAPTURE(icuRead, , kIsoForm, kIcuIsoPattern)->Name("StrToDateTime/ISO pattern, ICU");
BENCHMARK_CAPTURE(read, , kIsoForm, kIsoPattern)->Name("StrToDateTime/ISO pattern");
BENCHMARK_CAPTURE(read, , kIsoForm, "I")->Name("StrToDateTime/I");
BENCHMARK_CAPTURE(read, , "%Y-%m-%d", "I")->Name("StrToDateTime/I, a date");
BENCHMARK_CAPTURE(cRead, , "%Y%m%d%H%M%S", "%Y%m%d%H%M%S", nullptr)->Name("StrToDateTime/14 digits, strptime");
BENCHMARK_CAPTURE(icuRead, , "%Y%m%d%H%M%S", "yyyyMMddHHmmss")->Name("StrToDateTime/14 digits, ICU");
BENCHMARK_CAPTURE(read, , "%Y%m%d%H%M%S", "yyyyMMddHHmmss")->Name("StrToDateTime/14 digits");
BENCHMARK_CAPTURE(icuRead, , "%d %b %Y %H:%M GMT", "dd MMM yyyy HH:mm zzz")->Name("StrToDateTime/names, ICU");
BENCHMARK_CAPTURE(read, , "%d %b %Y %H:%M GMT", "dd MMM yyyy HH:mm zzz")->Name("StrToDateTime/names");

// The date-times of the instants, in the zone of each or in none.
std::vector<PWFDateTime> valuesOf(bool haveZones) {
  std::vector<PWFDateTime> values;
  values.reserve(kCount);
  for (const Instant& each : instants()) {
    const std::time_t local = each.milliseconds / 1000 + (haveZones ? each.offset : 0);
    std::tm fields{};
    gmtime_r(&local, &fields);
    values.push_back({fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min,
                      fields.tm_sec, static_cast<PWFInt32>(each.milliseconds % 1000 * 1000), 6,
                      haveZones ? KelTimeZone::ofOffset(each.offset) : nullptr, haveZones ? 1 : 0, 0});
  }
  return values;
}

// `zone`: of date-times that have none of their own; null where each has one.
void write(benchmark::State& state, const char* pattern, const char* zone) {
  const KelWstring by = oxr::fromUtf8(pattern);
  const KelWstring zoneName = oxr::fromUtf8(zone != nullptr ? zone : "Etc/GMT");
  const std::vector<PWFDateTime> values = valuesOf(zone == nullptr);
  DataCnv converter = converterIn(zoneName);
  repeat(state, [&](std::size_t i) { return converter.StrFromDateTime(values[i], by.characters(), nullptr); });
}
void icuWrite(benchmark::State& state, const char* pattern, const char* zone) {
  const auto format = icuFormat(pattern, zone);
  repeat(state, [&](std::size_t i) {
    icu::UnicodeString text;
    format->format(static_cast<UDate>(instants()[i].milliseconds), text);
    return text.length();
  });
}
// `hasFraction`: milliseconds and the offset of UTC follow.
void cWrite(benchmark::State& state, const char* form, bool hasFraction) {
  repeat(state, [&](std::size_t i) {
    const std::int64_t milliseconds = instants()[i].milliseconds;
    const std::time_t seconds = milliseconds / 1000;
    std::tm fields{};
    gmtime_r(&seconds, &fields);
    char text[64];
    std::size_t length = std::strftime(text, sizeof text, form, &fields);
    if (hasFraction)
      length += static_cast<std::size_t>(
          std::snprintf(text + length, sizeof text - length, ".%03d+0000", static_cast<int>(milliseconds % 1000)));
    benchmark::DoNotOptimize(text);
    benchmark::ClobberMemory();
    return length;
  });
}

BENCHMARK_CAPTURE(cWrite, , "%Y-%m-%dT%H:%M:%S", true)->Name("StrFromDateTime/ISO pattern, strftime");
BENCHMARK_CAPTURE(icuWrite, , kIcuIsoPattern, "Etc/GMT")->Name("StrFromDateTime/ISO pattern, ICU");
BENCHMARK_CAPTURE(write, , kIsoPattern, nullptr)->Name("StrFromDateTime/ISO pattern");
BENCHMARK_CAPTURE(write, , "I", nullptr)->Name("StrFromDateTime/I");
BENCHMARK_CAPTURE(icuWrite, , kIcuIsoPattern, "Europe/Paris")->Name("StrFromDateTime/ISO pattern, Paris, ICU");
BENCHMARK_CAPTURE(write, , kIsoPattern, "Europe/Paris")->Name("StrFromDateTime/ISO pattern, Paris");
BENCHMARK_CAPTURE(cWrite, , "%Y%m%d%H%M%S", false)->Name("StrFromDateTime/14 digits, strftime");
BENCHMARK_CAPTURE(icuWrite, , "yyyyMMddHHmmss", "Etc/GMT")->Name("StrFromDateTime/14 digits, ICU");
BENCHMARK_CAPTURE(write, , "yyyyMMddHHmmss", "Etc/GMT")->Name("StrFromDateTime/14 digits");
BENCHMARK_CAPTURE(icuWrite, , "dd MMM yyyy HH:mm zzz", "Etc/GMT")->Name("StrFromDateTime/names, ICU");
BENCHMARK_CAPTURE(write, , "dd MMM yyyy HH:mm zzz", "Etc/GMT")->Name("StrFromDateTime/names");

constexpr char kBinaryPattern[] = "yyyyMdHmsSSSS";
constexpr int kBinarySize = 13;

void readBinary(benchmark::State& state) {
  const KelWstring zone = oxr::fromUtf8("0"), by = oxr::fromUtf8(kBinaryPattern);
  DataCnv converter = converterIn(zone);
  std::vector<unsigned char> fields(kCount * kBinarySize);
  const std::vector<PWFDateTime> values = valuesOf(false);
  for (std::size_t i = 0; i < kCount; ++i)
    converter.BinaryFromDateTime(values[i], &fields[i * kBinarySize], kBinarySize, by.characters());
  repeat(state, [&](std::size_t i) {
    return converter.BinaryToDateTime(&fields[i * kBinarySize], kBinarySize, by.characters());
  });
}
BENCHMARK(readBinary)->Name("BinaryToDateTime/13 bytes");

void writeBinary(benchmark::State& state) {
  const KelWstring zone = oxr::fromUtf8("0"), by = oxr::fromUtf8(kBinaryPattern);
  DataCnv converter = converterIn(zone);
  const std::vector<PWFDateTime> values = valuesOf(false);
  repeat(state, [&](std::size_t i) {
    std::array<unsigned char, kBinarySize> field;
    converter.BinaryFromDateTime(values[i], field.data(), kBinarySize, by.characters());
    return field;
  });
}
BENCHMARK(writeBinary)->Name("BinaryFromDateTime/13 bytes");

// Counts, from the epoch of the C library and from another one.
template <class Convert>
void count(benchmark::State& state, const char* epoch, Convert convert) {
  const KelWstring zone = oxr::fromUtf8("0"), from = oxr::fromUtf8(epoch);
  DataCnv converter = converterIn(zone);
  const std::vector<PWFDateTime> values = valuesOf(false);
  repeat(state, [&](std::size_t i) {
    // Seconds of 32 bits end in 2038.
    return convert(converter, values[i], static_cast<int>(instants()[i].milliseconds / 2000), from.characters());
  });
}
void readSeconds(benchmark::State& state, const char* epoch) {
  count(state, epoch, [](DataCnv& converter, const PWFDateTime&, int seconds, const unsigned short* from) {
    return converter.SecondsToDateTime(seconds, from);
  });
}
void readMilliseconds(benchmark::State& state, const char* epoch) {
  count(state, epoch, [](DataCnv& converter, const PWFDateTime&, int seconds, const unsigned short* from) {
    return converter.MilliSecondsToDateTime(seconds * 1009L, from);
  });
}
void writeMilliseconds(benchmark::State& state, const char* epoch) {
  count(state, epoch, [](DataCnv& converter, const PWFDateTime& value, int, const unsigned short* from) {
    return converter.MilliSecondsFromDateTime(value, from);
  });
}
void writeSeconds(benchmark::State& state, const char* epoch) {
  count(state, epoch, [](DataCnv& converter, PWFDateTime value, int, const unsigned short* from) {
    value._year = 1970 + (value._year - 1970) / 2;  // within 32 bits
    value._day = std::min(value._day, 28);
    return converter.SecondsFromDateTime(value, from);
  });
}
void cReadSeconds(benchmark::State& state) {
  repeat(state, [](std::size_t i) {
    const std::time_t seconds = instants()[i].milliseconds / 2000;
    std::tm fields{};
    return *gmtime_r(&seconds, &fields);
  });
}
void cWriteSeconds(benchmark::State& state) {
  std::vector<std::tm> all(kCount);
  for (std::size_t i = 0; i < kCount; ++i) {
    const std::time_t seconds = instants()[i].milliseconds / 2000;
    gmtime_r(&seconds, &all[i]);
  }
  repeat(state, [&](std::size_t i) {
    std::tm fields = all[i];
    return timegm(&fields);
  });
}
constexpr char kEpoch[] = "2000-01-01T00:00+00:00";
BENCHMARK(cReadSeconds)->Name("SecondsToDateTime/gmtime");
BENCHMARK_CAPTURE(readSeconds, , "")->Name("SecondsToDateTime/1970");
BENCHMARK_CAPTURE(readMilliseconds, , "")->Name("MilliSecondsToDateTime/1970");
BENCHMARK_CAPTURE(readMilliseconds, , kEpoch)->Name("MilliSecondsToDateTime/2000");
BENCHMARK(cWriteSeconds)->Name("SecondsFromDateTime/timegm");
BENCHMARK_CAPTURE(writeSeconds, , "")->Name("SecondsFromDateTime/1970");
BENCHMARK_CAPTURE(writeMilliseconds, , "")->Name("MilliSecondsFromDateTime/1970");
BENCHMARK_CAPTURE(writeMilliseconds, , kEpoch)->Name("MilliSecondsFromDateTime/2000");

}  // namespace
