#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace oxr::rec {

// What a pattern of the date-time formatter tells about a date.
struct DatePattern {
  std::string iso;         // the pattern of the same date in ISO form: "yyyy-MM-dd'T'HH:mm:ss.SSS"
  std::size_t digits = 0;  // units of a text by the pattern, quotes left out
  // What it lacks to tell the date that it has a part of: "no year (y)". The formatter would take that from today.
  std::string missing{};
};

// Gives the parts of a date that the pattern has: year; year and month; all of it; hours to seconds, the fraction with
// as many digits as the pattern has, and the zone.
DatePattern readDatePattern(std::string_view pattern);

}  // namespace oxr::rec
