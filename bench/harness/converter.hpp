#pragma once

#include "dataconv.hpp"

namespace oxr::bench {

// A converter for messages of a mainframe, but for what is given.
inline DataCnv converterFor(int ccsid = 37, EFloatFmt floatFormat = eFloatHexadecimal) {
  return DataCnv(ccsid, eEndianBig, eEndianBig, floatFormat, 53, nullptr, false, nullptr, 0, true, 12, false,
                 eMessageStandardDefault, nullptr);
}

}  // namespace oxr::bench
