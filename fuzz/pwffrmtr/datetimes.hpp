#pragma once

#include <string>

#include "dataconv.hpp"
#include "fuzz/harness/choices.hpp"
#include "kelexception.hpp"
#include "keltime.hpp"
#include "kelwstringconvertor.hpp"

// What the checks of date-times are written with.
namespace oxr::fuzz {

struct DateTimeSettings {
  bool lenient = false;
  KelWstring zone = {};  // empty for that of the process
  bool remembersUtc = true;
};

// The settings must outlive what the converter makes of its first date-time.
inline DataCnv dateTimeConverter(const DateTimeSettings& set) {
  return DataCnv(819, eEndianBig, eEndianBig, eFloatHexadecimal, 53, set.zone.characters(), set.remembersUtc, nullptr,
                 0, set.lenient, 12, false, eMessageStandardDefault, nullptr);
}

// "2001/2/3/4/5/6/789000/6 Europe/Paris own 1": all fields, the zone, whether it is its own, how UTC came.
inline std::string shown(const PWFDateTime& value) {
  std::string text;
  for (const PWFInt32 field : {value._year, value._month, value._day, value._hour, value._minute, value._second,
                               value._subsecond, value._scale})
    text += std::to_string(field) + '/';
  text.back() = ' ';
  text += value.iTimeZone == nullptr ? "none" : toUtf8(value.iTimeZone->getID());
  return text + (value._hasLocalTimezone != 0 ? " own " : " ") + std::to_string(value.iTimeZoneFormatControl);
}
inline std::string shown(const PWFData& text) {
  return toUtf8(UnitView(text.getStringValue(), static_cast<std::size_t>(text.getStringLength())));
}

inline std::string shown(const std::string& text) {
  return text;
}
inline std::string shown(const KelWstring& text) {
  return toUtf8(text);
}

// What `call` gives, or "OXR" and the number of what it raises.
template <class Call>
std::string outcomeOf(Call call) {
  try {
    return shown(call());
  } catch (const KelRecoverableException& e) {
    return "OXR" + std::to_string(e.messageNumber() & 0xFFFF);
  }
}

}  // namespace oxr::fuzz
