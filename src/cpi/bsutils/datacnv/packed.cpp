#include <algorithm>
#include <limits>
#include <vector>

#include "core/packedfield.hpp"
#include "core/pointshift.hpp"
#include "cputils.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "support/support.hpp"
#include "values/textinplace.hpp"

using namespace oxr;

namespace {

constexpr const char* kFaultTexts[] = {
    "",
    "packed decimal, no sign found ",
    "packed decimal, negative sign found on unsigned data ",
    "packed decimal, non-numeric data found",
};

// The value of a good field, wherever its point falls.
PWFData shiftedValue(const core::PackedField& field, int places) {
  // The minus counts as a position when the point is placed: Packed.MinusCountsAsAPosition.
  const bool minus = field.sign() == core::kPackedMinus;
  const std::uint32_t units = field.digitCount() + minus;
  core::PointShift shift;
  if (places != 0) shift = core::trimmed(core::shiftPoint(units, core::PointShift::kNoPoint, places), units);
  return TextValue::make(DECIMAL, shift.length(units), [&](unsigned short* out) {
    constexpr unsigned short kZero = '0';
    unsigned short* const text = std::fill_n(out, shift.frontZeros, kZero);
    *text = '-';
    field.writeDigits(text + minus);
    unsigned short* const end = std::fill_n(text + units, shift.backZeros, kZero);
    if (!shift.hasPoint()) return;
    std::copy_backward(out + shift.point, end, end + 1);
    out[shift.point] = '.';
  });
}

// Bytes of a field; a size below 0 has room for none.
std::uint64_t roomOf(int size) {
  return static_cast<std::uint64_t>(std::max(size, 0));
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
    raise<KelConversionException>(trace.site(), failures::kInvalidData, kFaultTexts[static_cast<int>(fault)],
                                  CPUtils::binaryDump(rawField, count / 2));
}

// The frequent case makes no call and keeps all in registers: a short field, good, its point behind one of its digits,
// its text inside the value. All others go the long way.
PWFData DataCnv::PckdDecToDec(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign) {
  const auto bytes = static_cast<std::uint32_t>(size);
  const auto places = static_cast<std::uint32_t>(virtualDecimalPoint);  // below 0: more than any field has
  if (debugTraceOn() || source == nullptr || bytes - 1 >= core::PackedWord::kMaxSize || places >= 2 * bytes - 1)
      [[unlikely]]
    return readPackedTraced(source, size, virtualDecimalPoint, sign);
  const core::PackedWord field(source, bytes, packedEndian == eEndianLittle);
  const std::uint32_t minus = field.sign() == core::kPackedMinus;
  const std::uint32_t length = 2 * bytes - 1 + minus + (places != 0);
  if (!field.isAllDigitsButSign() || (core::isNegativeSign(field.sign()) && sign == eSignNone) ||
      length > TextValue::kInlineUnits) [[unlikely]]
    return readPackedTraced(source, size, virtualDecimalPoint, sign);
  return TextValue::make(DECIMAL, length, [&](unsigned short* out) {
    *out = '-';
    field.writePointed(2 * bytes - 1 - places, out + minus);  // 17 units at most: the text's room and its terminator
    out[length] = 0;
  });
}

// All cases, with trace and argument tests; the member itself keeps to the frequent one.
PWFData DataCnv::readPackedTraced(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign) {
  const FunctionTrace trace(this, "DataCnv::PckdDecToDec", kDataCnvPath);
  if (source == nullptr) raiseInternalError(trace.site(), "Null input pointer");
  if (size <= 0) raiseInternalError(trace.site(), numbered("Invalid input size: ", size));
  const core::PackedField field(source, size, packedEndian == eEndianLittle);
  if (debugTraceOn() || !field.isGood(sign != eSignNone)) refusePacked(field, sign, source);
  return shiftedValue(field, virtualDecimalPoint);
}

// Raises what is wrong with a field, if anything is.
void DataCnv::refusePacked(const core::PackedField& field, ESign sign, const unsigned char* source) {
  std::vector<unsigned char> nibbles(std::size_t{field.digitCount()} + 1);
  for (std::uint32_t i = 0; i < nibbles.size(); ++i)
    nibbles[i] = field.nibble(i);
  ValidatePackedDecimal(nibbles.data(), static_cast<int>(nibbles.size()), sign, source);
}

void DataCnv::PckdDecFromDec(const unsigned short* text, unsigned char* target, int size, int virtualDecimalPoint,
                             ESign sign) {
  if (!debugTraceOn() && text != nullptr && target != nullptr) [[likely]] {
    const auto bytes = static_cast<std::uint32_t>(size);
    const auto places = static_cast<std::uint32_t>(virtualDecimalPoint);
    if (bytes - 1 < core::PackedWord::kMaxSize && places < 16) {
      std::uint64_t shortDigits;
      bool negative;
      if (core::shortIntegerDigits(text, places, shortDigits, negative) &&
          core::packShort(shortDigits, packedSign(negative, sign), target, bytes, packedEndian == eEndianLittle))
        return;
    }
    core::DigitBuffer buffer;
    core::IntegerDigits number;
    if (core::integerDigits(text, virtualDecimalPoint, buffer, number) && number.count == number.digits.size() &&
        core::packedSize(number.count) <= roomOf(size)) {
      packNumber(number, target, size, sign);
      return;
    }
  }
  writePackedTraced(text, target, size, virtualDecimalPoint, sign);
}

inline void DataCnv::packNumber(const core::IntegerDigits& number, unsigned char* target, int size, ESign sign) {
  core::packDigits(number.digits, packedSign(number.negative, sign), {target, roomOf(size)},
                   packedEndian == eEndianLittle);
}

// The half byte of the sign as it is written.
inline unsigned DataCnv::packedSign(bool negative, ESign sign) {
  char nibble = 0;
  GetPackedDecimalSign(static_cast<short>(sign != eSignNone), negative, &nibble);
  return static_cast<unsigned char>(nibble);
}

// All cases, with trace and argument tests; the member itself keeps to the frequent one.
void DataCnv::writePackedTraced(const unsigned short* text, unsigned char* target, int size, int virtualDecimalPoint,
                                ESign sign) {
  static constexpr unsigned short kNoText[] = {0};
  const FunctionTrace trace(this, "DataCnv::PckdDecFromDec", kDataCnvPath);
  if (target == nullptr) raiseInternalError(trace.site(), "Null output buffer pointer");
  if (text == nullptr) text = kNoText;
  const auto raiseTooLong = [&] {
    raise<KelConversionException>(trace.site(), failures::kTooLong, "decimal", "packed decimal", size, text);
  };
  core::DigitBuffer buffer;
  core::IntegerDigits number;
  // A number that cannot fit is refused before its zeros are written out.
  if (core::integerDigits(text, virtualDecimalPoint, buffer, number) && core::packedSize(number.count) > roomOf(size))
    raiseTooLong();
  KelBufferedWstring<16u> digits;
  number.negative = integerText(text, virtualDecimalPoint, digits);
  number.digits = digits.view();
  if (core::packedSize(digits.length()) > roomOf(size)) raiseTooLong();
  packNumber(number, target, size, sign);
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
