// Edits of decimal texts. How a text changes is worked out in core/; here it is changed in place.

#include <cmath>

#include "core/decimaltext.hpp"
#include "core/pointshift.hpp"
#include "datacnv/sourcepath.hpp"
#include "datacnv/textedit.hpp"
#include "dataconv.hpp"
#include "support/support.hpp"

using namespace oxr;

namespace {

// Puts a "0" before a point that comes first, or else takes off a point that comes last. Of several points the first
// one counts.
void tidyPoint(KelWstring& text) {
  const unsigned point = findPoint(text);
  if (point == 0)
    insertUnit(text, 0, '0');
  else if (point != KelWstring::npos && point == text.length() - 1)
    text.eraseInternal(point, 1);
}

// Applies a shift to a text that has lost its first point.
void applyShift(KelWstring& text, const core::PointShift& shift) {
  if (shift.frontZeros != 0) insertCopies(text, 0, shift.frontZeros, '0');
  if (shift.backZeros != 0) insertCopies(text, text.length(), shift.backZeros, '0');
  if (shift.hasPoint()) insertUnit(text, shift.point, '.');
}

// 10 to the power, by the system's function, whose rounding is asked for. It is 0 for a power below the range of
// doubles.
double powerOfTen(int power) {
  return std::pow(10.0, power);
}

}  // namespace

// With a trailing separate sign a leading one is refused; every other form of sign allows it.
void DataCnv::validateDecimal(const KelWstring& text, ESign sign) {
  const FunctionTrace trace(this, "DataCnv::validateDecimal", kDataCnvPath);
  if (!core::isDecimalText(text.view(), sign != eSignTrailingSeparate)) [[unlikely]]
    raise<KelConversionException>(trace.site(), failures::kInvalidData, "decimal", text);
}

bool DataCnv::isDecimalValid(const KelWstring& text, bool pointRequired) {
  const FunctionTrace trace(this, "DataCnv::isDecimalValid", kDataCnvPath);
  return core::isNumberText(text.view(), pointRequired);
}

void DataCnv::adjustDecimalForString(KelWstring& text, int places) {
  const FunctionTrace trace(this, "DataCnv::adjustDecimalForString", kDataCnvPath);
  // With 0 places nothing at all is done, and a point that comes first gets no digit: Decimals.Edits.
  if (places == 0 || text.length() == 0) return;
  const unsigned point = findPoint(text);
  if (point == KelWstring::npos) {
    applyShift(text, core::shiftWholeNumber(text.length(), places));
    return;
  }
  // A bad text may hold further points, so that tidying it has to look for the first one again.
  text.eraseInternal(point, 1);
  applyShift(text, core::shiftPoint(text.length(), point, places));
  tidyPoint(text);
}

// The edit goes from right to left, so that positions stay what they were worked out for.
void DataCnv::adjustPrecisionForString(KelWstring& text, int selector) {
  const FunctionTrace trace(this, "DataCnv::adjustPrecisionForString", kDataCnvPath);
  const core::PlacesEdit edit = core::editPlaces(text.view(), selector);
  if (edit.becomesZero) {
    setToZero(text);
    return;
  }
  text.eraseInternal(edit.keep, KelWstring::npos);
  if (edit.appendPoint) appendUnit(text, '.');
  if (edit.appendZeros != 0) insertCopies(text, text.length(), edit.appendZeros, '0');
  if (edit.leadingZero) insertUnit(text, 0, '0');
}

// The result is the position of the point, which strict checking goes on from, or -1.
int DataCnv::UpdateDecimal(KelWstring& text, const unsigned short* oldPoint, const unsigned short* newPoint) {
  const FunctionTrace trace(this, "DataCnv::UpdateDecimal", kDataCnvPath);
  if (oldPoint == nullptr || newPoint == nullptr) return -1;
  const UnitView oldText(oldPoint);
  const UnitView newText(newPoint);
  // The old text is a set of units here, and yet as many units as it has are replaced: Decimals.Edits.
  const std::size_t position = text.view().find_first_of(oldText);
  if (position == UnitView::npos) return -1;
  text.replaceInternal(static_cast<unsigned>(position), static_cast<unsigned>(oldText.size()), newText.data(),
                       static_cast<unsigned>(newText.size()), 0);
  return static_cast<int>(position);
}

// A point alone becomes zero.
void DataCnv::removeTrailingDecimal(KelWstring& text) {
  const FunctionTrace trace(this, "DataCnv::removeTrailingDecimal", kDataCnvPath);
  if (text.length() == 0) return;
  if (text[0] == '.') insertUnit(text, 0, '0');
  tidyPoint(text);
}

void DataCnv::TrimFromDecimal(KelWstring& text) {
  const FunctionTrace trace(this, "DataCnv::TrimFromDecimal", kDataCnvPath);
  const unsigned point = findPoint(text);
  if (point != KelWstring::npos) text.eraseInternal(point, KelWstring::npos);
}

// The result means nothing. Zero comes out empty.
int DataCnv::TrimNonSignificantZeros(KelWstring& text) {
  const FunctionTrace trace(this, "DataCnv::TrimNonSignificantZeros", kDataCnvPath);
  if (text.length() == 0) return 0;
  // Without a point, trailing zeros are places of the integer and stay.
  const bool hasPoint = findPoint(text) != KelWstring::npos;
  TrimData(text, eTrimPadding, eJustifyRight, '0', true);
  if (hasPoint) TrimData(text, eTrimPadding, eJustifyLeft, '0', true);
  const unsigned length = text.length();
  if (length != 0 && text[length - 1] == '.') text.eraseInternal(length - 1, 1);
  return 0;
}

// Multiplying by ten to a negative power and dividing by ten to the positive one round differently, so that neither of
// these is made of the other.
double DataCnv::MultiplyDouble(double value, int power) {
  const FunctionTrace trace(this, "DataCnv::MultiplyDouble", kDataCnvPath);
  const double factor = power == 0 ? 0.0 : powerOfTen(power);
  return factor == 0.0 ? value : value * factor;
}

double DataCnv::DivideDouble(double value, int power) {
  const FunctionTrace trace(this, "DataCnv::DivideDouble", kDataCnvPath);
  const double divisor = power == 0 ? 0.0 : powerOfTen(power);
  return divisor == 0.0 ? value : value / divisor;
}
