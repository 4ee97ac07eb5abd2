#include <algorithm>
#include <cstring>
#include <limits>
#include <span>

#include "core/overpunch.hpp"
#include "core/padding.hpp"
#include "datacnv/padchar.hpp"
#include "datacnv/sourcepath.hpp"
#include "datacnv/textedit.hpp"
#include "dataconv.hpp"
#include "raise.hpp"
#include "scratch.hpp"
#include "textvalue.hpp"
#include "trace.hpp"

using namespace oxr;

namespace {

constexpr std::size_t kUsualField = 64;  // bytes of a field that need no heap

// A text in the code page of a converter.
class EncodedText {
 public:
  EncodedText(DataCnv& converter, const KelWstring& text)
      : scratch_(std::size_t{text.length()} * static_cast<unsigned>(converter.getConverter()->getMaxBytesPerChar()) +
                 1) {
    constexpr std::size_t kMaxSize = std::numeric_limits<int>::max();
    size_ = static_cast<int>(std::min(scratch_.size(), kMaxSize));
    converter.fromUnicodeString(text, scratch_.data(), size_);
  }
  std::span<const unsigned char> bytes() { return {scratch_.data(), static_cast<std::size_t>(size_)}; }

 private:
  Scratch<unsigned char, kUsualField> scratch_;
  int size_;
};

// Takes the sign out of the byte that carries it, in a private copy of the field.
bool mendSignByte(const FailureSite& site, core::Overpunch code, unsigned char& byte) {
  const core::SignByte read = core::readOverpunch(code, byte);
  if (!read.valid) [[unlikely]]
    raise<KelConversionException>(site, failures::kInvalidData, failures::kInvalidData.text,
                                  code == core::Overpunch::ebcdic ? "External decimal - Invalid Positive sign code"
                                                                  : "External decimal - Custom Sign EBCDIC",
                                  static_cast<int>(byte));
  byte = read.digit;
  return read.negative;
}

}  // namespace

void DataCnv::ExtDecTrimData(KelWstring& text, EJustification justification, unsigned short padChar,
                             bool padCharIsUnicode) {
  if (padCharIsUnicode) {
    TrimData(text, eTrimPadding, justification, padChar, true);
  } else {
    EncodedText encoded(*this, text);
    std::span<const unsigned char> bytes = encoded.bytes();
    const unsigned char pad = padCharBytes(padChar)[0];
    // Without a justification the front is trimmed, where TrimData trims nothing: ExternalDecimal.TrimsFields.
    bytes = justification == eJustifyLeft ? bytes.first(bytes.size() - core::trailingPads(bytes, pad))
                                          : bytes.subspan(core::leadingPads(bytes, pad));
    text.eraseInternal(0, KelWstring::npos);
    if (!bytes.empty()) toUnicodeString(text, bytes.data(), static_cast<int>(bytes.size()));
  }
  if (text.length() == 0) setToZero(text);
}

void DataCnv::ExtDecPadData(KelWstring& text, int targetLength, int paddingBytes, EJustification justification,
                            unsigned short padChar, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::ExtDecPadData", kDataCnvPath);
  const std::int64_t missing = std::int64_t{targetLength} - text.length();
  if (missing == 0) return;
  const int padSize = GetPadCharLen(padChar);
  if (padSize == 0 || paddingBytes % padSize != 0)
    raise<KelParserException>(trace.site(), failures::kInvalidPaddingSize, failures::kInvalidPaddingSize.text,
                              padCharDump(padChar), padSize, targetLength, ccsid);
  const int count = static_cast<int>(std::clamp<std::int64_t>(missing, 0, std::numeric_limits<int>::max()));
  if (padCharIsUnicode) {
    PadData(text, count, justification, padChar, true);
    return;
  }
  if (justification != eJustifyLeft && justification != eJustifyRight) {
    trace.fact("Possible internal error, eJustifyNone not handled");
    return;
  }
  EncodedText encoded(*this, text);
  const auto bytes = encoded.bytes();
  Scratch<unsigned char, kUsualField> field(bytes.size() + static_cast<std::size_t>(count));
  unsigned char* const data = justification == eJustifyLeft ? field.data() : field.data() + count;
  unsigned char* const pads = justification == eJustifyLeft ? field.data() + bytes.size() : field.data();
  std::copy(bytes.begin(), bytes.end(), data);
  std::fill_n(pads, count, padCharBytes(padChar)[0]);
  if (field.size() != 0) toUnicodeString(text, field.data(), static_cast<int>(field.size()));
}

// Decodes a field and takes its sign off; the result tells whether that was negative. An included sign is a matter of
// bytes, mended ahead of the decoding; a separate one is a matter of text.
bool DataCnv::externalDigits(const FailureSite& site, KelWstring& text, const unsigned char* source, int size,
                             ESign sign, bool customSign, const unsigned short* positiveSignTable,
                             const unsigned short* negativeSignTable) {
  bool negative = false;
  if (sign != eSignLeadingIncluded && sign != eSignTrailingIncluded) {
    toUnicodeString(text, source, size);
    ExtDecRemoveSign(text, sign, positiveSignTable, negativeSignTable, negative);
    return negative;
  }
  const core::Overpunch code = IsCcsidEBCDIC() ? core::Overpunch::ebcdic
                               : customSign    ? core::Overpunch::letters
                                               : core::Overpunch::ascii;
  Scratch<unsigned char, kUsualField> field(static_cast<std::size_t>(size));
  std::memcpy(field.data(), source, field.size());
  negative = mendSignByte(site, code, field.data()[sign == eSignLeadingIncluded ? 0 : size - 1]);
  toUnicodeString(text, field.data(), size);
  return negative;
}

PWFData DataCnv::ExtDecToDec(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign,
                             EJustification justification, int padChar, bool padCharIsUnicode, bool customSign,
                             const unsigned short* positiveSignTable, const unsigned short* negativeSignTable) {
  const FunctionTrace trace(this, "DataCnv::ExtDecToDec", kDataCnvPath);
  if (source == nullptr)
    raise<KelConversionException>(trace.site(), failures::kInternalError, failures::kInternalError.text,
                                  "Null input pointer");
  if (size <= 0)
    raise<KelConversionException>(trace.site(), failures::kInternalError, failures::kInternalError.text,
                                  numbered("Invalid external decimal size: ", size));
  PWFData value = TextValue::make(DECIMAL, 0, [](unsigned short*) {});
  KelWstring& text = TextValue::text(value);
  const bool negative =
      externalDigits(trace.site(), text, source, size, sign, customSign, positiveSignTable, negativeSignTable);
  ExtDecTrimData(text, justification, static_cast<unsigned short>(padChar), padCharIsUnicode);
  adjustDecimalForString(text, virtualDecimalPoint);
  validateDecimal(text, sign);
  // Behind the scale, unlike a packed decimal's, so that digits that are few get their zero: ExternalDecimal.Reads.
  if (negative) insertUnit(text, 0, '-');
  return value;
}
