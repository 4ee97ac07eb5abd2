#pragma once

#include "dataconv.hpp"

namespace oxr {

// The general way to the digits of a number whose point moves to the right and whose fraction is cut, for any text at
// all. The digits go to `digits`, at least one; the result tells whether a minus came off.
bool integerText(DataCnv& cnv, const unsigned short* text, int places, KelWstring& digits);

}  // namespace oxr
