#pragma once

#include "dataconv.hpp"

namespace oxr::test {

// A converter for text in `ccsid`; everything else as a message on a mainframe would have it, but for what is given.
inline DataCnv converterFor(int ccsid, EEndian integerEndian = eEndianBig, EEndian packedEndian = eEndianBig,
                            EFloatFmt floatFormat = eFloatIeeeBig, bool strictNumericChecking = false,
                            EMessageStandard standard = eMessageStandardDefault) {
  return DataCnv(ccsid, integerEndian, packedEndian, floatFormat, 53, nullptr, false, nullptr, 0, true, 12,
                 strictNumericChecking, standard, nullptr);
}

}  // namespace oxr::test
