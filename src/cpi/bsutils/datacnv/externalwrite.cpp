#include <algorithm>
#include <cstdlib>
#include <limits>

#include "codepage/codepage.hpp"
#include "core/externaldigits.hpp"
#include "core/externalword.hpp"
#include "core/packedfield.hpp"
#include "core/wholedigits.hpp"
#include "datacnv/externalform.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/signform.hpp"
#include "datacnv/sourcepath.hpp"
#include "datacnv/textedit.hpp"
#include "dataconv.hpp"
#include "support/support.hpp"

using namespace oxr;

namespace oxr {

// Brings the characters of a field into the cache; false where one of them is not a byte, or the pad is none.
bool settleExternalCodes(DataCnv& cnv, unsigned short padChar) {
  static constexpr unsigned short kCharacters[] = {'+', '-', '0', '1', '2', '3', '4', '5', '6', '7', '8', '9'};
  constexpr int kCount = std::size(kCharacters);
  unsigned char bytes[4 * kCount];
  int size = sizeof bytes;
  DataCnvParts::ExternalCodes& codes = DataCnvParts::externalCodes(cnv);
  if (!codes.areKnown) {
    codes.areKnown = true;
    const UErrorCode status = cnv.fromUnicodeString(KelBufferedWstring<16u>(kCharacters, kCount), bytes, size);
    codes.areBytes =
        U_SUCCESS(status) && size == kCount && cnv.getConverter()->getMinBytesPerChar() == 1 &&
        std::adjacent_find(bytes + 2, bytes + kCount, [](int a, int b) { return b != a + 1; }) == bytes + kCount;
    codes.plus = bytes[0], codes.minus = bytes[1], codes.zero = bytes[2];
    const core::SingleByteTable* const page = CodePage::byteTable(*cnv.getConverter());
    codes.areZoned = codes.areBytes && codes.zero % 16 == 0 && page != nullptr;
    for (unsigned digit = 0; digit <= 9; ++digit)
      codes.areZoned = codes.areZoned && (*page)[codes.zero + digit] == '0' + digit;
  }
  if (codes.areBytes && codes.padChar != padChar) {
    size = sizeof bytes;
    const UErrorCode status = cnv.fromUnicodeString(KelBufferedWstring<16u>(&padChar, 1), bytes, size);
    codes.padIsByte = U_SUCCESS(status) && size == 1;
    codes.padChar = padChar;
    codes.pad = bytes[0];
  }
  return codes.areBytes && codes.padIsByte;
}

}  // namespace oxr

namespace {

// Read at load: a change of the environment later has no effect.
const bool posEbcdicOverpunch = std::getenv("NVRA_POSITIVE_EBCDIC_OVERPUNCH") != nullptr;

void requireTarget(const FailureSite& site, const unsigned char* target, int size) {
  if (target == nullptr) [[unlikely]]
    raiseInternalError(site, "Null output buffer pointer");
  if (size < 1) [[unlikely]]
    raiseInternalError(site, numbered("Invalid output buffer size: ", size));
}

int negated(int places) {
  return -std::max(places, -std::numeric_limits<int>::max());
}

// The bytes that the text takes of the `size` that a field has.
int encode(const FailureSite& site, DataCnv& converter, const KelWstring& text, unsigned char* target, int size) {
  int used = size;
  const UErrorCode status = converter.fromUnicodeString(text, target, used);
  if (status == U_BUFFER_OVERFLOW_ERROR)
    raise<KelConversionException>(site, failures::kTooLong, "string", "external decimal", size, text);
  if (U_FAILURE(status))
    raiseInternalError(site, numbered("Conversion to unicode string failed. Error code: ", status));
  return used;
}

// A number of plain digits in a field of single bytes, written in one go. False where it takes the general way.
bool writeQuickly(DataCnv& cnv, const unsigned short* text, unsigned char* target, int size, int virtualDecimalPoint,
                  const ExternalForm& form) {
  if (debugTraceOn() || !form.padCharIsUnicode || !isKnownSign(form.sign) || virtualDecimalPoint < 0 || size < 1 ||
      target == nullptr)
    return false;
  core::DigitBuffer buffer;
  core::IntegerDigits number;
  if (!core::integerDigits(text, virtualDecimalPoint, buffer, number) || number.count != number.digits.size())
    return false;
  static constexpr unsigned short kZero = '0';
  if (number.count == 0) number.digits = UnitView(&kZero, 1);
  const core::SignPlace sign = form.signPlace();
  const auto room = static_cast<std::size_t>(size);
  if (number.digits.size() + core::isSeparate(sign) > room || (number.negative && sign == core::SignPlace::none) ||
      !settleExternalCodes(cnv, form.padChar)) [[unlikely]]
    return false;
  const DataCnvParts::ExternalCodes& codes = DataCnvParts::externalCodes(cnv);
  const auto code = isIncluded(form.sign) ? overpunchCode(cnv, form.customSign) : core::Overpunch::ebcdic;
  core::writeExternal(number.digits, number.negative,
                      {codes.zero, codes.plus, codes.minus, codes.pad, code, posEbcdicOverpunch, sign,
                       form.justification == eJustifyLeft},
                      {target, room});
  return true;
}

// The most frequent field of all: up to 16 bytes, up to 15 digits, kept in registers, no padding behind them.
[[gnu::always_inline]] inline bool writeShortZoned(DataCnv& cnv, const unsigned short* text, unsigned char* target,
                                                   int size, int virtualDecimalPoint, const ExternalForm& form) {
  const auto bytes = static_cast<std::uint32_t>(size);
  const auto places = static_cast<std::uint32_t>(virtualDecimalPoint);
  std::uint64_t digits;
  bool negative;
  if (bytes - 1 >= core::ZonedWord::kMaxSize || places > 15 || !isKnownSign(form.sign) || !form.padCharIsUnicode ||
      form.justification == eJustifyLeft || !core::shortIntegerDigits(text, places, digits, negative) ||
      (DataCnvParts::externalCodes(cnv).padChar != form.padChar && !settleExternalCodes(cnv, form.padChar)) ||
      !DataCnvParts::externalCodes(cnv).padIsByte || DataCnvParts::externalCodes(cnv).zero % 16 != 0)
    return false;
  const DataCnvParts::ExternalCodes& codes = DataCnvParts::externalCodes(cnv);
  const bool isSeparate = form.sign >= eSignLeadingSeparate;
  const std::uint32_t count = core::significantDigits(digits);
  const std::uint32_t room = bytes - isSeparate;
  if (count > room || (negative && form.sign == eSignNone)) return false;
  unsigned char* const start = target + (form.sign == eSignLeadingSeparate);
  core::writeZoned(digits, codes.zero, start, room);
  if (codes.pad != codes.zero) std::fill_n(start, room - count, codes.pad);
  unsigned char& carrier =
      target[form.sign == eSignLeadingIncluded || form.sign == eSignLeadingSeparate ? 0 : bytes - 1];
  if (isSeparate)
    carrier = negative ? codes.minus : codes.plus;
  else if (form.sign != eSignNone)
    carrier = core::writeOverpunch(overpunchCodeOf(codes.zero, form.customSign), carrier, negative, posEbcdicOverpunch);
  return true;
}

// Pads digits to the characters of the field, which has `freeBytes` left, and puts a separate sign on.
void padExternal(DataCnv& cnv, KelWstring& digits, int characters, int freeBytes, bool& negative,
                 const FailureSite& site, const ExternalForm& form) {
  if (form.sign == eSignNone && negative) {
    insertUnit(digits, 0, '-');
    raise<KelConversionException>(site, failures::kOutOfBounds, "signed number", "unsigned external decimal", digits);
  }
  if (!isKnownSign(form.sign)) return;
  const bool isSeparate = form.sign != eSignNone && !isIncluded(form.sign);
  cnv.ExtDecPadData(digits, characters - isSeparate, freeBytes, form.justification, form.padChar,
                    form.padCharIsUnicode);
  if (isSeparate) cnv.ExtDecAddSign(digits, form.sign, form.positiveSignTable, form.negativeSignTable, negative);
}

// All cases, with trace and argument tests; the member itself keeps to the frequent one.
void writeZonedTraced(DataCnv& cnv, const unsigned short* text, unsigned char* target, int& size,
                      int virtualDecimalPoint, const ExternalForm& form) {
  const FunctionTrace trace(&cnv, "DataCnv::ExtDecFromDec", kDataCnvPath);
  if (text == nullptr) raiseInternalError(trace.site(), "Null input pointer");
  requireTarget(trace.site(), target, size);
  if (writeQuickly(cnv, text, target, size, virtualDecimalPoint, form)) return;
  KelBufferedWstring<16u> digits{UnitView(text)};
  const bool negative =
      cnv.CheckSign(digits, eSignLeadingSeparate, DataCnv::US_MINUS.characters(), DataCnv::US_PLUS.characters());
  cnv.TrimData(digits, eTrimSpaceBoth, eJustifyLeft, '0', true);
  cnv.TrimData(digits, eTrimPadding, eJustifyRight, '0', true);
  if (negative) insertUnit(digits, 0, '-');
  cnv.UStringToExtDec(digits, target, size, negated(virtualDecimalPoint), form.sign, form.justification, form.padChar,
                      form.padCharIsUnicode, form.customSign, form.positiveSignTable, form.negativeSignTable);
}

}  // namespace

void DataCnv::UStringToExtDec(const KelWstring& text, unsigned char* target, int& size, int places, ESign sign,
                              EJustification justification, unsigned short padChar, bool padCharIsUnicode,
                              bool customSign, const unsigned short* positiveSignTable,
                              const unsigned short* negativeSignTable) {
  const FunctionTrace trace(this, "DataCnv::UStringToExtDec", kDataCnvPath);
  const ExternalForm form{sign,       justification,     padChar,          padCharIsUnicode,
                          customSign, positiveSignTable, negativeSignTable};
  // A plus is not taken off here, and text may hold zeros that end it for others.
  const bool isPlain = text[0] != '+' && UnitView(text.characters()).size() == text.length();
  if (isPlain && writeQuickly(*this, text.characters(), target, size, negated(places), form)) return;
  KelBufferedWstring<16u> digits(text);
  adjustDecimalForString(digits, places);
  TrimFromDecimal(digits);
  const unsigned minus = digits.find(US_MINUS, 0);
  bool negative = minus != KelWstring::npos;
  if (negative) digits.eraseInternal(minus, 1);
  TrimData(digits, eTrimPadding, eJustifyRight, '0', true);
  if (digits.length() == 0) setToZero(digits);
  // Encoded twice: what the digits leave free of the field is known in bytes, and padding goes by characters.
  const int room = target == nullptr ? 0 : size;
  const int freeBytes = room - encode(trace.site(), *this, digits, target, room);
  const int characters = freeBytes / getConverter()->getMinBytesPerChar() + static_cast<int>(digits.length());
  padExternal(*this, digits, characters, freeBytes, negative, trace.site(), form);
  encode(trace.site(), *this, digits, target, room);
  if (!isIncluded(sign)) return;
  // A character's offset, which is a byte's only where each has one. Characters that became fewer bytes or none must
  // not lead it behind the field.
  unsigned char& carrier = target[sign == eSignLeadingIncluded ? 0 : std::min(characters, room) - 1];
  carrier = core::writeOverpunch(overpunchCode(*this, customSign), carrier, negative, posEbcdicOverpunch);
}

void DataCnv::ExtDecFromDec(const unsigned short* text, unsigned char* target, int& size, int virtualDecimalPoint,
                            ESign sign, EJustification justification, unsigned short padChar, bool padCharIsUnicode,
                            bool customSign, const unsigned short* positiveSignTable,
                            const unsigned short* negativeSignTable) {
  const ExternalForm form{sign,       justification,     padChar,          padCharIsUnicode,
                          customSign, positiveSignTable, negativeSignTable};
  if (debugTraceOn() || text == nullptr || target == nullptr ||
      !writeShortZoned(*this, text, target, size, virtualDecimalPoint, form)) [[unlikely]]
    writeZonedTraced(*this, text, target, size, virtualDecimalPoint, form);
}

void DataCnv::ExtDecFromDbl(double value, unsigned char* target, int& size, int virtualDecimalPoint, ESign sign,
                            EJustification justification, unsigned short padChar, bool padCharIsUnicode,
                            bool customSign, const unsigned short* positiveSignTable,
                            const unsigned short* negativeSignTable) {
  const FunctionTrace trace(this, "DataCnv::ExtDecFromDbl", kDataCnvPath);
  requireTarget(trace.site(), target, size);
  KelBufferedWstring<16u> text;
  doubleToUString(value, text, false);
  UStringToExtDec(text, target, size, negated(virtualDecimalPoint), sign, justification, padChar, padCharIsUnicode,
                  customSign, positiveSignTable, negativeSignTable);
}

void DataCnv::ExtDecFromInt64(long value, unsigned char* target, int& size, ESign sign, EJustification justification,
                              unsigned short padChar, bool padCharIsUnicode, bool customSign,
                              const unsigned short* positiveSignTable, const unsigned short* negativeSignTable) {
  const FunctionTrace trace(this, "DataCnv::ExtDecFromInt64", kDataCnvPath);
  requireTarget(trace.site(), target, size);
  KelBufferedWstring<16u> text;
  Int64ToUString(value, text);
  UStringToExtDec(text, target, size, 0, sign, justification, padChar, padCharIsUnicode, customSign, positiveSignTable,
                  negativeSignTable);
}
