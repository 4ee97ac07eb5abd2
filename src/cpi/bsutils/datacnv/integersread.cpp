#include <cstdint>
#include <type_traits>

#include "core/byteorder.hpp"
#include "core/scaling.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "support/support.hpp"
#include "values/textinplace.hpp"

using namespace oxr;

namespace {

// What the three readings of an integer differ in.
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

struct Field {
  const unsigned char* bytes;
  int size;
  EEndian order;
  ESign sign;

  bool isSigned() const { return sign == eSignLeadingIncluded; }
  // Whether a T can be read from a field of this size.
  template <class T>
  bool fits() const {
    return core::isIntegerSize(size) && size <= static_cast<int>(sizeof(T));
  }
  // Sign-extended or zero-extended to a T. An unsigned value beyond a signed T reads as negative.
  template <class T>
  T value() const {
    return static_cast<T>(core::loadInteger(bytes, size, order == eEndianLittle, isSigned()));
  }
  template <class T>
  bool overflows(T value) const {
    return !isSigned() && std::is_signed_v<T> && value < T{0};
  }
};

// All of a reading. The field comes in parts, for which registers are enough.
template <class T>
[[gnu::cold, gnu::noinline]] T readTraced(const KelLogSource* source, const Reading& reading,
                                          const unsigned char* bytes, int size, EEndian order, ESign sign) {
  const Field field{bytes, size, order, sign};
  const FunctionTrace trace(source, reading.function, kDataCnvPath);
  if (field.bytes == nullptr) raiseInternalError(trace.site(), reading.nullText);
  if (!field.fits<T>()) raiseInternalError(trace.site(), numbered("Invalid integer size: ", field.size));
  const T value = field.value<T>();
  if constexpr (std::is_signed_v<T>) {
    if (field.overflows(value))
      raiseBare<KelConversionException>(trace.site(), failures::kTooLong, reading.overflowText, "integer",
                                        reading.widthText, static_cast<int>(sizeof(T)), value);
  }
  return value;
}

// The quick way first: a good field, and no trace. Its frame has nothing to save for the calls of the whole way.
template <class T>
T read(const KelLogSource* source, const Reading& reading, Field field) {
  if (!debugTraceOn() && field.bytes != nullptr && field.fits<T>()) [[likely]] {
    const T value = field.value<T>();
    if (!field.overflows(value)) [[likely]]
      return value;
  }
  return readTraced<T>(source, reading, field.bytes, field.size, field.order, field.sign);
}

}  // namespace

void DataCnv::SwapEnds(unsigned char* target, const unsigned char* source, int length) {
  // These failures go without the usual first insert: SwapEnds.RefusesInOrderWithoutTheUsualFirstInsert.
  const auto refuse = [](const auto& detail, int line = __builtin_LINE()) {
    raiseBare<KelConversionException>(untracedSite(nullptr, "DataCnv::SwapEnds", kDataCnvHeaderPath, line),
                                      failures::kInternalError, detail);
  };
  if (source == nullptr) refuse("Null input pointer");
  if (target == nullptr) refuse("Null output buffer pointer");
  if (length <= 0) refuse(numbered("Invalid input length: ", length));
  // Forward and without a temporary, also where the two overlap: SwapEnds.MirrorsABufferThatIsSourceAndTarget.
  unsigned char* out = target + length;
  for (int i = 0; i < length; ++i)
    *--out = source[i];
}

PWFInt64 DataCnv::IntToInt64(const unsigned char* source, int size, ESign sign) {
  return read<PWFInt64>(this, kInt64, {source, size, integerEndian, sign});
}

PWFInt32 DataCnv::IntToInt32(const unsigned char* source, int size, ESign sign) {
  return read<PWFInt32>(this, kInt32, {source, size, integerEndian, sign});
}

PWFUInt64 DataCnv::UIntToUInt64(const unsigned char* source, int size) {
  return read<PWFUInt64>(this, kUInt64, {source, size, integerEndian, eSignNone});
}

PWFData DataCnv::IntToDec(const unsigned char* source, int size, int virtualDecimalPoint) {
  const FunctionTrace trace(this, "DataCnv::IntToDec", kDataCnvPath);
  if (source == nullptr) raiseInternalError(trace.site(), "Null input pointer");
  if (size <= 0) raiseInternalError(trace.site(), numbered("Invalid input size: ", size));
  const PWFInt64 number = IntToInt64(source, size, eSignLeadingIncluded);
  PWFData value = TextValue::make(DECIMAL, 0, [](unsigned short*) {});
  KelWstring& text = TextValue::text(value);
  Int64ToUString(number, text);
  // The minus counts as a position when the point is placed: Integers.ReadWithAScale.
  adjustDecimalForString(text, virtualDecimalPoint);
  return value;
}

double DataCnv::IntToDbl(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign) {
  const FunctionTrace trace(this, "DataCnv::IntToDbl", kDataCnvPath);
  if (source == nullptr) raiseInternalError(trace.site(), "Null input pointer");
  if (size <= 0) raiseInternalError(trace.site(), numbered("Invalid input size: ", size));
  const double number = sign == eSignLeadingIncluded ? static_cast<double>(IntToInt64(source, size, sign))
                                                     : static_cast<double>(UIntToUInt64(source, size));
  return core::scaledByTens(number, -std::int64_t{virtualDecimalPoint});
}
