#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <span>

#include "codepage/codepage.hpp"
#include "core/externaldigits.hpp"
#include "core/externalword.hpp"
#include "core/numbertextread.hpp"
#include "core/numbertextwrite.hpp"
#include "core/padding.hpp"
#include "datacnv/externalform.hpp"
#include "datacnv/padchar.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/signform.hpp"
#include "datacnv/sourcepath.hpp"
#include "datacnv/textedit.hpp"
#include "dataconv.hpp"
#include "support/scratch.hpp"
#include "support/support.hpp"
#include "values/textinplace.hpp"

using namespace oxr;

namespace {

constexpr std::size_t kUsualField = 64;  // bytes of a field that need no heap

core::PadPlace padPlace(EJustification justification) {
  if (justification == eJustifyRight) return core::PadPlace::front;
  return justification == eJustifyLeft ? core::PadPlace::behind : core::PadPlace::none;
}

// The value of a number with `places` of its digits behind the point, zeros in front where they are too few.
PWFData decimalValue(const core::ExternalDigits& number, std::uint32_t places) {
  const std::size_t count = number.digits.size();
  const std::size_t zeros = places < count ? 0 : places - count + 1;
  const std::size_t length = number.negative + zeros + count + (places != 0);
  return TextValue::make(DECIMAL, length, [&](unsigned short* out) {
    const unsigned short* digit = number.digits.data();
    if (number.negative) *out++ = '-';
    if (zeros != 0) {
      *out++ = '0';
    } else {
      out = std::copy_n(digit, count - places, out);
      digit += count - places;
    }
    if (places == 0) return;
    *out++ = '.';
    if (zeros > 1) out = std::fill_n(out, zeros - 1, static_cast<unsigned short>('0'));
    std::copy(digit, number.digits.data() + count, out);
  });
}

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
    raise<KelConversionException>(site, failures::kInvalidData,
                                  code == core::Overpunch::ebcdic ? "External decimal - Invalid Positive sign code"
                                                                  : "External decimal - Custom Sign EBCDIC",
                                  static_cast<int>(byte));
  byte = read.digit;
  return read.negative;
}

ExternalForm formOf(ESign sign, EJustification justification, int padChar, bool padCharIsUnicode, bool customSign,
                    const unsigned short* positiveSignTable, const unsigned short* negativeSignTable) {
  return {sign,
          justification,
          static_cast<unsigned short>(padChar),
          padCharIsUnicode,
          customSign,
          positiveSignTable,
          negativeSignTable};
}

void requireField(const FailureSite& site, const unsigned char* source, int size, const char* badSize) {
  if (source == nullptr) [[unlikely]]
    raiseInternalError(site, "Null input pointer");
  if (size <= 0) [[unlikely]]
    raiseInternalError(site, numbered(badSize, size));
}

// Whether a digit that is also the pad stands where padding would.
bool endsInPad(const core::ZonedWord& word, std::uint32_t size, const ExternalForm& form) {
  const unsigned pad = form.padChar - unsigned{'0'};
  return (form.justification == eJustifyRight && word.digit(0) == pad) ||
         (form.justification == eJustifyLeft && word.digit(size - 1) == pad);
}

constexpr std::size_t kExactDigits = 15;  // that a double always holds

// Decodes a field and takes its sign off; the result tells whether that was negative. An included sign is a matter of
// bytes, mended ahead of the decoding; a separate one is a matter of text.
bool externalDigits(DataCnv& cnv, const FailureSite& site, KelWstring& text, const unsigned char* source, int size,
                    const ExternalForm& form) {
  bool negative = false;
  if (source == nullptr) size = 0;  // which is refused, as no character has no bytes
  if (!isIncluded(form.sign) || size <= 0) {
    cnv.toUnicodeString(text, source, size);
    cnv.ExtDecRemoveSign(text, form.sign, form.positiveSignTable, form.negativeSignTable, negative);
    return negative;
  }
  const core::Overpunch code = overpunchCode(cnv, form.customSign);
  Scratch<unsigned char, kUsualField> field(static_cast<std::size_t>(size));
  std::memcpy(field.data(), source, field.size());
  negative = mendSignByte(site, code, field.data()[form.sign == eSignLeadingIncluded ? 0 : size - 1]);
  cnv.toUnicodeString(text, field.data(), size);
  return negative;
}

// The value of any field as decimal text, member by member; without places where there is no scale.
void externalText(DataCnv& cnv, const FailureSite& site, KelWstring& text, const unsigned char* source, int size,
                  std::optional<int> virtualDecimalPoint, const ExternalForm& form) {
  const bool negative = externalDigits(cnv, site, text, source, size, form);
  cnv.ExtDecTrimData(text, form.justification, form.padChar, form.padCharIsUnicode);
  if (virtualDecimalPoint) cnv.adjustDecimalForString(text, *virtualDecimalPoint);
  cnv.validateDecimal(text, form.sign);
  // Behind the scale, unlike a packed decimal's, so that digits that are few get their zero: ExternalDecimal.Reads.
  if (negative) insertUnit(text, 0, '-');
}

// The digits of a frequent field, without a text in between; none where the field takes the general way.
inline core::ExternalDigits quickDigits(DataCnv& cnv, const unsigned char* source, int size, const ExternalForm& form,
                                        core::ExternalUnits& units) {
  const core::SingleByteTable* const page = CodePage::byteTable(*cnv.getConverter());
  if (page == nullptr || !form.padCharIsUnicode || static_cast<unsigned>(size) - 1 >= core::kMaxExternalBytes ||
      !isKnownSign(form.sign) || source == nullptr || debugTraceOn()) [[unlikely]]
    return {};
  const core::ExternalLayout layout{
      *page, isIncluded(form.sign) ? overpunchCode(cnv, form.customSign) : core::Overpunch::ebcdic, form.signPlace(),
      padPlace(form.justification), form.padChar};
  return core::externalDigits({source, static_cast<std::size_t>(size)}, layout, units);
}

// Whether the digits are read as they lie: bytes of one zone, each a character.
inline bool readsZones(DataCnv& cnv) {
  if (!DataCnvParts::externalCodes(cnv).areKnown) [[unlikely]]
    settleExternalCodes(cnv, ' ');
  return DataCnvParts::externalCodes(cnv).areZoned &&
         CodePage::byteTable(*DataCnvParts::converterIfMade(cnv)) != nullptr && !debugTraceOn();
}

// All other fields.
PWFData readZonedText(DataCnv& cnv, const FailureSite& site, const unsigned char* source, int size,
                      int virtualDecimalPoint, const ExternalForm& form) {
  if (virtualDecimalPoint >= 0) [[likely]] {
    core::ExternalUnits units;
    const core::ExternalDigits number = quickDigits(cnv, source, size, form, units);
    if (!number.digits.empty()) [[likely]]
      return decimalValue(number, static_cast<std::uint32_t>(virtualDecimalPoint));
  }
  PWFData value = TextValue::make(DECIMAL, 0, [](unsigned short*) {});
  externalText(cnv, site, TextValue::text(value), source, size, virtualDecimalPoint, form);
  return value;
}

// The traced frame of ExtDecToStr, into a text that may have room of its own.
void externalString(DataCnv& cnv, KelWstring& text, const unsigned char* source, int size, const ExternalForm& form) {
  const FunctionTrace trace(&cnv, "DataCnv::ExtDecToStr", kDataCnvPath);
  core::ExternalUnits units;
  const core::ExternalDigits number = quickDigits(cnv, source, size, form, units);
  if (number.digits.empty()) [[unlikely]] {
    externalText(cnv, trace.site(), text, source, size, {}, form);
    return;
  }
  unsigned short* out = text.resizeForOverwrite(static_cast<unsigned>(number.digits.size()) + number.negative);
  if (number.negative) *out++ = '-';
  std::copy(number.digits.begin(), number.digits.end(), out);
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
    raise<KelParserException>(trace.site(), failures::kInvalidPaddingSize, padCharDump(padChar), padSize, targetLength,
                              ccsid);
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

PWFData DataCnv::ExtDecToDec(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign,
                             EJustification justification, int padChar, bool padCharIsUnicode, bool customSign,
                             const unsigned short* positiveSignTable, const unsigned short* negativeSignTable) {
  const FunctionTrace trace(this, "DataCnv::ExtDecToDec", kDataCnvPath);
  requireField(trace.site(), source, size, "Invalid external decimal size: ");
  const ExternalForm form =
      formOf(sign, justification, padChar, padCharIsUnicode, customSign, positiveSignTable, negativeSignTable);
  const auto bytes = static_cast<std::uint32_t>(size);
  const auto places = static_cast<std::uint32_t>(virtualDecimalPoint);  // below 0: more than any field has
  // The most frequent field keeps in registers: digits alone, one of them perhaps with the sign, the point behind
  // another, the text inside the value.
  if (bytes <= core::ZonedWord::kMaxSize && places < bytes && readsZones(*this)) [[likely]] {
    core::ZonedWord word(source, bytes, DataCnvParts::externalCodes(*this).zero);
    core::SignByte carrier{.valid = padCharIsUnicode && (sign == eSignNone || isIncluded(sign))};
    if (isIncluded(sign) && padCharIsUnicode) {
      const std::uint32_t position = sign == eSignLeadingIncluded ? 0 : bytes - 1;
      carrier =
          core::readOverpunch(overpunchCodeOf(DataCnvParts::externalCodes(*this).zero, customSign), source[position]);
      word.replace(position, source[position], carrier.digit);
    }
    const std::uint32_t length = bytes + carrier.negative + (places != 0);
    if (carrier.valid && word.isAllDigits() && length <= TextValue::kInlineUnits && !endsInPad(word, bytes, form))
        [[likely]]
      return TextValue::make(DECIMAL, length, [&](unsigned short* out) {
        *out = '-';
        word.writePointed(bytes - places, out + carrier.negative);  // 17 units at most: the text's room
        out[length] = 0;
      });
  }
  return readZonedText(*this, trace.site(), source, size, virtualDecimalPoint, form);
}

double DataCnv::ExtDecToDbl(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign,
                            EJustification justification, int padChar, bool padCharIsUnicode, bool customSign,
                            const unsigned short* positiveSignTable, const unsigned short* negativeSignTable) {
  const FunctionTrace trace(this, "DataCnv::ExtDecToDbl", kDataCnvPath);
  requireField(trace.site(), source, size, "Invalid external decimal size: ");
  const ExternalForm form =
      formOf(sign, justification, padChar, padCharIsUnicode, customSign, positiveSignTable, negativeSignTable);
  core::ExternalUnits units;
  const core::ExternalDigits number = quickDigits(*this, source, size, form, units);
  // Both exact, so that the quotient is what reading the text would give: ExternalDecimal.QuickAndGeneralWayAgree.
  const auto places = static_cast<std::uint32_t>(virtualDecimalPoint);
  if (!number.digits.empty() && number.digits.size() <= kExactDigits && places < core::kExactPowers.size()) [[likely]] {
    const double value = static_cast<double>(core::sumOfDigits(number.digits)) / core::kExactPowers[places];
    return number.negative ? -value : value;
  }
  KelBufferedWstring<16u> text;
  externalText(*this, trace.site(), text, source, size, virtualDecimalPoint, form);
  return StrToDbl(text.characters(), static_cast<int>(text.length()));
}

KelWstring DataCnv::ExtDecToStr(const unsigned char* source, int size, ESign sign, EJustification justification,
                                int padChar, bool padCharIsUnicode, bool customSign,
                                const unsigned short* positiveSignTable, const unsigned short* negativeSignTable) {
  KelWstring text;
  externalString(
      *this, text, source, size,
      formOf(sign, justification, padChar, padCharIsUnicode, customSign, positiveSignTable, negativeSignTable));
  return text;
}

PWFInt64 DataCnv::ExtDecToInt64(const unsigned char* source, int size, ESign sign, EJustification justification,
                                int padChar, bool padCharIsUnicode, bool customSign,
                                const unsigned short* positiveSignTable, const unsigned short* negativeSignTable) {
  const FunctionTrace trace(this, "DataCnv::ExtDecToInt64", kDataCnvPath);
  // "extended" where the others say "external": ExternalDecimal.RefusesBadFields.
  requireField(trace.site(), source, size, "Invalid extended decimal size: ");
  KelBufferedWstring<16u> text;
  externalString(
      *this, text, source, size,
      formOf(sign, justification, padChar, padCharIsUnicode, customSign, positiveSignTable, negativeSignTable));
  return StrToInt64(text.characters(), static_cast<int>(text.length()), eSignLeadingSeparate, US_MINUS.characters(),
                    US_PLUS.characters(), eTrimNone, eJustifyLeft, '0', true);
}
