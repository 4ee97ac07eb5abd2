#pragma once

#include <cstdint>
#include <memory>

#include "kelexport.hpp"
#include "kelthreadcontext.hpp"
#include "kelunits.hpp"
#include "kelwstring.hpp"

U_NAMESPACE_BEGIN
class BasicTimeZone;
U_NAMESPACE_END

// A time zone: the rule that tells how far the clocks of a place are ahead of UTC.
//
// Zones are made once for each ID of ICU's and live to the end of the process, so that a date-time may point at one
// without owning it. Any thread may make and use them. The rules are ICU's.
//
// Example:
//   KelWstring id = ...;  // "Europe/Paris"
//   const KelTimeZone* paris = KelTimeZone::createTimeZone(id, nullptr);
//   paris->offsetAt(0);  // 3600: one hour ahead of UTC on the first of January 1970
class KELHOST_EXPORT KelTimeZone {
 public:
  // Gives the zone of the process, as ICU finds it when it is first asked for (TZ, /etc/localtime). Never null.
  static const KelTimeZone* createDefault(KelThreadContext* context);
  // Gives the zone of an ID that ICU knows ("Europe/Paris", "Etc/GMT-5", "EST5EDT") or of a fixed offset in ICU's form
  // ("GMT+01:20"). Never null. An ID that is neither raises a KelRecoverableException, host message 2143.
  static const KelTimeZone* createTimeZone(const KelWstring& id, KelThreadContext* context);
  // Gives the zone that is always `seconds` ahead of UTC (behind it, below 0): "Etc/GMT-0" for 0, else "GMT+05:30" and
  // the like. Never null; takes no lock where the offset is whole minutes and was asked for before. `seconds` lies
  // within 23:59:59 of 0.
  static const KelTimeZone* ofOffset(int seconds);

  KelTimeZone(const KelTimeZone&) = delete;
  KelTimeZone& operator=(const KelTimeZone&) = delete;
  ~KelTimeZone();

  // Gives the ID in the form that ICU keeps: "GMT+1:20" has become "GMT+01:20".
  const KelWstring& getID() const { return id_; }

  // Give the seconds that the zone's clocks are ahead of UTC: at an instant, in seconds since 1970-01-01T00:00Z; and
  // when they show a local time, given as the seconds since 1970-01-01T00:00 on those clocks. A local time that the
  // clocks skip counts by the offset from before the change, one that they show twice by the offset from after it.
  int offsetAt(std::int64_t instant) const { return isFixed_ ? fixedOffset_ : ruledOffsetAt(instant); }
  int offsetAtLocal(std::int64_t local) const { return isFixed_ ? fixedOffset_ : ruledOffsetAtLocal(local); }

  // Tells whether the clocks were never and will never be changed, so that all offsets are offsetAt(0).
  bool isFixed() const { return isFixed_; }

  // Gives ICU's zone, which is never changed.
  const icu::BasicTimeZone& icuZone() const { return *zone_; }

 private:
  class Cache;

  explicit KelTimeZone(std::unique_ptr<icu::BasicTimeZone> zone);

  int ruledOffsetAt(std::int64_t instant) const;
  int ruledOffsetAtLocal(std::int64_t local) const;

  std::unique_ptr<icu::BasicTimeZone> zone_;
  KelWstring id_;
  bool isFixed_;
  int fixedOffset_;  // seconds, for such a zone
};
