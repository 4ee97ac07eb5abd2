#include "core/tlog.hpp"

#include <algorithm>
#include <limits>
#include <memory>

#include "core/padding.hpp"
#include "cputils.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "support/emptystring.hpp"
#include "support/fastway.hpp"
#include "support/scratch.hpp"
#include "support/support.hpp"
#include "values/textinplace.hpp"

// The fields of transaction logs as the values of a message. core/tlog knows the half bytes, their signs and fillers.
// What is added here: trace and failures, pads that come off before or after the reading, the code page through which a
// string of digits is written, and the reversal of fields that are stored the other way round.
//
// The readers have a fast way, which takes sixteen digits at a time straight from the field, and a general way, which
// unpacks the field and looks at one half byte after another, as the trace shows it. Both read the same texts and
// refuse the same fields. The writers have one way.
using namespace oxr;

namespace {

constexpr std::size_t kUsualText = 128;  // units of a field's text that need no heap

// An empty field for a size below 0.
std::size_t fieldSize(int size) {
  return static_cast<std::size_t>(std::max(size, 0));
}

// The entry of a reading member shows how many bytes are read, and in which order.
[[gnu::always_inline]] inline FunctionTrace readingTrace(const KelLogSource* source, const char* function, int size,
                                                         EEndian endian) {
  const int order = endian;
  return FunctionTrace(source, function, kDataCnvPath, [&](KelLog::FastItem& item) { item << size << order; });
}

// A writing member traces without a log source, and yet its failures are the object's.
FailureSite siteOf(const KelLogSource* source, const FunctionTrace& trace, int line = __builtin_LINE()) {
  FailureSite site = trace.site(line);
  site.source = source;
  return site;
}

// Puts text before what a target holds, which as a rule is nothing.
void insertAtStart(KelWstring& target, UnitView text) {
  const auto length = static_cast<unsigned>(text.size());
  if (target.length() == 0)
    target.assignInternal(text.data(), length, 0);
  else
    target.insertInternal(0, text.data(), length, 0);
}

// "0" to "9", "A" to "F". REQUIRES: a half byte.
unsigned short hexDigit(unsigned halfByte) {
  return static_cast<unsigned short>(halfByte + (halfByte < 10 ? '0' : 'A' - 10));
}

core::TlogField fieldOf(const unsigned char* source, int size, EEndian endian) {
  return core::TlogField({source, fieldSize(size)}, endian == eEndianLittle);
}

// Serves every field.
inline bool readStringFast(const unsigned char* source, int size, EEndian endian, KelWstring& target) {
  if (source == nullptr) return false;
  const core::TlogField field = fieldOf(source, size, endian);
  Scratch<unsigned short, kUsualText> buffer(field.textRoom());
  insertAtStart(target, field.hexText(buffer.data()));
  return true;
}

[[gnu::cold, gnu::noinline]] void readStringGeneral(DataCnv& cnv, const unsigned char* source, int size, EEndian endian,
                                                    KelWstring& target) {
  const auto trace = readingTrace(
      &cnv, "DataCnv::TLOGPckdStrToStr( const unsigned char* source, PWFInt32 size, EEndian endian)", size, endian);
  const std::unique_ptr<unsigned char[]> halfBytes(cnv.getUnpackedBuffer(source, size, endian));
  if (halfBytes == nullptr) {
    target.assign(EMPTYSTRING);
    return;
  }
  Scratch<unsigned short, kUsualText> text(2 * fieldSize(size));
  std::transform(halfBytes.get(), halfBytes.get() + text.size(), text.data(), hexDigit);
  insertAtStart(target, UnitView(text.data(), text.size()));
}

// Serves every field that is a number.
inline bool readDecimalFast(const unsigned char* source, int size, EEndian endian, KelWstring& target) {
  if (source == nullptr) return false;
  const core::TlogField field = fieldOf(source, size, endian);
  Scratch<unsigned short, kUsualText> buffer(field.textRoom());
  const auto text = field.decimalText(buffer.data());
  if (!text) return false;
  insertAtStart(target, *text);
  return true;
}

[[gnu::cold, gnu::noinline]] void readDecimalGeneral(DataCnv& cnv, const unsigned char* source, int size,
                                                     EEndian endian, KelWstring& target) {
  const auto trace = readingTrace(&cnv,
                                  "DataCnv::TLOGPckdDecToDec(const unsigned char* source, PWFString& dest, PWFInt32 "
                                  "size, EEndian endian)",
                                  size, endian);
  const std::unique_ptr<unsigned char[]> halfBytes(cnv.getUnpackedBuffer(source, size, endian));
  if (halfBytes == nullptr) {
    target.assign(EMPTYSTRING);
    return;
  }
  Scratch<unsigned short, kUsualText> text(1 + 2 * fieldSize(size));
  text.data()[0] = '-';
  std::size_t length = 1;
  bool negative = false;
  bool hasFiller = false;
  for (std::size_t i = 0; i < 2 * fieldSize(size); ++i) {
    // A filler is the first half byte or none. The minus comes first, or directly after the filler.
    const unsigned char halfByte = halfBytes[i];
    if (halfByte <= 9)
      text.data()[length++] = hexDigit(halfByte);
    else if (halfByte == core::kTlogMinus && (i == 0 || (i == 1 && hasFiller)))
      negative = true;
    else if (halfByte == core::kTlogFiller && i == 0)
      hasFiller = true;
    else
      raise<KelConversionException>(trace.site(), failures::kInvalidData, "TLOG packed decimal",
                                    CPUtils::binaryDump(source, size));
  }
  insertAtStart(target, UnitView(text.data(), length).substr(negative ? 0 : 1));
}

}  // namespace

// The caller owns what is returned, which is why it is no smart pointer; it holds a half byte in each of its bytes.
unsigned char* DataCnv::getUnpackedBuffer(const unsigned char* source, int size, EEndian endian) {
  const auto trace = readingTrace(
      this, "DataCnv::getUnpackedBuffer ( const unsigned char* source, PWFInt32 size, EEndian endian)", size, endian);
  if (source == nullptr) return nullptr;
  const std::size_t bytes = fieldSize(size);
  auto halfBytes = std::make_unique<unsigned char[]>(2 * bytes);
  for (std::size_t i = 0; i < bytes; ++i) {
    const unsigned char byte = source[endian == eEndianLittle ? bytes - 1 - i : i];
    halfBytes[2 * i] = LeftNibble(byte);
    halfBytes[2 * i + 1] = RightNibble(byte);
  }
  return halfBytes.release();
}

void DataCnv::TLOGPckdStrToStr(const unsigned char* source, KelWstring& target, int size, EEndian endian) {
  if (wentFast([&] { return readStringFast(source, size, endian, target); })) [[likely]]
    return;
  readStringGeneral(*this, source, size, endian, target);
}

PWFData DataCnv::TLOGPckdStrToStr(const unsigned char* source, int size, EEndian endian) {
  const auto trace = readingTrace(
      this, "DataCnv::TLOGPckdStrToStr( const unsigned char* source, PWFInt32 size, EEndian endian)", size, endian);
  PWFData value = TextInPlace::make(STRING);
  TLOGPckdStrToStr(source, TextInPlace::text(value), size, endian);
  TextInPlace::traceMade(value);
  return value;
}

void DataCnv::TLOGFLPckdStrToStr(const unsigned char* source, KelWstring& target, int size, EEndian endian,
                                 ETrimType trimType, EJustification justification, unsigned short padChar,
                                 bool padCharIsUnicode) {
  const auto trace = readingTrace(this, "DataCnv::TLOGFLPckdStrToStr", size, endian);
  TLOGPckdStrToStr(source, target, size, endian);
  if (trimType != eTrimPadding || padCharIsUnicode || padChar > 15) return;
  // An ASCII code, and yet handed over as a value in the code page: Tlog.PadsComeOffInMemoryOrder.
  TrimData(target, eTrimPadding, justification, hexDigit(padChar), false);
}

void DataCnv::TLOGPckdDecToDec(const unsigned char* source, KelWstring& target, int size, EEndian endian) {
  if (wentFast([&] { return readDecimalFast(source, size, endian, target); })) [[likely]]
    return;
  readDecimalGeneral(*this, source, size, endian, target);
}

PWFData DataCnv::TLOGPckdDecToDec(const unsigned char* source, int size, EEndian endian) {
  const auto trace = readingTrace(
      this, "DataCnv::TLOGPckdDecToDec(const unsigned char* source, PWFInt32 size, EEndian endian)", size, endian);
  PWFData value = TextInPlace::make(DECIMAL);
  TLOGPckdDecToDec(source, TextInPlace::text(value), size, endian);
  TextInPlace::traceMade(value);
  return value;
}

void DataCnv::TLOGFLPckdDecToDec(const unsigned char* source, KelWstring& target, int size, EEndian endian,
                                 ETrimType trimType, EJustification justification, unsigned short padChar,
                                 bool padCharIsUnicode) {
  const auto trace = readingTrace(this, "DataCnv::TLOGFLPckdDecToDec", size, endian);
  if (source != nullptr && trimType == eTrimPadding && !padCharIsUnicode) {
    // Trimmed as it lies in memory, before any reversal: Tlog.PadsComeOffInMemoryOrder.
    const std::span<const unsigned char> field(source, fieldSize(size));
    const auto pad = static_cast<unsigned char>((padChar & 0x0F) * 0x11);  // the half byte twice
    const std::size_t leading = justification == eJustifyRight ? core::leadingPads(field, pad) : 0;
    const std::size_t trailing = justification == eJustifyLeft ? core::trailingPads(field, pad) : 0;
    source += leading;
    size -= static_cast<int>(leading + trailing);
  }
  TLOGPckdDecToDec(source, target, size, endian);
}

unsigned char* DataCnv::TLOGPWFDataToPckdDecimal(PWFData& value, unsigned char* target, int size, EEndian endian,
                                                 bool fixed, int& written) {
  const FunctionTrace trace(nullptr, "DataCnv::TLOGPWFDataToPckdDecimal", kDataCnvPath);
  if (target == nullptr) return nullptr;
  const unsigned short* const text = value.getDecimalValue();
  const UnitView units(text, static_cast<std::size_t>(value.getDecimalLength()));
  const core::TlogFault fault = core::packTlogDecimal(units, {target, fieldSize(size)}, fixed);
  if (fault == core::TlogFault::fieldTooSmall)
    raise<KelConversionException>(siteOf(this, trace), failures::kOutOfBounds, "Decimal", "TLOG Packed Decimal", text);
  if (fault == core::TlogFault::notADigit)
    raise<KelConversionException>(siteOf(this, trace), failures::kInvalidData, "decimal", text);
  written = std::max(size, 0);
  // In place, so that the second half becomes the mirror image of the first: Tlog.LittleEndianWritesAMirrorImage.
  if (endian == eEndianLittle) SwapEnds(target, target, written);
  return target;
}

unsigned char* DataCnv::TLOGPWFDataToPckdStr(const PWFData& value, unsigned char* target, int size, EEndian endian) {
  const FunctionTrace trace(
      nullptr,
      "DataCnv::TLOGPWFDataToPckdStr ( const PWFData& inputData, unsigned char* target, PWFInt32 size, EEndian endian "
      ")",
      kDataCnvPath);
  if (target == nullptr) return nullptr;
  static_cast<void>(value.getStringValue());  // refuses another type under its own name
  const PWFString& text = value.getPWFStringValue();
  const std::size_t bytes = fieldSize(size);
  // Two characters for each byte. Those that the text does not have count as zero.
  Scratch<unsigned char, 64> characters(2 * bytes);
  std::fill_n(characters.data(), characters.size(), static_cast<unsigned char>(0));
  // What the code page can't express is not looked at: what came out so far counts.
  int room = static_cast<int>(std::min<std::size_t>(characters.size(), std::numeric_limits<int>::max()));
  fromUnicodeString(text, characters.data(), room);
  core::packTlogString({characters.data(), characters.size()}, {target, bytes});
  // In place, as for the decimal.
  if (endian == eEndianLittle) SwapEnds(target, target, size);
  return target;
}
