#include <algorithm>
#include <limits>
#include <vector>

#include "core/packedfield.hpp"
#include "core/pointshift.hpp"
#include "cputils.hpp"
#include "datacnv/decimalinteger.hpp"
#include "datacnv/parts.hpp"
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

// Raises what is wrong with a field, if anything is.
void refusePacked(DataCnv& cnv, const core::PackedField& field, ESign sign, const unsigned char* source) {
  std::vector<unsigned char> nibbles(std::size_t{field.digitCount()} + 1);
  for (std::uint32_t i = 0; i < nibbles.size(); ++i)
    nibbles[i] = field.nibble(i);
  cnv.ValidatePackedDecimal(nibbles.data(), static_cast<int>(nibbles.size()), sign, source);
}

// All cases, with trace and argument tests; the member itself keeps to the frequent one.
PWFData readPackedGeneral(DataCnv& cnv, const unsigned char* source, int size, int virtualDecimalPoint, ESign sign) {
  const FunctionTrace trace(&cnv, "DataCnv::PckdDecToDec", kDataCnvPath);
  if (source == nullptr) raiseInternalError(trace.site(), "Null input pointer");
  if (size <= 0) raiseInternalError(trace.site(), numbered("Invalid input size: ", size));
  const core::PackedField field(source, size, DataCnvParts::isPackedReversed(cnv));
  if (debugTraceOn() || !field.isGood(sign != eSignNone)) refusePacked(cnv, field, sign, source);
  return shiftedValue(field, virtualDecimalPoint);
}

// The half byte of the sign as it is written.
inline unsigned packedSign(DataCnv& cnv, bool negative, ESign sign) {
  char nibble = 0;
  cnv.GetPackedDecimalSign(static_cast<short>(sign != eSignNone), negative, &nibble);
  return static_cast<unsigned char>(nibble);
}

inline void packNumber(DataCnv& cnv, const core::IntegerDigits& number, unsigned char* target, int size, ESign sign) {
  core::packDigits(number.digits, packedSign(cnv, number.negative, sign), {target, roomOf(size)},
                   DataCnvParts::isPackedReversed(cnv));
}

// All cases, with trace and argument tests; the member itself keeps to the frequent one.
void writePackedGeneral(DataCnv& cnv, const unsigned short* text, unsigned char* target, int size,
                        int virtualDecimalPoint, ESign sign) {
  static constexpr unsigned short kNoText[] = {0};
  const FunctionTrace trace(&cnv, "DataCnv::PckdDecFromDec", kDataCnvPath);
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
  number.negative = integerText(cnv, text, virtualDecimalPoint, digits);
  number.digits = digits.view();
  if (core::packedSize(digits.length()) > roomOf(size)) raiseTooLong();
  packNumber(cnv, number, target, size, sign);
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
    return readPackedGeneral(*this, source, size, virtualDecimalPoint, sign);
  const core::PackedWord field(source, bytes, packedEndian == eEndianLittle);
  const std::uint32_t minus = field.sign() == core::kPackedMinus;
  const std::uint32_t length = 2 * bytes - 1 + minus + (places != 0);
  if (!field.isAllDigitsButSign() || (core::isNegativeSign(field.sign()) && sign == eSignNone) ||
      length > TextValue::kInlineUnits) [[unlikely]]
    return readPackedGeneral(*this, source, size, virtualDecimalPoint, sign);
  return TextValue::make(DECIMAL, length, [&](unsigned short* out) {
    *out = '-';
    field.writePointed(2 * bytes - 1 - places, out + minus);  // 17 units at most: the text's room and its terminator
    out[length] = 0;
  });
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
          core::packShort(shortDigits, packedSign(*this, negative, sign), target, bytes, packedEndian == eEndianLittle))
        return;
    }
    core::DigitBuffer buffer;
    core::IntegerDigits number;
    if (core::integerDigits(text, virtualDecimalPoint, buffer, number) && number.count == number.digits.size() &&
        core::packedSize(number.count) <= roomOf(size)) {
      packNumber(*this, number, target, size, sign);
      return;
    }
  }
  writePackedGeneral(*this, text, target, size, virtualDecimalPoint, sign);
}
