#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/harness/choices.hpp"
#include "kelexception.hpp"
#include "keltimestampformatter.hpp"
#include "kelwstringconvertor.hpp"

// Time stamps, zones and patterns for the checks of the time stamp formatter.
namespace oxr::fuzz {

// With and without daylight saving, also of half an hour, two hours and below standard time; fractions of an hour; a
// day left out (Apia); old local times that have seconds (all but the fixed ones).
constexpr const char* kZoneIds[] = {
    "Etc/GMT",          "Europe/Paris",     "Europe/London",     "Europe/Dublin",     "America/New_York",
    "America/St_Johns", "America/Caracas",  "America/Sao_Paulo", "Asia/Calcutta",     "Asia/Katmandu",
    "Asia/Tehran",      "Pacific/Apia",     "Pacific/Chatham",   "Africa/Casablanca", "Africa/Monrovia",
    "Antarctica/Troll", "Europe/Amsterdam", "GMT+05:30",         "Etc/GMT+12",        "Australia/Lord_Howe",
};
constexpr std::size_t kZoneCount = std::size(kZoneIds);

inline const KelTimeZone* zoneAt(std::size_t index) {
  static const auto zones = [] {
    std::array<const KelTimeZone*, kZoneCount> made{};
    for (std::size_t i = 0; i < kZoneCount; ++i)
      made[i] = KelTimeZone::createTimeZone(fromUtf8(kZoneIds[i]), nullptr);
    return made;
  }();
  return zones[index];
}

// Instants are counted in microseconds since 1970-01-01T00:00Z, local times on the clocks alike.
constexpr std::int64_t kPerSecond = 1'000'000;
constexpr std::int64_t kPerDay = 86'400 * kPerSecond;
constexpr std::int64_t kFirstInstant = -719'161 * kPerDay;  // 0001-01-02: in all zones the year is 1
constexpr std::int64_t kLastInstant = 2'932'895 * kPerDay;  // 9999-12-30

inline std::int64_t localTimeOf(const KelTimeStampBase& stamp) {
  return KelDate::dateSubtract(stamp.date(), KelDate(), KelInterval::microseconds).value() +
         KelTimeBase::timeSubtract(stamp.time(), KelTimeBase(), KelInterval::microseconds).value();
}
inline std::int64_t instantOf(const KelTimeStamp& stamp) {
  return localTimeOf(stamp) - (stamp.timeZone() == nullptr ? 0 : stamp.offset() * kPerSecond);
}
inline KelTimeStamp stampAt(std::int64_t instant, const KelTimeZone* zone) {
  KelTimeStamp stamp(KelDate(), KelTimeBase(), KelTimeZone::ofOffset(0));
  stamp.addInterval({KelInterval::microseconds, instant});
  stamp.setTimeZone(zone);
  return stamp;
}

// Any instant, one of the time when clocks are changed, or one within hours of midnight on the first of a month.
inline std::int64_t drawInstant(Choices& choices) {
  const auto within = [&](std::int64_t least, std::int64_t most) {
    const auto span = static_cast<std::uint64_t>(most) - static_cast<std::uint64_t>(least) + 1;
    return least + static_cast<std::int64_t>(choices.any<std::uint64_t>() % span);
  };
  switch (choices.upTo(3)) {
    case 0:
      return within(kFirstInstant, kLastInstant);
    case 1: {
      const KelDate date(1, static_cast<KelDate::Month>(choices.between(1, 12)), choices.between(2, 9999));
      return localTimeOf({date, KelTimeBase()}) + within(-kPerDay, kPerDay);
    }
    default:
      return within(-120 * 365 * kPerDay, 80 * 365 * kPerDay);
  }
}

inline std::string shown(const KelTimeStamp& stamp) {
  return toUtf8(stamp.asString()) + (stamp.timeZone() == nullptr ? "" : ' ' + toUtf8(stamp.timeZone()->getID()));
}

// How a text is read and a stamp written, but for the pattern.
struct FormatSettings {
  KelTimeStamp defaults;
  int centuryWindow = 53;
  KelWstring weekBegin = {};
  int firstWeekDays = 0;
};

inline KelWstring writtenBy(const KelTimeStampPattern& pattern, const KelTimeStamp& stamp, const FormatSettings& set) {
  return KelTimeStampFormatter(nullptr, nullptr, stamp, pattern, set.centuryWindow, set.weekBegin.view(),
                               set.firstWeekDays, false);
}
inline KelTimeStamp readBy(const KelTimeStampPattern& pattern, const KelWstring& text, const FormatSettings& set,
                           bool lenient) {
  return KelTimeStampFormatter(nullptr, nullptr, text.view(), pattern, set.defaults, set.centuryWindow,
                               set.weekBegin.view(), set.firstWeekDays, lenient);
}

// What `call` gives; nothing where it raises a failure of the host's dates and times.
template <class Call>
auto unlessRefused(Call call) -> std::optional<decltype(call())> {
  try {
    return call();
  } catch (const KelRecoverableException& e) {
    const auto number = static_cast<unsigned>(e.messageNumber());
    require(number >= (0xC0000000u | 2140u) && number <= (0xC0000000u | 2143u), "a failure of another kind");
    return std::nullopt;
  }
}

}  // namespace oxr::fuzz
