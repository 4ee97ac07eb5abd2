#include <bit>
#include <cstdint>
#include <cstring>

#include "core/byteorder.hpp"
#include "core/hexfloat.hpp"
#include "core/scaling.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "support/fastway.hpp"
#include "support/support.hpp"
#include "values/textinplace.hpp"

// Floats of 4 and 8 bytes in the fields of a message, IEEE ones and hexadecimal ones.
//
// A field is a bit pattern in the byte order of its format; a pattern is made an IEEE one, which is a double or float
// of this machine. Writing goes the same way back. What does not fit is clamped on the way or becomes an infinity; no
// value of a float is ever refused. How patterns of the two formats become each other is told in core/hexfloat.hpp.
using namespace oxr;

namespace {

// The bit pattern of a float or double.
template <class Bits>
Bits bitsOf(const void* number) {
  Bits bits;
  std::memcpy(&bits, number, sizeof bits);
  return bits;
}

// A double as two words of 32 bits, in the order that the exported routines are told: exactly eEndianBig has the high
// word first, any other order the low one. Nothing is swapped inside a word, so this is not the byte order of a field:
// Checks.Hold.
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

constexpr int kFloatSize = 4;   // bytes
constexpr int kDoubleSize = 8;  // bytes

bool isFloatSize(int size) {
  return size == kFloatSize || size == kDoubleSize;
}

// The bits of a field of sizeof(Bits) bytes, as IEEE ones. Only IEEE fields come in two byte orders; a hexadecimal
// field has its most significant byte first.
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
  // The machine rounds to nearest and makes an infinity of what is too large for a float, which in the hexadecimal
  // format is a large number: Floats.ReadAndWriteEachFormat.
  store(bytes, std::bit_cast<std::uint32_t>(static_cast<float>(value)), format, order);
}
void writeDouble(double value, unsigned char* bytes, EFloatFmt format, EEndian order) {
  store(bytes, std::bit_cast<std::uint64_t>(value), format, order);
}

// Serves every field of a good size.
[[gnu::always_inline]] inline bool readFloatFast(const unsigned char* source, int size, EFloatFmt format, EEndian order,
                                                 double& value) {
  if (source == nullptr) return false;
  if (size == kDoubleSize)
    value = readDouble(source, format, order);
  else if (size == kFloatSize)
    value = readFloat(source, format, order);
  else
    return false;
  return true;
}

[[gnu::cold, gnu::noinline]] double readFloatGeneral(const KelLogSource* log, const unsigned char* source, int size,
                                                     EFloatFmt format, EEndian order) {
  const FunctionTrace trace(log, "DataCnv::FltToDbl", kDataCnvPath);
  if (source == nullptr) raiseInternalError(trace.site(), "Null input pointer passed into DataCnv::FltToDbl");
  if (size <= 0) raiseInternalError(trace.site(), numbered("Invalid input size: ", size));
  if (!isFloatSize(size)) raiseInternalError(trace.site(), numbered("Invalid float size: ", size));
  return size == kFloatSize ? readFloat(source, format, order) : readDouble(source, format, order);
}

// Serves every field of a good size.
[[gnu::always_inline]] inline bool writeFloatFast(double value, unsigned char* target, int size, EFloatFmt format,
                                                  EEndian order) {
  if (target == nullptr) return false;
  if (size == kDoubleSize)
    writeDouble(value, target, format, order);
  else if (size == kFloatSize)
    writeFloat(value, target, format, order);
  else
    return false;
  return true;
}

[[gnu::cold, gnu::noinline]] void writeFloatGeneral(const KelLogSource* log, double value, unsigned char* target,
                                                    int size, EFloatFmt format, EEndian order) {
  const FunctionTrace trace(log, "DataCnv::FltFromDbl", kDataCnvPath);
  if (target == nullptr) raiseInternalError(trace.site(), "Null output buffer pointer");
  if (size <= 0) raiseInternalError(trace.site(), numbered("Invalid output buffer size: ", size));
  if (!isFloatSize(size)) raiseInternalError(trace.site(), numbered("Invalid float size: ", size));
  (size == kFloatSize ? writeFloat : writeDouble)(value, target, format, order);
}

}  // namespace

double DataCnv::FltToDbl(const unsigned char* source, int size) {
  double value;
  if (wentFast([&] { return readFloatFast(source, size, floatFormat, floatEndian, value); })) [[likely]]
    return value;
  return readFloatGeneral(this, source, size, floatFormat, floatEndian);
}

void DataCnv::FltFromDbl(double value, unsigned char* target, int size) {
  if (wentFast([&] { return writeFloatFast(value, target, size, floatFormat, floatEndian); })) [[likely]]
    return;
  writeFloatGeneral(this, value, target, size, floatFormat, floatEndian);
}

PWFData DataCnv::FltToDec(const unsigned char* source, int size, int virtualDecimalPoint) {
  const FunctionTrace trace(this, "DataCnv::FltToDec", kDataCnvPath);
  if (source == nullptr) raiseInternalError(trace.site(), "Null input pointer");
  if (size <= 0) raiseInternalError(trace.site(), numbered("Invalid input size: ", size));
  PWFData value = TextInPlace::make(DECIMAL);
  KelWstring& text = TextInPlace::text(value);
  doubleToUString(FltToDbl(source, size), text, false);
  // Without a scale a whole number keeps its point at the end, "15."; with one, a minus counts as a position. Both
  // stay: Floats.ReadAndWriteDecimals.
  adjustDecimalForString(text, virtualDecimalPoint);
  TextInPlace::traceMade(value);
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
