#include "cputils.hpp"

#include <locale>
#include <sstream>

std::string CPUtils::binaryDump(const unsigned char* data, int length) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string dump = "0x";
  if (length <= 0) return dump;
  dump.reserve(2 + 2 * static_cast<std::size_t>(length));
  for (int i = 0; i < length; ++i) {
    dump += kDigits[data[i] >> 4];
    dump += kDigits[data[i] & 0x0F];
  }
  return dump;
}

std::string CPUtils::pwfDateTimeDump(const PWFDateTime& value) {
  std::ostringstream dump;
  dump.exceptions(std::ios::badbit);   // a want of memory is not to leave half a dump
  dump.imbue(std::locale::classic());  // no digit grouping, whatever the process's locale
  dump << "year = " << value._year << ", month = " << value._month << ", day = " << value._day
       << ", hour = " << value._hour << ", minute = " << value._minute << ", second = " << value._second
       << ", subsecond = " << value._subsecond << ", scale = " << value._scale
       << ", timezone = " << static_cast<const void*>(value.iTimeZone)
       << ", localTimeZone = " << value._hasLocalTimezone
       << ", timezone format control = " << value.iTimeZoneFormatControl;
  return dump.str();
}
