#pragma once

#include <string_view>

#include "core/shorttext.hpp"
#include "kelunits.hpp"

// ISO 8601 as XML Schema uses it, dates and times with parts left out included: which pattern a text goes by, and which
// pattern an element of a schema type is written with.
//
// A text tells its pattern by its length and a few characters; whether the others are digits, and in range, is left to
// the reader of the pattern.
namespace oxr::core {

// The parts of a text: indices of patterns, -1 for a part that is not there.
struct IsoShape {
  int date = -1;
  int time = -1;
  bool isMarked = false;  // the time comes alone, with a "T" before it
};

// Room for the longest pattern and the modifier after it.
using IsoPattern = ShortText<32>;

// Give the index of the pattern of a date, or of a time; -1 for a text that is neither.
int isoDateIndex(UnitView text);
int isoTimeIndex(UnitView text);

// Splits a text at its "T", or takes it for a date or a time by its looks. False: a part is of no known shape, or the
// two do not go together.
bool isoShapeOf(UnitView text, IsoShape& shape);
void appendIsoPattern(const IsoShape& shape, IsoPattern& pattern);

// Gives the pattern of a schema type, such as "gYearMonth": that of "dateTime" for what is none of the others.
std::string_view isoOutputPattern(UnitView typeName);
inline constexpr std::string_view kIsoDateTimePattern = "yyyy-MM-dd'T'HH:mm:ss.SSSZZZ";

}  // namespace oxr::core
