#pragma once

#include "dataconv.hpp"

namespace oxr {

// Whether the number is one of the five forms. Callers outside pass any.
constexpr bool isKnownSign(ESign sign) {
  return sign >= eSignNone && sign <= eSignTrailingSeparate;
}
// Whether a digit carries the sign.
constexpr bool isIncluded(ESign sign) {
  return sign == eSignLeadingIncluded || sign == eSignTrailingIncluded;
}

}  // namespace oxr
