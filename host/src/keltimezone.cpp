#include "keltimezone.hpp"

#include <unicode/basictz.h>
#include <unicode/tztrans.h>
#include <unicode/ucal.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <functional>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <utility>

#include "heldoverforks.hpp"
#include "kelforkhold.hpp"
#include "kelmemory.hpp"
#include "kelwstringconvertor.hpp"
#include "timefailures.hpp"

using namespace oxr;

namespace {

constexpr int kMinutesPerDay = 24 * 60;

icu::UnicodeString unicodeOf(UnitView text) {
  return {toIcu(text.data()), static_cast<std::int32_t>(text.size())};
}

icu::UnicodeString idOf(const icu::TimeZone& zone) {
  icu::UnicodeString id;
  zone.getID(id);
  return requireMemory(id);
}

bool isUnknown(const icu::TimeZone& zone) {
  return idOf(zone) == icu::UnicodeString(UCAL_UNKNOWN_ZONE_ID, -1, US_INV);
}

std::unique_ptr<icu::TimeZone> askForZone(const icu::UnicodeString& id) {
  std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(requireMemory(id)));
  if (zone == nullptr) throw std::bad_alloc();
  return zone;
}

// ICU's zone as one of the basic kind, as all of its own are; null for any other.
std::unique_ptr<icu::BasicTimeZone> asBasic(std::unique_ptr<icu::TimeZone> zone) {
  if (dynamic_cast<icu::BasicTimeZone*>(zone.get()) == nullptr) return nullptr;
  return std::unique_ptr<icu::BasicTimeZone>(static_cast<icu::BasicTimeZone*>(zone.release()));
}

// ICU's zone of an ID; null for one that it does not know, which is also what ICU says where it has no memory.
std::unique_ptr<icu::BasicTimeZone> openZone(UnitView id) {
  std::unique_ptr<icu::TimeZone> zone = askForZone(unicodeOf(id));
  if (!isUnknown(*zone)) return asBasic(std::move(zone));
  requireMemory();
  // Where ICU had none for its list of zones, it knows none ever after, these neither.
  for (const char16_t* const certain : {u"Europe/London", u"GMT+01:01"})
    if (isUnknown(*askForZone(icu::UnicodeString(certain)))) throw std::bad_alloc();
  zone = askForZone(unicodeOf(id));
  return isUnknown(*zone) ? nullptr : asBasic(std::move(zone));
}

// ICU's zone of the process. It is the unknown one where ICU had no memory to look.
std::unique_ptr<icu::BasicTimeZone> openDefaultZone() {
  std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createDefault());
  if (zone != nullptr && !isUnknown(*zone)) return asBasic(std::move(zone));
  requireMemory();
  zone.reset(icu::TimeZone::detectHostTimeZone());
  if (zone == nullptr) throw std::bad_alloc();
  return asBasic(std::move(zone));
}

// Whether the clocks of the zone never change. ICU says so, too, where it has no memory for the rules, and then for as
// long as the object lives. So a copy is asked.
bool hasOneOffset(const icu::BasicTimeZone& zone) {
  constexpr double kLongAgo = -1e15;  // milliseconds: some 30,000 years before the first clock
  icu::TimeZoneTransition transition;
  const std::unique_ptr<icu::BasicTimeZone> copy(zone.clone());
  if (copy == nullptr) throw std::bad_alloc();
  return copy->getNextTransition(kLongAgo, true, transition) == 0;
}

KelWstring wide(const icu::UnicodeString& text) {
  return {reinterpret_cast<const unsigned short*>(text.getBuffer()), static_cast<unsigned>(text.length())};
}

int secondsOf(std::int32_t rawMilliseconds, std::int32_t savingMilliseconds) {
  return (rawMilliseconds + savingMilliseconds) / 1000;
}

double milliseconds(std::int64_t seconds) {
  return static_cast<double>(seconds) * 1000;
}

// The ID that ICU knows a fixed offset by.
KelWstring idOfOffset(int seconds) {
  if (seconds == 0) return fromUtf8("Etc/GMT-0");
  const int magnitude = std::abs(seconds);
  std::array<char, 32> text;
  int length = std::snprintf(text.data(), text.size(), "GMT%c%02d:%02d", seconds < 0 ? '-' : '+', magnitude / 3600,
                             magnitude / 60 % 60);
  if (magnitude % 60 != 0)
    length +=
        std::snprintf(text.data() + length, text.size() - static_cast<std::size_t>(length), ":%02d", magnitude % 60);
  return fromUtf8(std::string_view(text.data(), static_cast<std::size_t>(length)));
}

constinit std::shared_mutex cacheMutex;
[[gnu::constructor(oxr::kNotedFirst)]] void holdCacheOverForks() {
  oxr::holdOverForks<cacheMutex>();
}

}  // namespace

// The zones of this process, by ICU's own IDs. An offset can be spelled in many ways ("GMT+1:20"): such a text is
// opened anew each time and finds the zone of its proper spelling, so that the cache holds no more than ICU has zones,
// aliases and offsets up to 23:59:59, whatever messages bring.
class KelTimeZone::Cache {
 public:
  static Cache& get() {
    return madeOnce<[] { return Cache(); }>();
  }

  // The zone of an ID; null for one that ICU does not know.
  const KelTimeZone* find(const KelWstring& id) {
    {
      const std::shared_lock lock(cacheMutex);
      const auto found = zones_.find(keyOf(id));
      if (found != zones_.end()) return found->second.get();
    }
    const KelForkHold hold;
    return open(id);
  }

  // Asks ICU, which makes a part of a zone when it is first asked about it. The process must not fork meanwhile.
  const KelTimeZone* open(const KelWstring& id) {
    std::unique_ptr<icu::BasicTimeZone> opened = openZone(id.view());
    if (opened == nullptr) return nullptr;
    std::unique_ptr<const KelTimeZone> zone(new KelTimeZone(std::move(opened)));
    std::u16string key = keyOf(zone->getID());
    const std::unique_lock lock(cacheMutex);
    // The zone that is there already stays: others may point at it.
    return zones_.try_emplace(std::move(key), std::move(zone)).first->second.get();
  }

  // Zones of whole minutes, from -23:59 to 23:59, as they were found.
  std::atomic<const KelTimeZone*>& ofMinutes(int minutes) {
    const int place = minutes + kMinutesPerDay;
    return minutes_[static_cast<std::size_t>(place)];
  }

 private:
  static std::u16string keyOf(const KelWstring& id) { return {toIcu(id.characters()), id.length()}; }

  std::unordered_map<std::u16string, std::unique_ptr<const KelTimeZone>> zones_;
  std::array<std::atomic<const KelTimeZone*>, 2 * kMinutesPerDay + 1> minutes_{};
};

KelTimeZone::KelTimeZone(std::unique_ptr<icu::BasicTimeZone> zone) : zone_(std::move(zone)), id_(wide(idOf(*zone_))) {
  isFixed_ = askTwice([this] { return hasOneOffset(*zone_); });
  fixedOffset_ = ruledOffsetAt(0);
}

KelTimeZone::~KelTimeZone() = default;

// TZ may name a rule that no ID stands for, such as a file or "XYZ-3": then ICU's zone itself is kept.
const KelTimeZone* KelTimeZone::createDefault(KelThreadContext*) {
  Cache::get();  // while there is no hold yet
  return madeOnce<[] {
    Cache& zones = Cache::get();
    std::unique_ptr<icu::BasicTimeZone> found = openDefaultZone();
    if (found == nullptr) return zones.open(idOfOffset(0));
    const KelTimeZone* const known = zones.open(wide(idOf(*found)));
    if (known != nullptr && known->zone_->hasSameRules(*found)) return known;
    return static_cast<const KelTimeZone*>(new KelTimeZone(std::move(found)));  // stays to the end of the process
  }>();
}

const KelTimeZone* KelTimeZone::createTimeZone(const KelWstring& id, KelThreadContext*) {
  const KelTimeZone* const zone = Cache::get().find(id);
  if (zone == nullptr)
    raiseTimeFailure(TimeFailure::unknownZone, "KelTimeZone::createTimeZone", "Unknown time zone", id);
  return zone;
}

const KelTimeZone* KelTimeZone::ofOffset(int seconds) {
  if (seconds % 60 != 0) return createTimeZone(idOfOffset(seconds), nullptr);
  std::atomic<const KelTimeZone*>& kept = Cache::get().ofMinutes(seconds / 60);
  const KelTimeZone* zone = kept.load(std::memory_order_acquire);
  if (zone == nullptr) {
    zone = createTimeZone(idOfOffset(seconds), nullptr);
    kept.store(zone, std::memory_order_release);
  }
  return zone;
}

int KelTimeZone::ruledOffsetAt(std::int64_t instant) const {
  std::int32_t raw = 0, saving = 0;
  UErrorCode status = U_ZERO_ERROR;
  zone_->getOffset(milliseconds(instant), false, raw, saving, status);
  requireMemory(status);
  return secondsOf(raw, saving);
}

int KelTimeZone::ruledOffsetAtLocal(std::int64_t local) const {
  std::int32_t raw = 0, saving = 0;
  UErrorCode status = U_ZERO_ERROR;
  zone_->getOffsetFromLocal(milliseconds(local), UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_LATTER, raw, saving, status);
  requireMemory(status);
  return secondsOf(raw, saving);
}
