#include <bit>
#include <cstdint>
#include <cstring>

#include "core/byteorder.hpp"
#include "core/hexfloat.hpp"
#include "core/scaling.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "raise.hpp"
#include "textvalue.hpp"
#include "trace.hpp"

using namespace oxr;

namespace {

// The bit pattern of a float or double.
template <class Bits>
Bits bitsOf(const void* number) {
  Bits bits;
  std::memcpy(&bits, number, sizeof bits);
  return bits;
}

// A double as two words in the order that the format routines are told: exactly eEndianBig has the high word first, all
// else the low one. Inside a word nothing is swapped.
struct WordPair {
  std::uint32_t words[2];
  bool highFirst;

  WordPair(const double* number, EEndian order) : highFirst(order == eEndianBig) {
    std::memcpy(words, number, sizeof words);
  }
  std::uint64_t bits() const { return std::uint64_t{words[!highFirst]} << 32 | words[highFirst]; }
  void store(std::uint64_t bits, double* number) {
    words[!highFirst] = static_cast<std::uint32_t>(bits >> 32);
    words[highFirst] = static_cast<std::uint32_t>(bits);
    std::memcpy(number, words, sizeof words);
  }
};

// How a float field is written. Not for long: two settings of an object in registers.
struct Format {
  EFloatFmt format;
  EEndian order;

  bool isHexadecimal() const { return format == eFloatHexadecimal; }
  bool isLittle() const { return order == eEndianLittle; }
  static bool isSize(int size) { return size == 4 || size == 8; }

  template <class Bits>
  Bits load(const unsigned char* bytes) const {
    const Bits bits = core::loadBytes<Bits>(bytes, isLittle());
    return isHexadecimal() ? core::ieeeFromHex(bits) : bits;
  }
  double read(const unsigned char* bytes, int size) const {
    if (size == 4) return std::bit_cast<float>(load<std::uint32_t>(bytes));
    return std::bit_cast<double>(load<std::uint64_t>(bytes));
  }

  template <class Bits>
  void store(unsigned char* bytes, Bits bits) const {
    core::storeBytes(bytes, isHexadecimal() ? core::hexFromIeee(bits) : bits, isLittle());
  }
  void write(unsigned char* bytes, int size, double value) const {
    // Rounded to nearest by the machine; beyond a float's range an infinity: Floats.WriteWhatIsTooLargeForTheField.
    if (size == 4) return store(bytes, std::bit_cast<std::uint32_t>(static_cast<float>(value)));
    store(bytes, std::bit_cast<std::uint64_t>(value));
  }
};

[[gnu::cold, gnu::noinline]] double readTraced(const KelLogSource* log, const unsigned char* source, int size,
                                               EFloatFmt floatFormat, EEndian floatEndian) {
  const FunctionTrace trace(log, "DataCnv::FltToDbl", kDataCnvPath);
  if (source == nullptr) raiseInternalError(trace.site(), "Null input pointer passed into DataCnv::FltToDbl");
  if (size <= 0) raiseInternalError(trace.site(), numbered("Invalid input size: ", size));
  if (!Format::isSize(size)) raiseInternalError(trace.site(), numbered("Invalid float size: ", size));
  return Format{floatFormat, floatEndian}.read(source, size);
}

[[gnu::cold, gnu::noinline]] void writeTraced(const KelLogSource* log, double value, unsigned char* target, int size,
                                              EFloatFmt floatFormat, EEndian floatEndian) {
  const FunctionTrace trace(log, "DataCnv::FltFromDbl", kDataCnvPath);
  if (target == nullptr) raiseInternalError(trace.site(), "Null output buffer pointer");
  if (size <= 0) raiseInternalError(trace.site(), numbered("Invalid output buffer size: ", size));
  if (!Format::isSize(size)) raiseInternalError(trace.site(), numbered("Invalid float size: ", size));
  Format{floatFormat, floatEndian}.write(target, size, value);
}

}  // namespace

double DataCnv::FltToDbl(const unsigned char* source, int size) {
  if (!debugTraceOn() && source != nullptr && Format::isSize(size)) [[likely]]
    return Format{floatFormat, floatEndian}.read(source, size);
  return readTraced(this, source, size, floatFormat, floatEndian);
}

void DataCnv::FltFromDbl(double value, unsigned char* target, int size) {
  if (!debugTraceOn() && target != nullptr && Format::isSize(size)) [[likely]]
    return Format{floatFormat, floatEndian}.write(target, size, value);
  writeTraced(this, value, target, size, floatFormat, floatEndian);
}

PWFData DataCnv::FltToDec(const unsigned char* source, int size, int virtualDecimalPoint) {
  const FunctionTrace trace(this, "DataCnv::FltToDec", kDataCnvPath);
  if (source == nullptr) raiseInternalError(trace.site(), "Null input pointer");
  if (size <= 0) raiseInternalError(trace.site(), numbered("Invalid input size: ", size));
  PWFData value = TextValue::make(DECIMAL, 0, [](unsigned short*) {});
  KelWstring& text = TextValue::text(value);
  doubleToUString(FltToDbl(source, size), text, false);
  // Without a scale a whole number keeps its point at the end, "15."; with one, a minus counts as a position. Both
  // stay: Floats.ReadAsDecimals.
  adjustDecimalForString(text, virtualDecimalPoint);
  return value;
}

void DataCnv::FltFromDec(const unsigned short* text, unsigned char* target, int size, int virtualDecimalPoint) {
  const FunctionTrace trace(this, "DataCnv::FltFromDec", kDataCnvPath);
  if (text == nullptr) raiseInternalError(trace.site(), "Null input pointer");
  if (target == nullptr) raiseInternalError(trace.site(), "Null output buffer pointer");
  if (size <= 0) raiseInternalError(trace.site(), numbered("Invalid output buffer size: ", size));
  KelBufferedWstring<16u> number;
  number.insert(0, text);
  adjustDecimalForString(number, -core::settledPlaces(virtualDecimalPoint, number.length()));
  FltFromDbl(PWFStringTodouble(number), target, size);
}

void DataCnv::ConvertFloatHFPtoIEEE(float* source, float* target) {
  const std::uint32_t bits = core::ieeeFromHex(bitsOf<std::uint32_t>(source));
  std::memcpy(target, &bits, sizeof bits);
}

void DataCnv::ConvertFloatIEEEtoHFP(float* source, float* target) {
  const std::uint32_t bits = core::hexFromIeee(bitsOf<std::uint32_t>(source));
  std::memcpy(target, &bits, sizeof bits);
}

void DataCnv::ConvertDoubleHFPtoIEEE(double* source, double* target, EEndian order) {
  WordPair pair(source, order);
  pair.store(core::ieeeFromHex(pair.bits()), target);
}

void DataCnv::ConvertDoubleIEEEtoHFP(double* source, double* target, EEndian order) {
  WordPair pair(source, order);
  pair.store(core::hexFromIeee(pair.bits()), target);
}
