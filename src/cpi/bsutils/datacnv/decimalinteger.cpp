#include "datacnv/decimalinteger.hpp"

#include <algorithm>
#include <limits>

namespace oxr {

bool integerText(DataCnv& cnv, const unsigned short* text, int places, KelWstring& digits) {
  constexpr unsigned short kZero[] = {'0', 0};
  digits.insert(0, text);
  cnv.adjustDecimalForString(digits, -std::max(places, -std::numeric_limits<int>::max()));
  const unsigned point = digits.find(DataCnv::US_DECIMAL, 0);
  if (point != KelWstring::npos) digits.eraseInternal(point, KelWstring::npos);
  const bool negative =
      cnv.CheckSign(digits, eSignLeadingSeparate, DataCnv::US_MINUS.characters(), DataCnv::US_PLUS.characters());
  cnv.TrimData(digits, eTrimSpaceBoth, eJustifyLeft, '0', true);
  cnv.TrimData(digits, eTrimPadding, eJustifyRight, '0', true);
  if (digits.length() == 0) digits.assignInternal(kZero, 1, 0);
  return negative;
}

}  // namespace oxr
