#include <algorithm>
#include <limits>
#include <vector>

#include "core/packeddigits.hpp"
#include "core/pointshift.hpp"
#include "cputils.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "raise.hpp"
#include "textvalue.hpp"
#include "trace.hpp"

using namespace oxr;

namespace {

constexpr const char* kFaultTexts[] = {
    "",
    "packed decimal, no sign found ",
    "packed decimal, negative sign found on unsigned data ",
    "packed decimal, non-numeric data found",
};

// The text of a field: its digits, a minus in front, and the point that `shift` puts in. False when a half byte is no
// digit; the text is then unspecified.
bool writeFieldText(const core::PackedField& field, bool minus, const core::PointShift& shift, unsigned short* out) {
  std::uint32_t beforePoint = shift.hasPoint() ? shift.point : minus + field.digitCount();
  if (shift.frontZeros != 0) {
    out = std::fill_n(out, shift.frontZeros + 1, static_cast<unsigned short>('0'));
    out[-static_cast<std::ptrdiff_t>(shift.frontZeros)] = '.';  // behind the first zero
    beforePoint = minus + field.digitCount();
  }
  if (minus) *out++ = '-';
  const bool allDigits = field.writeDigits(out, beforePoint - minus);
  if (shift.backZeros != 0) std::fill_n(out + field.digitCount(), shift.backZeros, static_cast<unsigned short>('0'));
  return allDigits;
}

}  // namespace

char DataCnv::GetPackedDecimalSign(short isSigned, int isNegative, char* sign) {
  if (isSigned == 0)
    *sign = static_cast<char>(core::kPackedUnsigned);
  else
    *sign = isNegative != 0 ? static_cast<char>(core::kPackedMinus) : positivePackedSign;
  return *sign;
}

void DataCnv::ValidatePackedDecimal(const unsigned char* nibbles, int count, ESign sign,
                                    const unsigned char* rawField) {
  const FunctionTrace trace(this, "DataCnv::ValidatePackedDecimal", kDataCnvPath);
  const auto fault = core::packedFault({nibbles, static_cast<std::size_t>(std::max(count, 0))}, sign != eSignNone);
  if (fault != core::PackedFault::none)
    raise<KelConversionException>(trace.site(), failures::kInvalidData, failures::kInvalidData.text,
                                  kFaultTexts[static_cast<int>(fault)], CPUtils::binaryDump(rawField, count / 2));
}

PWFData DataCnv::PckdDecToDec(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign) {
  const FunctionTrace trace(this, "DataCnv::PckdDecToDec", kDataCnvPath);
  if (source == nullptr)
    raise<KelConversionException>(trace.site(), failures::kInternalError, failures::kInternalError.text,
                                  "Null input pointer");
  if (size <= 0)
    raise<KelConversionException>(trace.site(), failures::kInternalError, failures::kInternalError.text,
                                  numbered("Invalid integer size: ", size));
  const core::PackedField field(source, size, packedEndian == eEndianLittle);
  // The minus counts as a position when the point is placed: Packed.MinusCountsAsAPosition.
  const bool minus = field.sign() == core::kPackedMinus;
  const std::uint32_t units = field.digitCount() + minus;
  core::PointShift shift;
  if (virtualDecimalPoint != 0)
    shift = core::trimmed(core::shiftPoint(units, core::PointShift::kNoPoint, virtualDecimalPoint), units);
  bool allDigits = true;
  PWFData value = TextValue::make(DECIMAL, shift.length(units),
                                  [&](unsigned short* out) { allDigits = writeFieldText(field, minus, shift, out); });
  if (!allDigits || core::signFault(field.sign(), sign != eSignNone) != core::PackedFault::none) [[unlikely]]
    refusePacked(source, size, sign);
  return value;
}

// Raises what is wrong with a field that is known to be bad.
void DataCnv::refusePacked(const unsigned char* source, int size, ESign sign) {
  const core::PackedField field(source, size, packedEndian == eEndianLittle);
  std::vector<unsigned char> nibbles;
  nibbles.reserve(2 * static_cast<std::size_t>(size));
  for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(size); ++i) {
    nibbles.push_back(LeftNibble(field.byteAt(i)));
    nibbles.push_back(RightNibble(field.byteAt(i)));
  }
  ValidatePackedDecimal(nibbles.data(), 2 * size, sign, source);
}

void DataCnv::PckdDecFromDec(const unsigned short* text, unsigned char* target, int size, int virtualDecimalPoint,
                             ESign sign) {
  static constexpr unsigned short kNoText[] = {0};
  const FunctionTrace trace(this, "DataCnv::PckdDecFromDec", kDataCnvPath);
  if (target == nullptr)
    raise<KelConversionException>(trace.site(), failures::kInternalError, failures::kInternalError.text,
                                  "Null output buffer pointer");
  if (text == nullptr) text = kNoText;

  std::array<unsigned short, core::kMaxQuickDigits> buffer;
  KelBufferedWstring<16u> general;
  auto number = core::integerDigits(text, virtualDecimalPoint, buffer);
  const std::uint64_t room = static_cast<std::uint64_t>(std::max(size, 0));
  if (!number || (number->count > number->digits.size() && core::packedSize(number->count) <= room)) {
    const bool negative = integerText(text, virtualDecimalPoint, general);
    number = core::IntegerDigits{negative, general.view(), general.length()};
  }
  if (core::packedSize(number->count) > room)
    raise<KelConversionException>(trace.site(), failures::kTooLong, failures::kTooLong.text, "decimal",
                                  "packed decimal", size, text);
  char signNibble = 0;
  GetPackedDecimalSign(static_cast<short>(sign != eSignNone), number->negative, &signNibble);
  core::packDigits(number->digits, static_cast<unsigned char>(signNibble), {target, room},
                   packedEndian == eEndianLittle);
}

// The general way to the digits of a number whose point moves to the right and whose fraction is cut, for any text at
// all. The digits go to `digits`, at least one; the result tells whether a minus came off.
bool DataCnv::integerText(const unsigned short* text, int places, KelWstring& digits) {
  constexpr unsigned short kZero[] = {'0', 0};
  digits.insert(0, text);
  adjustDecimalForString(digits, -std::max(places, -std::numeric_limits<int>::max()));
  const unsigned point = digits.find(US_DECIMAL, 0);
  if (point != KelWstring::npos) digits.eraseInternal(point, KelWstring::npos);
  const bool negative = CheckSign(digits, eSignLeadingSeparate, US_MINUS.characters(), US_PLUS.characters());
  TrimData(digits, eTrimSpaceBoth, eJustifyLeft, '0', true);
  TrimData(digits, eTrimPadding, eJustifyRight, '0', true);
  if (digits.length() == 0) digits.assignInternal(kZero, 1, 0);
  return negative;
}
