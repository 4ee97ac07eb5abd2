#pragma once

#include "dataconv.hpp"

namespace oxr {

// Brings any text to the digits of a whole number, as fields without a point of their own take it: the point moves to
// the right by `places`, the fraction is cut, a leading sign, blanks and leading zeros come off. `digits` must be
// empty; it gets at least one digit. The result tells whether a minus came off. It works member by member, as the trace
// shows.
bool integerText(DataCnv& cnv, const unsigned short* text, int places, KelWstring& digits);

}  // namespace oxr
