#pragma once

#include "dataconv.hpp"

namespace oxr {

// A converter that the library makes for itself, where no message gives it one: UTF-16 and everything else in
// little-endian order, numbers taken as they come.
inline DataCnv plainConverter() {
  return DataCnv(1200, eEndianLittle, eEndianLittle, eFloatIeeeLittle, 53, nullptr, false, nullptr, 0, true, 12, false,
                 eMessageStandardDefault, nullptr);
}

}  // namespace oxr
