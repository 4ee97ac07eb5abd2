#include "datacnv/decimalinteger.hpp"

#include <algorithm>
#include <limits>

namespace oxr {

bool integerText(DataCnv& cnv, const unsigned short* text, int places, KelWstring& digits) {
  constexpr unsigned short kZero[] = {'0', 0};
  digits.insert(0, text);
  // The member moves the point to the left. The least int is cut by one, since its negative is none.
  cnv.adjustDecimalForString(digits, -std::max(places, -std::numeric_limits<int>::max()));
  const unsigned point = digits.find(DataCnv::US_DECIMAL, 0);
  if (point != KelWstring::npos) digits.eraseInternal(point, KelWstring::npos);
  // Only now the sign: for the point it is a position like any other, so that "-5" less two places is "0".
  const bool negative =
      cnv.CheckSign(digits, eSignLeadingSeparate, DataCnv::US_MINUS.characters(), DataCnv::US_PLUS.characters());
  // Blanks come off before zeros, so that zeros after a blank do and blanks after a zero do not.
  cnv.TrimData(digits, eTrimSpaceBoth, eJustifyLeft, '0', true);
  cnv.TrimData(digits, eTrimPadding, eJustifyRight, '0', true);
  if (digits.length() == 0) digits.assignInternal(kZero, 1, 0);
  return negative;
}

}  // namespace oxr
