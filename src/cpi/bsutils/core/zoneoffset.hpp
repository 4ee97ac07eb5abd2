#pragma once

#include "core/shorttext.hpp"
#include "kelunits.hpp"

// Offsets from UTC, such as "+05:30" or "-8", as IDs of time zones.
//
// Whole hours become a zone of the family "Etc/GMT-5", whose sign is the reverse of the usual one: that zone is five
// hours ahead. The offsets with minutes that countries use become the zone of one of these, with its daylight saving,
// and all others "GMT+01:20".
namespace oxr::core {

using ZoneId = ShortText<24>;

inline constexpr std::string_view kBaseZoneId = "Etc/GMT";

// Gives the ID of an offset: a sign and one digit or two, with ":" and minutes, of one digit or two, after them or not.
// Empty where the text is no offset, or is beyond 14 hours.
ZoneId zoneIdOfOffset(UnitView text);

// What it is made of. Appends to `suffix` what follows kBaseZoneId for the two hour digits after an offset's sign:
// nothing for "00". False for hours above 14 and for what is no hours; `suffix` then stays.
bool appendHourSuffix(UnitView offset, ZoneId& suffix);
// Gives the ID of the zone that stands for an offset in the form "+05:30"; empty where none does.
std::string_view namedZoneOf(UnitView offset);
inline constexpr std::string_view kGmtId = "GMT";

}  // namespace oxr::core
