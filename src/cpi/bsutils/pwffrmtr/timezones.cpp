// The members that turn an offset from UTC into the ID of a zone.

#include "core/zoneoffset.hpp"
#include "kelwstringconvertor.hpp"
#include "pwffrmtr.hpp"

using namespace oxr;

KelBufferedWstring<16u> PWFDateTimeFormatter::EvaluateTimeZone(const unsigned short* text) {
  const core::ZoneId id = core::zoneIdOfOffset(text != nullptr ? UnitView(text) : UnitView());
  return KelBufferedWstring<16u>(id.view());
}

bool PWFDateTimeFormatter::timeZoneAllowed(const KelWstring& offset, KelWstring& suffix) {
  core::ZoneId found;
  if (!core::appendHourSuffix(offset.view(), found)) return false;
  if (!found.empty()) suffix = KelWstring(found.view());
  return true;
}

KelWstring PWFDateTimeFormatter::specialCaseTimezones(const KelWstring& offset) {
  const std::string_view named = core::namedZoneOf(offset.view());
  return named.empty() ? fromUtf8(core::kGmtId) + offset : fromUtf8(named);
}
