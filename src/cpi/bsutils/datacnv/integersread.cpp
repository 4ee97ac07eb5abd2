#include <cstdint>
#include <string>
#include <type_traits>

#include "core/byteorder.hpp"
#include "core/scaling.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "support/fastway.hpp"
#include "support/support.hpp"
#include "values/textinplace.hpp"

// Binary integers read from the fields of a message: of 1, 2, 4 or 8 bytes, in two's complement or without a sign, in
// the byte order of the message.
//
// All three readings take a field the same way: its bytes become 64 bits, extended by the sign or by zeros, of which
// the result takes the low ones. So an unsigned value that a signed result can't hold comes out negative, and that is
// the whole test for an overflow. Decimals and doubles are made from the integers, by the members that make texts of
// them.
using namespace oxr;

namespace {

// What the three readings of an integer differ in. Their texts follow no rule.
struct Reading {
  const char* function;
  const char* nullText;
  const char* overflowText;
  const char* widthText;
};
constexpr Reading kInt64 = {"DataCnv::IntToInt64", "Null input pointer passed into DataCnv::IntToInt64",
                            "Overflow converting a PWFUInt64 to PWFInt64", "8-byte integer"};
constexpr Reading kInt32 = {"DataCnv::IntToInt32",
                            "DataCnv::IntToInt32 called with a Null input pointer for the source.",
                            "Overflow converting a PWFUInt32 to PWFInt32", "4-byte integer"};
constexpr Reading kUInt64 = {"DataCnv::UIntToUInt64", "Null input pointer", nullptr, nullptr};

// The bytes of a field and what is needed to understand them.
struct Field {
  const unsigned char* bytes;
  int size;
  EEndian order;
  ESign sign;

  // Any other ESign means that the field has no sign.
  bool isSigned() const { return sign == eSignLeadingIncluded; }
  // Whether a T can be read from a field of this size.
  template <class T>
  bool fits() const {
    return core::isIntegerSize(size) && size <= static_cast<int>(sizeof(T));
  }
  // REQUIRES: fits<T>().
  template <class T>
  T value() const {
    return static_cast<T>(core::loadInteger(bytes, size, order == eEndianLittle, isSigned()));
  }
  // Whether `value`, read from this field, is an unsigned one that a T can't hold. Told without a branch on the sign of
  // a value, which is any in most fields.
  template <class T>
  bool overflows(T value) const {
    const T mask = static_cast<T>(isSigned() ? 0 : -1);
    return std::is_signed_v<T> && (value & mask) < T{0};
  }
};

// Serves a field of a size that a T can be read from, with a value that a T can hold.
template <class T>
[[gnu::always_inline]] inline bool readIntegerFast(const Field& field, T& value) {
  if (field.bytes == nullptr || !field.fits<T>()) return false;
  const T read = field.value<T>();
  if (field.overflows(read)) return false;
  value = read;
  return true;
}

// The field comes in parts, so that all arguments travel in registers and the fast way needs no room for them.
template <class T>
[[gnu::cold, gnu::noinline]] T readIntegerGeneral(const DataCnv& cnv, const Reading& reading,
                                                  const unsigned char* bytes, int size, ESign sign) {
  const Field field{bytes, size, DataCnvParts::integerEndian(cnv), sign};
  const FunctionTrace trace(&cnv, reading.function, kDataCnvPath);
  if (bytes == nullptr) raiseInternalError(trace.site(), reading.nullText);
  if (!field.fits<T>()) raiseInternalError(trace.site(), numbered("Invalid integer size: ", size));
  const T value = field.value<T>();
  if constexpr (std::is_signed_v<T>) {
    // The value goes into the message as it was read, which is negative: Integers.RefuseNullThenSizeThenOverflow.
    if (field.overflows(value))
      raiseBare<KelConversionException>(trace.site(), failures::kTooLong, reading.overflowText, "integer",
                                        reading.widthText, static_cast<int>(sizeof(T)), value);
  }
  return value;
}

// These failures go without the usual first insert: SwapEnds.MirrorsInPlaceAndRefusesInOrder.
[[noreturn, gnu::cold, gnu::noinline]] void refuseToSwap(const unsigned char* target, const unsigned char* source,
                                                         int length) {
  const FailureSite site = untracedSite(nullptr, "DataCnv::SwapEnds", kDataCnvHeaderPath);
  const char* const noBuffer = source == nullptr   ? "Null input pointer"
                               : target == nullptr ? "Null output buffer pointer"
                                                   : nullptr;
  const std::string detail = noBuffer != nullptr ? noBuffer : numbered("Invalid input length: ", length);
  raiseBare<KelConversionException>(site, failures::kInternalError, detail);
}

}  // namespace

void DataCnv::SwapEnds(unsigned char* target, const unsigned char* source, int length) {
  if (source == nullptr || target == nullptr || length <= 0) [[unlikely]]
    refuseToSwap(target, source, length);
  // Byte by byte from the start of the source, without a copy of it, even where the two overlap and so a byte may be
  // read that was just written: SwapEnds.MirrorsInPlaceAndRefusesInOrder.
  unsigned char* out = target + length;
  for (int i = 0; i < length; ++i)
    *--out = source[i];
}

// What IntToInt64 has not read where it is called.
PWFInt64 DataCnv::readInt64(const unsigned char* source, int size, ESign sign) {
  PWFInt64 value;
  if (wentFast([&] { return readIntegerFast({source, size, integerEndian, sign}, value); })) [[likely]]
    return value;
  return readIntegerGeneral<PWFInt64>(*this, kInt64, source, size, sign);
}

PWFInt32 DataCnv::IntToInt32(const unsigned char* source, int size, ESign sign) {
  PWFInt32 value;
  if (wentFast([&] { return readIntegerFast({source, size, integerEndian, sign}, value); })) [[likely]]
    return value;
  return readIntegerGeneral<PWFInt32>(*this, kInt32, source, size, sign);
}

PWFUInt64 DataCnv::UIntToUInt64(const unsigned char* source, int size) {
  PWFUInt64 value;
  if (wentFast([&] { return readIntegerFast({source, size, integerEndian, eSignNone}, value); })) [[likely]]
    return value;
  return readIntegerGeneral<PWFUInt64>(*this, kUInt64, source, size, eSignNone);
}

// The field is read as a signed one, whatever its program meant by it: a decimal carries no ESign.
PWFData DataCnv::IntToDec(const unsigned char* source, int size, int virtualDecimalPoint) {
  const FunctionTrace trace(this, "DataCnv::IntToDec", kDataCnvPath);
  if (source == nullptr) raiseInternalError(trace.site(), "Null input pointer");
  if (size <= 0) raiseInternalError(trace.site(), numbered("Invalid input size: ", size));
  const PWFInt64 number = IntToInt64(source, size, eSignLeadingIncluded);
  PWFData value = TextInPlace::make(DECIMAL);
  KelWstring& text = TextInPlace::text(value);
  Int64ToUString(number, text);
  // The minus counts as a position when the point is placed: Integers.Read.
  adjustDecimalForString(text, virtualDecimalPoint);
  TextInPlace::traceMade(value);
  return value;
}

double DataCnv::IntToDbl(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign) {
  const FunctionTrace trace(this, "DataCnv::IntToDbl", kDataCnvPath);
  if (source == nullptr) raiseInternalError(trace.site(), "Null input pointer");
  if (size <= 0) raiseInternalError(trace.site(), numbered("Invalid input size: ", size));
  const double number = sign == eSignLeadingIncluded ? static_cast<double>(IntToInt64(source, size, sign))
                                                     : static_cast<double>(UIntToUInt64(source, size));
  // The field holds the value times ten to the scale. In 64 bits, since the least scale has no opposite in 32.
  return core::scaledByTens(number, -std::int64_t{virtualDecimalPoint});
}
