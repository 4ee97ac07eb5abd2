#pragma once

#include "dataconv.hpp"

// The five forms of a sign that the members are told.
namespace oxr {

// Whether the number is one of the five forms. Callers may pass any other.
constexpr bool isKnownSign(ESign sign) {
  return sign >= eSignNone && sign <= eSignTrailingSeparate;
}
// Whether a digit carries the sign.
constexpr bool isIncluded(ESign sign) {
  return sign == eSignLeadingIncluded || sign == eSignTrailingIncluded;
}

}  // namespace oxr
