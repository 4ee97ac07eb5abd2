#pragma once

#include <cstdio>
#include <cstring>
#include <string>

#include "harness/failures.hpp"
#include "harness/text.hpp"
#include "keltime.hpp"

// Time stamps as the words of a table: "2001-02-03 04:05:06.789000 Europe/Paris". A time of midnight, the fraction of a
// whole second and the zone of a stamp without one are left out.
namespace oxr::test {

inline std::string shown(const KelTimeStamp& stamp) {
  std::string text = toUtf8(stamp.asString());
  for (const char* const end : {".000000", " 00:00:00"})
    if (text.ends_with(end)) text.resize(text.size() - std::strlen(end));
  return stamp.timeZone() == nullptr ? text : text + ' ' + toUtf8(stamp.timeZone()->getID());
}

// The fields are taken as they are. Without a date it is the first of January 1970.
inline KelTimeStamp stampOf(const std::string& text) {
  int year = 1970, month = 1, day = 1, hour = 0, minute = 0, length = 0;
  double seconds = 0;
  char zone[64] = "";
  const char* rest = text.c_str();
  if (text.find('-', 1) < text.find_first_of(" :")) {
    std::sscanf(rest, "%d-%d-%d%n", &year, &month, &day, &length);
    rest += length;
  }
  if (std::sscanf(rest, "%d:%d:%lf%n", &hour, &minute, &seconds, &length) == 3) rest += length;
  std::sscanf(rest, "%63s", zone);
  return {KelDate(day, static_cast<KelDate::Month>(month), year), KelTimeBase(hour, minute, seconds),
          *zone == 0 ? nullptr : KelTimeZone::createTimeZone(k(zone), nullptr)};
}

// What `call` gives, or the number of the host's failure, "2140".
template <class Call>
std::string resultOf(Call call) {
  std::string text;
  const Raised raised = raisedBy([&] { text = call(); });
  if (raised.kind.empty()) return text;
  const auto number = static_cast<unsigned>(raised.number);
  return raised.kind == "KelRecoverableException" && number >> 16 == 0xC000 ? std::to_string(number & 0xFFFF)
                                                                            : "another failure";
}

}  // namespace oxr::test
