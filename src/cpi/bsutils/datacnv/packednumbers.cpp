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

// Each conversion is defined as a chain of other members over the decimal's text. A field of usual size that gives a
// value at all goes straight from its half bytes to the machine number, with the result of the chain; everything else,
// failures above all, takes the chain itself. PackedConversions.QuickWayAndChainAgree.

namespace {

// Reads a field for the quick way; false for one that takes the other.
bool quickNumber(const unsigned char* source, int size, EEndian endian, ESign sign, core::PackedNumber& number) {
  const auto bytes = static_cast<std::uint32_t>(size);
  return !debugTraceOn() && source != nullptr && bytes - 1 < core::PackedNumber::kMaxSize &&
         core::readPackedNumber(source, bytes, endian == eEndianLittle, sign != eSignNone, number);
}

template <class Integer>
bool quickInteger(const unsigned char* source, int size, EEndian endian, int places, ESign sign, Integer& value) {
  core::PackedNumber number;
  return quickNumber(source, size, endian, sign, number) && core::wholePart(number.magnitude, places) &&
         core::toInteger(number.magnitude, number.negative, value);
}

// A scale beyond any use, cut to where the number is settled.
int settledScale(int virtualDecimalPoint, int size) {
  return core::settledPlaces(virtualDecimalPoint, 2 * static_cast<std::size_t>(std::max(size, 0)));
}

double packedToDouble(DataCnv& cnv, const unsigned char* source, int size, int virtualDecimalPoint, ESign sign) {
  const FunctionTrace trace(&cnv, "DataCnv::PckdDecToDbl", kDataCnvPath);
  PWFData decimal = cnv.PckdDecToDec(source, size, settledScale(virtualDecimalPoint, size), sign);
  return cnv.PWFStringTodouble(TextValue::text(decimal));
}

PWFInt64 packedToInt64(DataCnv& cnv, const unsigned char* source, int size, int virtualDecimalPoint, ESign sign) {
  const FunctionTrace trace(&cnv, "DataCnv::PckdDecToPWFInt64", kDataCnvPath);
  const PWFData decimal = cnv.PckdDecToDec(source, size, settledScale(virtualDecimalPoint, size), sign);
  unsigned char integer[8];
  cnv.IntFromDec(decimal.getDecimalValue(), integer, sizeof integer, 0);
  return cnv.IntToInt64(integer, sizeof integer, eSignLeadingIncluded);
}

PWFInt32 packedToInt32(DataCnv& cnv, const unsigned char* source, int size, int virtualDecimalPoint, ESign sign) {
  const FunctionTrace trace(&cnv, "DataCnv::PckdDecToInt32", kDataCnvPath);
  const PWFData decimal = cnv.PckdDecToDec(source, size, settledScale(virtualDecimalPoint, size), sign);
  unsigned char integer[4];
  cnv.IntFromDec(decimal.getDecimalValue(), integer, sizeof integer, 0);
  return cnv.IntToInt32(integer, sizeof integer, eSignLeadingIncluded);
}

// Packs an integer of usual size whose digits fit the field. False for what takes the chain.
bool quickPack(DataCnv& cnv, PWFInt64 value, unsigned char* target, int size, int virtualDecimalPoint, ESign sign) {
  constexpr std::uint32_t kMaxDigits = 2 * core::PackedWord::kMaxSize - 1;
  const std::uint64_t magnitude = value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
  const auto places = static_cast<std::uint32_t>(virtualDecimalPoint);  // below 0: more than there are digits
  if (debugTraceOn() || target == nullptr || size <= 0 || places >= kMaxDigits ||
      magnitude >= core::kPowersOfTen[kMaxDigits - places])
    return false;
  char nibble;
  cnv.GetPackedDecimalSign(static_cast<short>(sign != eSignNone), value < 0, &nibble);
  const auto bytes = static_cast<std::uint32_t>(size);
  const std::uint32_t filled = std::min(bytes, core::PackedWord::kMaxSize);
  const bool reversed = DataCnvParts::isPackedReversed(cnv);
  if (!core::packShort(core::halfBytesOfNumber(magnitude) << 4 * places, static_cast<unsigned char>(nibble),
                       target + (reversed ? 0 : bytes - filled), filled, reversed))
    return false;
  std::fill_n(target + (reversed ? filled : 0), bytes - filled, static_cast<unsigned char>(0));
  return true;
}

}  // namespace

double DataCnv::PckdDecToDbl(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign) {
  core::PackedNumber number;
  double value;
  // The chain's reader of doubles goes by the symbols of the formatter, which are there once one was made.
  if (DataCnvParts::hasAsciiSymbols() && quickNumber(source, size, packedEndian, sign, number)) [[likely]] {
    // A minus counts as a position: no digit may be missing for it behind the point.
    const bool isCanonical = !number.negative || virtualDecimalPoint < static_cast<int>(number.digitCount);
    if (isCanonical && core::toDouble(number, virtualDecimalPoint, value)) [[likely]]
      return value;
  }
  return packedToDouble(*this, source, size, virtualDecimalPoint, sign);
}

PWFInt64 DataCnv::PckdDecToPWFInt64(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign) {
  PWFInt64 value;
  if (quickInteger(source, size, packedEndian, virtualDecimalPoint, sign, value)) [[likely]]
    return value;
  return packedToInt64(*this, source, size, virtualDecimalPoint, sign);
}

PWFInt32 DataCnv::PckdDecToInt32(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign) {
  PWFInt32 value;
  if (quickInteger(source, size, packedEndian, virtualDecimalPoint, sign, value)) [[likely]]
    return value;
  return packedToInt32(*this, source, size, virtualDecimalPoint, sign);
}

void DataCnv::PckdDecFromDbl(double value, unsigned char* target, int size, int virtualDecimalPoint, ESign sign) {
  const FunctionTrace trace(this, "DataCnv::PckdDecFromDbl", kDataCnvPath);
  KelBufferedWstring<16u> text;
  doubleToUString(value, text, false);
  PckdDecFromDec(text.characters(), target, size, virtualDecimalPoint, sign);
}

void DataCnv::PckdDecFromPWFInt64(PWFInt64 value, unsigned char* target, int size, int virtualDecimalPoint,
                                  ESign sign) {
  if (quickPack(*this, value, target, size, virtualDecimalPoint, sign)) [[likely]]
    return;
  const FunctionTrace trace(this, "DataCnv::PckdDecFromPWFInt64", kDataCnvPath);
  unsigned char integer[8];
  IntFromInt64(value, integer, sizeof integer, eSignLeadingIncluded);
  const PWFData decimal = IntToDec(integer, sizeof integer, 0);
  PckdDecFromDec(decimal.getDecimalValue(), target, size, virtualDecimalPoint, sign);
}

void DataCnv::PckdDecFromInt32(PWFInt32 value, unsigned char* target, int size, int virtualDecimalPoint, ESign sign) {
  if (quickPack(*this, value, target, size, virtualDecimalPoint, sign)) [[likely]]
    return;
  const FunctionTrace trace(this, "DataCnv::PckdDecFromInt32", kDataCnvPath);
  unsigned char integer[4];
  IntFromInt32(value, integer, sizeof integer, eSignLeadingIncluded);
  const PWFData decimal = IntToDec(integer, sizeof integer, 0);
  PckdDecFromDec(decimal.getDecimalValue(), target, size, virtualDecimalPoint, sign);
}
