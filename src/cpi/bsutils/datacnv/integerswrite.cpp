#include <bit>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

#include "core/byteorder.hpp"
#include "core/scaling.hpp"
#include "datacnv/decimalinteger.hpp"
#include "datacnv/sourcepath.hpp"
#include "datacnv/textedit.hpp"
#include "dataconv.hpp"
#include "support/support.hpp"

using namespace oxr;

namespace {

constexpr int kMaxSize = 8;

// What a field takes: the integers, and the doubles, both bounds included. A double of `mostReal` may still be too
// large for 8 bytes, whose largest value no double has.
struct Range {
  PWFInt64 least = 1;
  PWFInt64 most = 0;
  double mostReal = 0.0;
  const char* type = nullptr;

  bool holds(PWFInt64 value) const { return value >= least && value <= most; }
  // Never a NaN.
  bool holds(double value) const { return value >= static_cast<double>(least) && value <= mostReal; }
};

// The range of a T, as far as a PWFInt64 can lie in it.
template <class T>
constexpr Range rangeOf(const char* type) {
  constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<T>::max());
  constexpr auto kMostSigned = static_cast<std::uint64_t>(std::numeric_limits<PWFInt64>::max());
  return {std::numeric_limits<T>::min(), static_cast<PWFInt64>(kMost < kMostSigned ? kMost : kMostSigned),
          static_cast<double>(kMost), type};
}

// By bytes, then unsigned and signed. A size that no integer has takes nothing, so that one test sees to size and
// range.
constexpr Range kRanges[kMaxSize + 1][2] = {
    {},
    {rangeOf<PWFUInt8>("PWFUInt8"), rangeOf<PWFInt8>("PWFInt8")},
    {rangeOf<PWFUInt16>("PWFUInt16"), rangeOf<PWFInt16>("PWFInt16")},
    {},
    {rangeOf<PWFUInt32>("PWFUInt32"), rangeOf<PWFInt32>("PWFInt32")},
    {},
    {},
    {},
    {rangeOf<PWFUInt64>("PWFUInt64"), rangeOf<PWFInt64>("PWFInt64")},
};
static_assert(kRanges[8][1].mostReal == 0x1p63 && kRanges[8][0].mostReal == 0x1p64 && kRanges[3][1].most == 0);

// What the three writings of an integer differ in.
struct Writing {
  const char* function;
  const char* type;
  int maxSize;
  const char* width;  // goes behind the number of bytes
};
constexpr Writing kFromInt64 = {"DataCnv::IntFromInt64", "PWFInt64", 8, "-byte integer"};
constexpr Writing kFromInt32 = {"DataCnv::IntFromInt32", "PWFInt32", 4, "-byte integer"};
constexpr Writing kFromUInt32 = {"DataCnv::UIntFromUInt32", "PWFUInt32", 4, "-byte unsigned integer"};

struct Field {
  unsigned char* bytes;
  int size;
  EEndian order;
  bool isSigned;

  bool isKnownSize(int maxSize) const { return core::isIntegerSize(size) && size <= maxSize; }
  const Range& range() const { return kRanges[static_cast<unsigned>(size)][isSigned]; }
  void store(std::uint64_t value) const { core::storeInteger(bytes, value, size, order == eEndianLittle); }
};

// All of a writing. The field comes in parts, for which registers are enough.
template <class T>
[[gnu::cold, gnu::noinline]] void writeTraced(const KelLogSource* source, const Writing& writing, T value,
                                              unsigned char* target, int size, EEndian order, bool isSigned) {
  const Field field{target, size, order, isSigned};
  const FunctionTrace trace(source, writing.function, kDataCnvPath);
  if (target == nullptr) raiseInternalError(trace.site(), "Null output buffer pointer");
  if (!field.isKnownSize(writing.maxSize)) raiseInternalError(trace.site(), numbered("Invalid integer size: ", size));
  if (!field.range().holds(PWFInt64{value})) {
    const std::string text = std::string("Overflow converting a ") + writing.type + " to " + field.range().type;
    // The value goes into the message as a signed one of its width: Integers.RefuseWhatDoesNotFit.
    raiseBare<KelConversionException>(trace.site(), failures::kTooLong, text, "integer",
                                      std::to_string(size) + writing.width, size,
                                      static_cast<std::make_signed_t<T>>(value));
  }
  field.store(static_cast<std::uint64_t>(value));
}

// The quick way first: a field of any size whose range takes the value, and no trace.
template <class T>
void write(const KelLogSource* source, const Writing& writing, T value, const Field& field) {
  if (!debugTraceOn() && field.bytes != nullptr && static_cast<unsigned>(field.size) <= kMaxSize &&
      field.size <= writing.maxSize && field.range().holds(PWFInt64{value})) [[likely]]
    return field.store(static_cast<std::uint64_t>(value));
  writeTraced(source, writing, value, field.bytes, field.size, field.order, field.isSigned);
}

// Truncated towards zero, for a value that Range::holds. One of exactly 2^63 or 2^64 becomes the largest integer.
std::uint64_t truncated(double value, bool isSigned) {
  if (!isSigned) return value >= 0x1p64 ? ~std::uint64_t{0} : static_cast<std::uint64_t>(value);
  const std::int64_t number =
      value >= 0x1p63 ? std::numeric_limits<std::int64_t>::max() : static_cast<std::int64_t>(value);
  return static_cast<std::uint64_t>(number);
}

}  // namespace

void DataCnv::IntFromInt64(PWFInt64 value, unsigned char* target, int size, ESign sign) {
  write(this, kFromInt64, value, {target, size, integerEndian, sign == eSignLeadingIncluded});
}

void DataCnv::IntFromInt32(PWFInt32 value, unsigned char* target, int size, ESign sign) {
  write(this, kFromInt32, value, {target, size, integerEndian, sign == eSignLeadingIncluded});
}

void DataCnv::UIntFromUInt32(PWFUInt32 value, unsigned char* target, int& size) {
  write(this, kFromUInt32, value, {target, size, integerEndian, false});
}

void DataCnv::IntFromDbl(double value, unsigned char* target, int size, ESign sign, int virtualDecimalPoint) {
  const FunctionTrace trace(this, "DataCnv::IntFromDbl", kDataCnvPath);
  // Here, and nowhere else among the integers, every ESign but eSignNone is signed: Integers.WriteDoubles.
  const Field field{target, size, integerEndian, sign != eSignNone};
  if (target == nullptr) raiseInternalError(trace.site(), "Null output buffer pointer");
  if (!field.isKnownSize(kMaxSize)) raiseInternalError(trace.site(), numbered("Invalid integer size: ", size));
  const double scaled = core::scaledByTens(value, virtualDecimalPoint);
  if (!field.range().holds(scaled))
    raise<KelConversionException>(trace.site(), failures::kOutOfBounds, "double float",
                                  (field.isSigned ? "signed " : "unsigned ") + std::to_string(size) + "-byte integer",
                                  scaled);
  field.store(truncated(scaled, field.isSigned));
}

void DataCnv::IntFromDec(const unsigned short* text, unsigned char* target, int size, int virtualDecimalPoint) {
  const FunctionTrace trace(this, "DataCnv::IntFromDec", kDataCnvPath);
  if (text == nullptr) raiseInternalError(trace.site(), "Null input pointer");
  if (target == nullptr) raiseInternalError(trace.site(), "Null output buffer pointer");
  if (size <= 0) raiseInternalError(trace.site(), numbered("Invalid output buffer size: ", size));
  KelBufferedWstring<16u> digits;
  if (integerText(*this, text, core::clampedPlaces(virtualDecimalPoint, UnitView(text).size()), digits))
    insertUnit(digits, 0, '-');
  IntFromInt64(UStringToInt64(digits), target, size, eSignLeadingIncluded);
}
