#pragma once

#include "keltime.hpp"
#include "timepattern.hpp"

// Time stamps from text and text from time stamps, by a compiled pattern. No failure is raised here.
namespace oxr {

struct TimeReading {
  const KelTimeStamp& otherwise;  // what the pattern has not got
  int centuryWindow;
  UnitView weekBegin;  // English name of the first day of the week
  int firstWeekDays;
  bool lenient;
};
// Reads a stamp; false when the text does not fit the pattern or tells no time of the years 1 to 9999.
bool readTimeText(const TimeProgram& program, UnitView text, const TimeReading& reading, KelTimeStamp& stamp);

// Writes a stamp that is on the calendar. Where the pattern asks for a zone the stamp has one.
void writeTimeText(const TimeProgram& program, const KelTimeStamp& stamp, UnitView weekBegin, int firstWeekDays,
                   KelWstring& target);

// Gives the stamp, without a zone, so many microseconds after the beginning of a day, which is counted from 1970-01-01;
// false when that is outside the years 1 to 9999.
bool stampAt(std::int64_t day, std::int64_t microseconds, KelTimeStamp& stamp);

}  // namespace oxr
