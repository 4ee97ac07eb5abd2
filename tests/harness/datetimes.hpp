#pragma once

#include <cstdio>
#include <limits>
#include <sstream>
#include <string>

#include "harness/table.hpp"
#include "pwffrmtr.hpp"

// Date-times as the words of a table.
namespace oxr::test {

inline const KelTimeZone* zoneOf(const std::string& id) {
  return id.empty() ? nullptr : KelTimeZone::createTimeZone(k(id), nullptr);
}

// "2001/2/3/4/5/6/789000" from the year on: what is missing is not set. `zone`, `own`, `utc` give the rest.
inline PWFDateTime dateTimeOf(const Case& c) {
  PWFInt32 fields[8];
  std::fill(std::begin(fields), std::end(fields), std::numeric_limits<PWFInt32>::min());
  std::istringstream words(c.word("value"));
  int count = 0;
  for (std::string word; std::getline(words, word, '/'); ++count)
    if (word != "u") fields[count] = std::stoi(word);
  return {fields[0],       fields[1],      fields[2],
          fields[3],       fields[4],      fields[5],
          fields[6],       fields[7],      zoneOf(c.word("zone")),
          c.number("own"), c.number("utc")};
}

// "2001-02-03 04:05:06.789000 Europe/Paris own zulu"; the zone is one that came with the text if it is its own. The
// date is "today" if it is this one.
inline std::string shown(const PWFDateTime& value, const KelDate& today = KelDate(0, KelDate::January, 0)) {
  char date[64], time[64];
  std::snprintf(date, sizeof date, "%04d-%02d-%02d", value._year, value._month, value._day);
  std::snprintf(time, sizeof time, " %02d:%02d:%02d.%06d", value._hour, value._minute, value._second, value._subsecond);
  const bool isToday = value._year == today.year() && value._month == today.month() && value._day == today.day();
  std::string text = (isToday ? "today" : date) + std::string(time);
  if (value._scale != 6) text += " scale " + std::to_string(value._scale);
  if (value.iTimeZone != nullptr) text += ' ' + toUtf8(value.iTimeZone->getID());
  if (value._hasLocalTimezone != 0) text += " own";
  const char* const forms[] = {"", " zulu", " zeroes"};
  return text + forms[value.iTimeZoneFormatControl];
}

// A formatter with the settings of a case. It follows how UTC is written unless follow=0.
inline PWFDateTimeFormatter formatterOf(Case& c) {
  return PWFDateTimeFormatter(c.flag("lenient"), c.text("default", "null"), 53, c.text("week", "null"),
                              c.number("weekdays"), c.flag("follow", true));
}

// A pattern, in which "`" stands for a quote.
inline const unsigned short* patternOf(Case& c) {
  std::string text = c.word("pattern");
  std::replace(text.begin(), text.end(), '`', '\'');
  c.words["quoted pattern"] = text;
  return c.text("quoted pattern");
}
inline int lengthOf(const unsigned short* text) {
  return text == nullptr ? 0 : static_cast<int>(UnitView(text).size());
}

}  // namespace oxr::test
