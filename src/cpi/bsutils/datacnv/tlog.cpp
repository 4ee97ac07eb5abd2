#include "core/tlog.hpp"

#include <algorithm>
#include <limits>
#include <memory>

#include "core/padding.hpp"
#include "cputils.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "support/emptystring.hpp"
#include "support/scratch.hpp"
#include "support/support.hpp"
#include "values/textinplace.hpp"

using namespace oxr;

namespace {

constexpr std::size_t kUsualText = 128;  // units of a field's text that need no heap

std::size_t fieldSize(int size) {
  return static_cast<std::size_t>(std::max(size, 0));
}

// The entry of a reading member shows how much is read, and in which order.
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

// Puts text in front of what a target holds, which as a rule is nothing.
void insertInFront(KelWstring& target, UnitView text) {
  const auto length = static_cast<unsigned>(text.size());
  if (target.length() == 0)
    target.assignInternal(text.data(), length, 0);
  else
    target.insertInternal(0, text.data(), length, 0);
}

// The pad character of a half byte; nothing above 15.
std::optional<unsigned short> padCharacter(unsigned short halfByte) {
  if (halfByte > 15) return std::nullopt;
  return static_cast<unsigned short>(halfByte + (halfByte < 10 ? '0' : 'A' - 10));
}

// The readers take the half bytes straight from the field; a trace shows the unpacking all the same.
void traceUnpacking(DataCnv& cnv, const unsigned char* source, int size, EEndian endian) {
  if (debugTraceOn()) const std::unique_ptr<unsigned char[]> unpacked(cnv.getUnpackedBuffer(source, size, endian));
}

}  // namespace

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
  const auto trace = readingTrace(
      this, "DataCnv::TLOGPckdStrToStr( const unsigned char* source, PWFInt32 size, EEndian endian)", size, endian);
  traceUnpacking(*this, source, size, endian);
  if (source == nullptr) {
    target.assign(EMPTYSTRING);
    return;
  }
  const core::TlogField field({source, fieldSize(size)}, endian == eEndianLittle);
  Scratch<unsigned short, kUsualText> text(field.textRoom());
  insertInFront(target, field.hexText(text.data()));
}

PWFData DataCnv::TLOGPckdStrToStr(const unsigned char* source, int size, EEndian endian) {
  const auto trace = readingTrace(
      this, "DataCnv::TLOGPckdStrToStr( const unsigned char* source, PWFInt32 size, EEndian endian)", size, endian);
  PWFData value = TextValue::make(STRING, 0, [](unsigned short*) {});
  TLOGPckdStrToStr(source, TextValue::text(value), size, endian);
  return value;
}

void DataCnv::TLOGFLPckdStrToStr(const unsigned char* source, KelWstring& target, int size, EEndian endian,
                                 ETrimType trimType, EJustification justification, unsigned short padChar,
                                 bool padCharIsUnicode) {
  const auto trace = readingTrace(this, "DataCnv::TLOGFLPckdStrToStr", size, endian);
  TLOGPckdStrToStr(source, target, size, endian);
  const auto pad = padCharacter(padChar);
  if (trimType != eTrimPadding || padCharIsUnicode || !pad) return;
  // An ASCII code, and yet handed over as a value in the code page: Tlog.StringPadIsAnAsciiCodeInTheCodePage.
  TrimData(target, eTrimPadding, justification, *pad, false);
}

void DataCnv::TLOGPckdDecToDec(const unsigned char* source, KelWstring& target, int size, EEndian endian) {
  const auto trace = readingTrace(this,
                                  "DataCnv::TLOGPckdDecToDec(const unsigned char* source, PWFString& dest, PWFInt32 "
                                  "size, EEndian endian)",
                                  size, endian);
  traceUnpacking(*this, source, size, endian);
  if (source == nullptr) {
    target.assign(EMPTYSTRING);
    return;
  }
  const core::TlogField field({source, fieldSize(size)}, endian == eEndianLittle);
  Scratch<unsigned short, kUsualText> buffer(field.textRoom());
  const auto text = field.decimalText(buffer.data());
  if (!text)
    raise<KelConversionException>(trace.site(), failures::kInvalidData, "TLOG packed decimal",
                                  CPUtils::binaryDump(source, size));
  insertInFront(target, *text);
}

PWFData DataCnv::TLOGPckdDecToDec(const unsigned char* source, int size, EEndian endian) {
  const auto trace = readingTrace(
      this, "DataCnv::TLOGPckdDecToDec(const unsigned char* source, PWFInt32 size, EEndian endian)", size, endian);
  PWFData value = TextValue::make(DECIMAL, 0, [](unsigned short*) {});
  TLOGPckdDecToDec(source, TextValue::text(value), size, endian);
  return value;
}

void DataCnv::TLOGFLPckdDecToDec(const unsigned char* source, KelWstring& target, int size, EEndian endian,
                                 ETrimType trimType, EJustification justification, unsigned short padChar,
                                 bool padCharIsUnicode) {
  const auto trace = readingTrace(this, "DataCnv::TLOGFLPckdDecToDec", size, endian);
  if (source != nullptr && trimType == eTrimPadding && !padCharIsUnicode) {
    // Trimmed as it lies in memory, before any reversal: Tlog.DecimalPadsComeOffInMemoryOrder.
    const std::span<const unsigned char> field(source, fieldSize(size));
    const auto pad = static_cast<unsigned char>((padChar & 0x0F) * 0x11);
    const std::size_t inFront = justification == eJustifyRight ? core::leadingPads(field, pad) : 0;
    const std::size_t behind = justification == eJustifyLeft ? core::trailingPads(field, pad) : 0;
    source += inFront;
    size -= static_cast<int>(inFront + behind);
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
  // Characters that the text does not have count as zero.
  Scratch<unsigned char, 64> characters(2 * bytes);
  std::fill_n(characters.data(), characters.size(), static_cast<unsigned char>(0));
  int room = static_cast<int>(std::min<std::size_t>(characters.size(), std::numeric_limits<int>::max()));
  fromUnicodeString(text, characters.data(), room);
  core::packTlogString({characters.data(), characters.size()}, {target, bytes});
  // As for the decimal.
  if (endian == eEndianLittle) SwapEnds(target, target, size);
  return target;
}
