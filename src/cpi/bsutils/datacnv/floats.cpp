#include <bit>
#include <cstdint>
#include <cstring>

#include "core/byteorder.hpp"
#include "core/hexfloat.hpp"
#include "core/scaling.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "support/support.hpp"
#include "values/textinplace.hpp"

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

constexpr int kFloatSize = 4;
constexpr int kDoubleSize = 8;

bool isFloatSize(int size) {
  return size == kFloatSize || size == kDoubleSize;
}

// The bits of a field of sizeof(Bits) bytes, as IEEE ones. Only those have a byte order: hexadecimal ones are big.
template <class Bits>
Bits load(const unsigned char* bytes, EFloatFmt format, EEndian order) {
  if (format == eFloatHexadecimal) [[likely]]
    return core::ieeeFromHex(core::loadBytes<Bits>(bytes, false));
  return core::loadBytes<Bits>(bytes, order == eEndianLittle);
}
double readFloat(const unsigned char* bytes, EFloatFmt format, EEndian order) {
  return std::bit_cast<float>(load<std::uint32_t>(bytes, format, order));
}
double readDouble(const unsigned char* bytes, EFloatFmt format, EEndian order) {
  return std::bit_cast<double>(load<std::uint64_t>(bytes, format, order));
}

template <class Bits>
void store(unsigned char* bytes, Bits bits, EFloatFmt format, EEndian order) {
  if (format == eFloatHexadecimal) [[likely]]
    return core::storeBytes(bytes, core::hexFromIeee(bits), false);
  core::storeBytes(bytes, bits, order == eEndianLittle);
}
void writeFloat(double value, unsigned char* bytes, EFloatFmt format, EEndian order) {
  // Rounded to nearest by the machine; beyond a float's range an infinity: Floats.WriteWhatIsTooLargeForTheField.
  store(bytes, std::bit_cast<std::uint32_t>(static_cast<float>(value)), format, order);
}
void writeDouble(double value, unsigned char* bytes, EFloatFmt format, EEndian order) {
  store(bytes, std::bit_cast<std::uint64_t>(value), format, order);
}

[[gnu::cold, gnu::noinline]] double readTraced(const KelLogSource* log, const unsigned char* source, int size,
                                               EFloatFmt format, EEndian order) {
  const FunctionTrace trace(log, "DataCnv::FltToDbl", kDataCnvPath);
  if (source == nullptr) raiseInternalError(trace.site(), "Null input pointer passed into DataCnv::FltToDbl");
  if (size <= 0) raiseInternalError(trace.site(), numbered("Invalid input size: ", size));
  if (!isFloatSize(size)) raiseInternalError(trace.site(), numbered("Invalid float size: ", size));
  return size == kFloatSize ? readFloat(source, format, order) : readDouble(source, format, order);
}

[[gnu::cold, gnu::noinline]] void writeTraced(const KelLogSource* log, double value, unsigned char* target, int size,
                                              EFloatFmt format, EEndian order) {
  const FunctionTrace trace(log, "DataCnv::FltFromDbl", kDataCnvPath);
  if (target == nullptr) raiseInternalError(trace.site(), "Null output buffer pointer");
  if (size <= 0) raiseInternalError(trace.site(), numbered("Invalid output buffer size: ", size));
  if (!isFloatSize(size)) raiseInternalError(trace.site(), numbered("Invalid float size: ", size));
  (size == kFloatSize ? writeFloat : writeDouble)(value, target, format, order);
}

}  // namespace

// The quick way first: a good field, and no trace.
double DataCnv::FltToDbl(const unsigned char* source, int size) {
  if (!debugTraceOn() && source != nullptr) [[likely]] {
    if (size == kDoubleSize) return readDouble(source, floatFormat, floatEndian);
    if (size == kFloatSize) return readFloat(source, floatFormat, floatEndian);
  }
  return readTraced(this, source, size, floatFormat, floatEndian);
}

void DataCnv::FltFromDbl(double value, unsigned char* target, int size) {
  if (!debugTraceOn() && target != nullptr) [[likely]] {
    if (size == kDoubleSize) return writeDouble(value, target, floatFormat, floatEndian);
    if (size == kFloatSize) return writeFloat(value, target, floatFormat, floatEndian);
  }
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
  adjustDecimalForString(number, -core::clampedPlaces(virtualDecimalPoint, number.length()));
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
