// A length has one form, or two that the place of the ":" tells apart. Each function reads one form; only the
// characters named there are looked at, so that odd texts give odd IDs: DefaultZones.OddOffsets.

#include "core/zoneoffset.hpp"

#include <unicode/uchar.h>

namespace oxr::core {

namespace {

constexpr unsigned kMostHours = 14;

struct NamedOffset {
  std::string_view offset;
  std::string_view id;
};
constexpr NamedOffset kNamedOffsets[] = {
    {"-09:30", "Pacific/Marquesas"}, {"-03:30", "America/St_Johns"}, {"+03:30", "Asia/Tehran"},
    {"+04:30", "Asia/Kabul"},        {"+05:30", "Asia/Calcutta"},    {"+05:45", "Asia/Katmandu"},
    {"+06:30", "Asia/Rangoon"},      {"+09:30", "Australia/Darwin"}, {"+10:30", "Australia/Lord_Howe"},
    {"+11:30", "Pacific/Norfolk"},   {"+12:45", "Pacific/Chatham"},
};

bool isDigit(unsigned short unit) {
  return u_isdigit(unit) != 0;
}

// The sign of an "Etc/GMT" zone. Whatever is not "+" counts as "-".
unsigned short flipped(unsigned short sign) {
  return sign == '+' ? '-' : '+';
}

ZoneId baseZone() {
  ZoneId id;
  id.append(kBaseZoneId);
  return id;
}

ZoneId zoneOfHour(unsigned short sign, unsigned short hour) {
  ZoneId id = baseZone();
  id.append(flipped(sign));
  id.append(hour);
  return id;
}

// "+05", and what begins like it.
ZoneId zoneOfHours(UnitView text) {
  ZoneId id = baseZone();
  return appendHourSuffix(text, id) ? id : ZoneId();
}

// "+05:30", or what is to stand for it.
ZoneId zoneOfMinutes(UnitView offset) {
  const std::string_view named = namedZoneOf(offset);
  ZoneId id;
  id.append(named.empty() ? kGmtId : named);
  if (named.empty()) id.append(offset);
  return id;
}

// "+5:30" as "+05:30"; a missing last digit is 0.
ZoneId zoneOfShortHour(UnitView text) {
  ShortText<6> offset;
  offset.append(text[0]);
  offset.append('0');
  offset.append(text.substr(1));
  if (text.size() == 4) offset.append('0');
  return zoneOfMinutes(offset.view());
}

// "+5"
ZoneId zoneOfTwo(UnitView text) {
  if (text[1] == '0') return baseZone();
  return isDigit(text[1]) ? zoneOfHour(text[0], text[1]) : ZoneId();
}

// "+5:3"
ZoneId zoneOfFour(UnitView text) {
  if (text[2] != ':' || !isDigit(text[1])) return {};
  if (text[3] == '0') return zoneOfHour(text[0], text[1]);
  return isDigit(text[3]) ? zoneOfShortHour(text) : ZoneId();
}

// "+05:30"
ZoneId zoneOfSix(UnitView text) {
  const ZoneId id = zoneOfHours(text);
  if (id.empty() || text[3] != ':') return {};
  return text[4] == '0' && text[5] == '0' ? id : zoneOfMinutes(text);
}

// "+5:30", or "+05:3"
ZoneId zoneOfFive(UnitView text) {
  if (text[2] == ':') {
    if (text[3] == '0' && text[4] == '0') return zoneOfHour(text[0], text[1]);
    return isDigit(text[3]) ? zoneOfShortHour(text) : ZoneId();
  }
  ShortText<6> offset;
  offset.append(text);
  offset.append('0');
  return zoneOfSix(offset.view());
}

}  // namespace

bool appendHourSuffix(UnitView offset, ZoneId& suffix) {
  const auto digitAt = [&](std::size_t at) { return at < offset.size() ? offset[at] - unsigned{'0'} : 10; };
  const unsigned tens = digitAt(1), ones = digitAt(2);
  if (tens > 9 || ones > 9 || 10 * tens + ones > kMostHours) return false;
  if (tens + ones == 0) return true;
  suffix.append(flipped(offset[0]));
  if (tens != 0) suffix.append(offset[1]);
  suffix.append(offset[2]);
  return true;
}

std::string_view namedZoneOf(UnitView offset) {
  for (const NamedOffset& named : kNamedOffsets)
    if (isText(offset, named.offset)) return named.id;
  return {};
}

ZoneId zoneIdOfOffset(UnitView text) {
  switch (text.size()) {
    case 2:
      return zoneOfTwo(text);
    case 3:
      return zoneOfHours(text);
    case 4:
      return zoneOfFour(text);
    case 5:
      return zoneOfFive(text);
    case 6:
      return zoneOfSix(text);
    default:
      return {};
  }
}

}  // namespace oxr::core
