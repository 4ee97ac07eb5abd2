// Packed decimals as machine numbers, and machine numbers as packed decimals.
//
// Each conversion is defined by other members that it calls one after the other, with the decimal's text in between:
// the general ways below are that definition. The fast ways go straight from the half bytes to the number and back, for
// fields of up to ten bytes, and give what the members would have given; whatever fails, fails in the general way.

#include <algorithm>
#include <cstdint>

#include "core/numbertextwrite.hpp"
#include "core/packednumber.hpp"
#include "core/scaling.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "support/support.hpp"
#include "values/textinplace.hpp"

using namespace oxr;

namespace {

// A field of up to ten bytes: all digits as one number of 64 bits, the point left to the caller.
[[gnu::always_inline]] inline bool readNumberFast(const DataCnv& cnv, const unsigned char* source, int size, ESign sign,
                                                  core::PackedNumber& number) {
  const auto bytes = static_cast<std::uint32_t>(size);
  return source != nullptr && bytes - 1 < core::PackedNumber::kMaxSize &&
         core::readPackedNumber(source, bytes, DataCnvParts::isPackedReversed(cnv), sign != eSignNone, number);
}

bool readDoubleFast(const DataCnv& cnv, const unsigned char* source, int size, int virtualDecimalPoint, ESign sign,
                    double& value) {
  core::PackedNumber number;
  // The general way's reader of doubles goes by the symbols of the formatter, which are there once one was made.
  if (!DataCnvParts::hasAsciiSymbols() || !readNumberFast(cnv, source, size, sign, number)) return false;
  // A minus counts as a position: no digit may be missing for it after the point, or the text is none of a number.
  const bool isCanonical = !number.negative || virtualDecimalPoint < static_cast<int>(number.digitCount);
  return isCanonical && core::toDouble(number, virtualDecimalPoint, value);
}

// The whole part of a field's number. The places after the point are cut, as the general way's IntFromDec cuts them; a
// number beyond the integer is left to the general way, which raises.
template <class Integer>
bool readIntegerFast(const DataCnv& cnv, const unsigned char* source, int size, int virtualDecimalPoint, ESign sign,
                     Integer& value) {
  core::PackedNumber number;
  return readNumberFast(cnv, source, size, sign, number) && core::wholePart(number.magnitude, virtualDecimalPoint) &&
         core::toInteger(number.magnitude, number.negative, value);
}

// The field's decimal, with a scale beyond any use cut to where the number does not change any more.
PWFData decimalOf(DataCnv& cnv, const unsigned char* source, int size, int virtualDecimalPoint, ESign sign) {
  const auto digits = 2 * static_cast<std::size_t>(std::max(size, 0));
  return cnv.PckdDecToDec(source, size, core::clampedPlaces(virtualDecimalPoint, digits), sign);
}

[[gnu::noinline]] double readDoubleGeneral(DataCnv& cnv, const unsigned char* source, int size, int virtualDecimalPoint,
                                           ESign sign) {
  const FunctionTrace trace(&cnv, "DataCnv::PckdDecToDbl", kDataCnvPath);
  PWFData decimal = decimalOf(cnv, source, size, virtualDecimalPoint, sign);
  return cnv.PWFStringTodouble(TextInPlace::text(decimal));
}

// By way of the bytes of an integer: the failure of a number that is too large is that of IntFromDec.
[[gnu::noinline]] PWFInt64 readInt64General(DataCnv& cnv, const unsigned char* source, int size,
                                            int virtualDecimalPoint, ESign sign) {
  const FunctionTrace trace(&cnv, "DataCnv::PckdDecToPWFInt64", kDataCnvPath);
  const PWFData decimal = decimalOf(cnv, source, size, virtualDecimalPoint, sign);
  unsigned char integer[8];
  cnv.IntFromDec(decimal.getDecimalValue(), integer, sizeof integer, 0);
  return cnv.IntToInt64(integer, sizeof integer, eSignLeadingIncluded);
}

[[gnu::noinline]] PWFInt32 readInt32General(DataCnv& cnv, const unsigned char* source, int size,
                                            int virtualDecimalPoint, ESign sign) {
  const FunctionTrace trace(&cnv, "DataCnv::PckdDecToInt32", kDataCnvPath);
  const PWFData decimal = decimalOf(cnv, source, size, virtualDecimalPoint, sign);
  unsigned char integer[4];
  cnv.IntFromDec(decimal.getDecimalValue(), integer, sizeof integer, 0);
  return cnv.IntToInt32(integer, sizeof integer, eSignLeadingIncluded);
}

// Packs an integer whose digits, followed by a zero for each place of the field, are fifteen at most and fit the field.
bool writeIntegerFast(DataCnv& cnv, PWFInt64 value, unsigned char* target, int size, int virtualDecimalPoint,
                      ESign sign) {
  constexpr std::uint32_t kMaxDigits = 2 * core::PackedWord::kMaxSize - 1;
  const std::uint64_t magnitude = value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
  const auto places = static_cast<std::uint32_t>(virtualDecimalPoint);  // below 0: more than there are digits
  if (target == nullptr || size <= 0 || places >= kMaxDigits || magnitude >= core::kPowersOfTen[kMaxDigits - places])
    return false;
  const unsigned signNibble = DataCnvParts::packedSign(cnv, sign != eSignNone, value < 0);
  // Digits and sign fill the end of the field in normal order, zeros the rest.
  const auto bytes = static_cast<std::uint32_t>(size);
  const std::uint32_t filled = std::min(bytes, core::PackedWord::kMaxSize);
  const bool reversed = DataCnvParts::isPackedReversed(cnv);
  if (!core::packShort(core::halfBytesOfNumber(magnitude) << 4 * places, signNibble,
                       target + (reversed ? 0 : bytes - filled), filled, reversed))
    return false;
  std::fill_n(target + (reversed ? filled : 0), bytes - filled, static_cast<unsigned char>(0));
  return true;
}

[[gnu::noinline]] void writeInt64General(DataCnv& cnv, PWFInt64 value, unsigned char* target, int size,
                                         int virtualDecimalPoint, ESign sign) {
  const FunctionTrace trace(&cnv, "DataCnv::PckdDecFromPWFInt64", kDataCnvPath);
  unsigned char integer[8];
  cnv.IntFromInt64(value, integer, sizeof integer, eSignLeadingIncluded);
  const PWFData decimal = cnv.IntToDec(integer, sizeof integer, 0);
  cnv.PckdDecFromDec(decimal.getDecimalValue(), target, size, virtualDecimalPoint, sign);
}

[[gnu::noinline]] void writeInt32General(DataCnv& cnv, PWFInt32 value, unsigned char* target, int size,
                                         int virtualDecimalPoint, ESign sign) {
  const FunctionTrace trace(&cnv, "DataCnv::PckdDecFromInt32", kDataCnvPath);
  unsigned char integer[4];
  cnv.IntFromInt32(value, integer, sizeof integer, eSignLeadingIncluded);
  const PWFData decimal = cnv.IntToDec(integer, sizeof integer, 0);
  cnv.PckdDecFromDec(decimal.getDecimalValue(), target, size, virtualDecimalPoint, sign);
}

}  // namespace

double DataCnv::PckdDecToDbl(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign) {
  double value;
  if (wentFast([&] { return readDoubleFast(*this, source, size, virtualDecimalPoint, sign, value); })) [[likely]]
    return value;
  return readDoubleGeneral(*this, source, size, virtualDecimalPoint, sign);
}

PWFInt64 DataCnv::PckdDecToPWFInt64(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign) {
  PWFInt64 value;
  if (wentFast([&] { return readIntegerFast(*this, source, size, virtualDecimalPoint, sign, value); })) [[likely]]
    return value;
  return readInt64General(*this, source, size, virtualDecimalPoint, sign);
}

PWFInt32 DataCnv::PckdDecToInt32(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign) {
  PWFInt32 value;
  if (wentFast([&] { return readIntegerFast(*this, source, size, virtualDecimalPoint, sign, value); })) [[likely]]
    return value;
  return readInt32General(*this, source, size, virtualDecimalPoint, sign);
}

// No fast way of its own: writing the digits of a double takes several times as long as packing them.
void DataCnv::PckdDecFromDbl(double value, unsigned char* target, int size, int virtualDecimalPoint, ESign sign) {
  const FunctionTrace trace(this, "DataCnv::PckdDecFromDbl", kDataCnvPath);
  KelBufferedWstring<16u> text;
  doubleToUString(value, text, false);
  PckdDecFromDec(text.characters(), target, size, virtualDecimalPoint, sign);
}

void DataCnv::PckdDecFromPWFInt64(PWFInt64 value, unsigned char* target, int size, int virtualDecimalPoint,
                                  ESign sign) {
  if (wentFast([&] { return writeIntegerFast(*this, value, target, size, virtualDecimalPoint, sign); })) [[likely]]
    return;
  writeInt64General(*this, value, target, size, virtualDecimalPoint, sign);
}

void DataCnv::PckdDecFromInt32(PWFInt32 value, unsigned char* target, int size, int virtualDecimalPoint, ESign sign) {
  if (wentFast([&] { return writeIntegerFast(*this, value, target, size, virtualDecimalPoint, sign); })) [[likely]]
    return;
  writeInt32General(*this, value, target, size, virtualDecimalPoint, sign);
}
