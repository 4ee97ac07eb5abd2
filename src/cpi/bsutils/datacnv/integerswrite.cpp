#include <bit>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

#include "core/byteorder.hpp"
#include "core/scaling.hpp"
#include "datacnv/decimalinteger.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/sourcepath.hpp"
#include "datacnv/textedit.hpp"
#include "dataconv.hpp"
#include "support/fastway.hpp"
#include "support/support.hpp"

// Binary integers written into the fields of a message: of 1, 2, 4 or 8 bytes, in two's complement or without a sign,
// in the byte order of the message.
//
// What a field can hold is a table by its size and sign, and one test against it is the whole of the range tests, for
// integers as for doubles. A double is scaled first and cut to an integer last, so that the test is of the value with
// its fraction; a decimal is made an integer as text, so that no digit is lost on the way.
using namespace oxr;

namespace {

constexpr int kMaxSize = 8;  // bytes

// What a field takes: the integers, and the doubles, both bounds included. A double of `mostReal` may still be too
// large for 8 bytes, since no double equals their largest value.
struct Range {
  PWFInt64 least = 1;
  PWFInt64 most = 0;
  double mostReal = 0.0;
  const char* type = nullptr;

  bool holds(PWFInt64 value) const { return value >= least && value <= most; }
  // A NaN is in no range.
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

// By the size in bytes, then unsigned and signed. Nothing is in the range of a size that no integer has, so that one
// test sees to size and range.
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
  const char* width;  // follows the number of bytes in the message
};
constexpr Writing kFromInt64 = {"DataCnv::IntFromInt64", "PWFInt64", 8, "-byte integer"};
constexpr Writing kFromInt32 = {"DataCnv::IntFromInt32", "PWFInt32", 4, "-byte integer"};
constexpr Writing kFromUInt32 = {"DataCnv::UIntFromUInt32", "PWFUInt32", 4, "-byte unsigned integer"};

// The bytes of a field and how an integer is to stand in them.
struct Field {
  unsigned char* bytes;
  int size;
  EEndian order;
  bool isSigned;

  bool isKnownSize(int maxSize) const { return core::isIntegerSize(size) && size <= maxSize; }
  // REQUIRES: a size from 0 to kMaxSize.
  const Range& range() const { return kRanges[static_cast<unsigned>(size)][isSigned ? 1u : 0u]; }
  void store(std::uint64_t value) const { core::storeInteger(bytes, value, size, order == eEndianLittle); }
};

// Serves a field of any good size whose range has the value.
template <class T>
[[gnu::always_inline]] inline bool writeIntegerFast(const Writing& writing, T value, const Field& field) {
  if (field.bytes == nullptr || static_cast<unsigned>(field.size) > kMaxSize || field.size > writing.maxSize ||
      !field.range().holds(PWFInt64{value}))
    return false;
  field.store(static_cast<std::uint64_t>(value));
  return true;
}

// The field comes in parts, so that all arguments travel in registers and the fast way needs no room for them.
template <class T>
[[gnu::cold, gnu::noinline]] void writeIntegerGeneral(const DataCnv& cnv, const Writing& writing, T value,
                                                      unsigned char* target, int size, ESign sign) {
  const Field field{target, size, DataCnvParts::integerEndian(cnv), sign == eSignLeadingIncluded};
  const FunctionTrace trace(&cnv, writing.function, kDataCnvPath);
  if (target == nullptr) raiseInternalError(trace.site(), "Null output buffer pointer");
  if (!field.isKnownSize(writing.maxSize)) raiseInternalError(trace.site(), numbered("Invalid integer size: ", size));
  if (!field.range().holds(PWFInt64{value})) {
    const std::string text = std::string("Overflow converting a ") + writing.type + " to " + field.range().type;
    // The value goes into the message as a signed one of its width: Integers.Write.
    raiseBare<KelConversionException>(trace.site(), failures::kTooLong, text, "integer",
                                      std::to_string(size) + writing.width, size,
                                      static_cast<std::make_signed_t<T>>(value));
  }
  field.store(static_cast<std::uint64_t>(value));
}

// Truncated towards zero, for a value that Range::holds. A value of exactly 2^63 or 2^64 passes the inclusive test but
// does not fit 8 bytes; it becomes the largest integer: Integers.Write.
std::uint64_t truncated(double value, bool isSigned) {
  if (!isSigned) return value >= 0x1p64 ? ~std::uint64_t{0} : static_cast<std::uint64_t>(value);
  const std::int64_t number =
      value >= 0x1p63 ? std::numeric_limits<std::int64_t>::max() : static_cast<std::int64_t>(value);
  return static_cast<std::uint64_t>(number);
}

}  // namespace

// Signed is exactly eSignLeadingIncluded, as it is where integers are read.
void DataCnv::IntFromInt64(PWFInt64 value, unsigned char* target, int size, ESign sign) {
  const Field field{target, size, integerEndian, sign == eSignLeadingIncluded};
  if (wentFast([&] { return writeIntegerFast(kFromInt64, value, field); })) [[likely]]
    return;
  writeIntegerGeneral(*this, kFromInt64, value, target, size, sign);
}

void DataCnv::IntFromInt32(PWFInt32 value, unsigned char* target, int size, ESign sign) {
  const Field field{target, size, integerEndian, sign == eSignLeadingIncluded};
  if (wentFast([&] { return writeIntegerFast(kFromInt32, value, field); })) [[likely]]
    return;
  writeIntegerGeneral(*this, kFromInt32, value, target, size, sign);
}

// The size is left as it is; it is a reference because callers hold it so.
void DataCnv::UIntFromUInt32(PWFUInt32 value, unsigned char* target, int& size) {
  const Field field{target, size, integerEndian, false};
  if (wentFast([&] { return writeIntegerFast(kFromUInt32, value, field); })) [[likely]]
    return;
  writeIntegerGeneral(*this, kFromUInt32, value, target, size, eSignNone);
}

void DataCnv::IntFromDbl(double value, unsigned char* target, int size, ESign sign, int virtualDecimalPoint) {
  const FunctionTrace trace(this, "DataCnv::IntFromDbl", kDataCnvPath);
  // Here, and nowhere else among the integers, every ESign but eSignNone is signed: Integers.Write.
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

// The text loses its fraction and its padding first and is then read as an integer. The field is always a signed one: a
// decimal carries no ESign.
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
