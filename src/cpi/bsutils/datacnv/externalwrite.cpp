// External decimals: texts and numbers into fields.
//
// All writing ends in UStringToExtDec: the point moves by the places of the field, what is left of a fraction is cut,
// never rounded, and digits, pads and sign fill the field. The fast way does this for canonical text in a code page
// with a byte for each digit, and goes from the text straight to the bytes. The general way edits a copy of the text
// member by member and converts it as a whole, so that it takes any text and any code page.

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <span>

#include "codepage/codepage.hpp"
#include "core/externaldigits.hpp"
#include "core/externalword.hpp"
#include "core/textdigits.hpp"
#include "core/wholedigits.hpp"
#include "datacnv/externalcodes.hpp"
#include "datacnv/externalform.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/sourcepath.hpp"
#include "datacnv/textedit.hpp"
#include "dataconv.hpp"
#include "support/support.hpp"

using namespace oxr;

namespace {

// Whether a plus in EBCDIC gets a zone of its own. Read at load: a change of the environment later has no effect.
const bool posEbcdicOverpunch = std::getenv("NVRA_POSITIVE_EBCDIC_OVERPUNCH") != nullptr;

constexpr std::uint32_t kShortDigits = 15;  // that a register holds as half bytes, and as many places

int negated(int places) {
  return -std::max(places, -std::numeric_limits<int>::max());
}

[[gnu::always_inline]] inline core::ExternalOutput outputOf(const ExternalCodes& codes, const ExternalForm& form) {
  return {codes.zero,
          codes.plus,
          codes.minus,
          codes.pad,
          form.overpunch(codes.zero),
          posEbcdicOverpunch,
          form.signPlace(),
          form.justification == eJustifyLeft};
}

// A number of up to 15 digits into a field of up to 16 bytes whose pads precede it, in registers. Looking up the codes
// of the page is left to what comes after it.
[[gnu::always_inline]] inline bool writeShortFast(DataCnv& cnv, const unsigned short* text, unsigned char* target,
                                                  int size, int places, const ExternalForm& form) {
  const ExternalCodes& codes = DataCnvParts::externalCodes(cnv);
  if (static_cast<unsigned>(size) - 1 >= core::ExternalWord::kMaxSize || static_cast<unsigned>(places) > kShortDigits ||
      text == nullptr || target == nullptr || !isKnownSign(form.sign) || form.justification == eJustifyLeft ||
      !form.padCharIsUnicode || codes.padChar != form.padChar || !codes.padIsByte ||
      CodePage::holdsBytes(*DataCnvParts::converterIfMade(cnv))) [[unlikely]]
    return false;
  std::uint64_t digits;
  bool negative;
  if (!core::wholeDigitsInPage(text, static_cast<std::uint32_t>(places), digits, negative) ||
      (negative & (form.sign == eSignNone)))
    return false;
  return core::writeShortExternal(digits, negative, outputOf(codes, form), {target, static_cast<std::size_t>(size)});
}

// Whether these are arguments of the fast ways. Those that are refused are left to the general way, before the
// converter is asked for anything.
inline bool isForFastWays(const unsigned short* text, const unsigned char* target, int size, int places,
                          const ExternalForm& form) {
  return text != nullptr && target != nullptr && size >= 1 && places >= 0 && isKnownSign(form.sign) &&
         form.padCharIsUnicode;
}

// Any number of plain digits. REQUIRES: isForFastWays().
[[gnu::noinline]] bool writeLongFast(DataCnv& cnv, const unsigned short* text, unsigned char* target, int size,
                                     int places, const ExternalForm& form) {
  const ExternalCodes& codes = externalCodes(cnv, form.padChar);
  if (codes.padChar != form.padChar || !codes.padIsByte || CodePage::holdsBytes(*DataCnvParts::converterIfMade(cnv)))
    return false;
  const core::ExternalOutput output = outputOf(codes, form);
  const std::span<unsigned char> field(target, static_cast<std::size_t>(size));
  static constexpr unsigned short kZero = '0';
  core::DigitBuffer buffer;
  core::IntegerDigits number;
  if (!core::integerDigits(text, places, buffer, number) || number.count != number.digits.size()) return false;
  if (number.count == 0) number.digits = UnitView(&kZero, 1);
  if (number.digits.size() > output.room(field.size()) || (number.negative && output.sign == core::SignPlace::none))
    return false;
  core::writeExternal(number.digits, number.negative, output, field);
  return true;
}

// A plus is not taken off a text, and a text may hold zeros that would end it for the fast way.
inline bool writeTextFast(DataCnv& cnv, const KelWstring& text, unsigned char* target, int size, int places,
                          const ExternalForm& form) {
  const unsigned short* const digits = text.characters();
  places = negated(places);
  return isForFastWays(digits, target, size, places, form) && text[0] != '+' &&
         UnitView(digits).size() == text.length() &&
         (writeShortFast(cnv, digits, target, size, places, form) ||
          writeLongFast(cnv, digits, target, size, places, form));
}

void requireTarget(const FailureSite& site, const unsigned char* target, int size) {
  if (target == nullptr) [[unlikely]]
    raiseInternalError(site, "Null output buffer pointer");
  if (size < 1) [[unlikely]]
    raiseInternalError(site, numbered("Invalid output buffer size: ", size));
}

// Converts the text into a field of `size` bytes; the result is how many of them it takes.
int encode(const FailureSite& site, DataCnv& converter, const KelWstring& text, unsigned char* target, int size) {
  int used = size;
  const UErrorCode status = converter.fromUnicodeString(text, target, used);
  if (status == U_BUFFER_OVERFLOW_ERROR)
    raise<KelConversionException>(site, failures::kTooLong, "string", "external decimal", size, text);
  if (U_FAILURE(status))
    raiseInternalError(site, numbered("Conversion to unicode string failed. Error code: ", status));
  return used;
}

// Pads digits to the characters of the field, which has `freeBytes` left, and puts a separate sign on.
void padExternal(DataCnv& cnv, KelWstring& digits, int characters, int freeBytes, bool& negative,
                 const FailureSite& site, const ExternalForm& form) {
  if (form.sign == eSignNone && negative) {
    insertUnit(digits, 0, '-');
    raise<KelConversionException>(site, failures::kOutOfBounds, "signed number", "unsigned external decimal", digits);
  }
  if (!isKnownSign(form.sign)) return;
  const bool isSeparate = core::isSeparate(form.signPlace());
  cnv.ExtDecPadData(digits, characters - isSeparate, freeBytes, form.justification, form.padChar,
                    form.padCharIsUnicode);
  if (isSeparate) cnv.ExtDecAddSign(digits, form.sign, form.positiveSignTable, form.negativeSignTable, negative);
}

[[gnu::noinline]] void writeTextGeneral(DataCnv& cnv, const KelWstring& text, unsigned char* target, int size,
                                        int places, ExternalForm form) {
  const FunctionTrace trace(&cnv, "DataCnv::UStringToExtDec", kDataCnvPath);
  KelBufferedWstring<16u> digits(text);
  cnv.adjustDecimalForString(digits, places);
  cnv.TrimFromDecimal(digits);
  const unsigned minus = digits.find(DataCnv::US_MINUS, 0);
  bool negative = minus != KelWstring::npos;
  if (negative) digits.eraseInternal(minus, 1);
  cnv.TrimData(digits, eTrimPadding, eJustifyRight, '0', true);
  if (digits.length() == 0) setToZero(digits);
  // Converted twice: what the digits leave free of the field is known in bytes, and padding goes by characters.
  const int room = target == nullptr ? 0 : size;
  const int freeBytes = room - encode(trace.site(), cnv, digits, target, room);
  const int characters = freeBytes / cnv.getConverter()->getMinBytesPerChar() + static_cast<int>(digits.length());
  padExternal(cnv, digits, characters, freeBytes, negative, trace.site(), form);
  encode(trace.site(), cnv, digits, target, room);
  if (!isIncluded(form.sign)) return;
  // The offset of a character, which is that of a byte only where each has one. Characters that became fewer bytes or
  // none must not lead it beyond the field.
  unsigned char& carrier = target[form.sign == eSignLeadingIncluded ? 0 : std::min(characters, room) - 1];
  carrier = core::writeOverpunch(form.overpunch(cnv), carrier, negative, posEbcdicOverpunch);
}

void writeDecimalGeneral(DataCnv& cnv, const unsigned short* text, unsigned char* target, int& size,
                         int virtualDecimalPoint, const ExternalForm& form) {
  const FunctionTrace trace(&cnv, "DataCnv::ExtDecFromDec", kDataCnvPath);
  if (text == nullptr) raiseInternalError(trace.site(), "Null input pointer");
  requireTarget(trace.site(), target, size);
  KelBufferedWstring<16u> digits{UnitView(text)};
  const bool negative =
      cnv.CheckSign(digits, eSignLeadingSeparate, DataCnv::US_MINUS.characters(), DataCnv::US_PLUS.characters());
  cnv.TrimData(digits, eTrimSpaceBoth, eJustifyLeft, '0', true);
  cnv.TrimData(digits, eTrimPadding, eJustifyRight, '0', true);
  if (negative) insertUnit(digits, 0, '-');
  cnv.UStringToExtDec(digits, target, size, negated(virtualDecimalPoint), form.sign, form.justification, form.padChar,
                      form.padCharIsUnicode, form.customSign, form.positiveSignTable, form.negativeSignTable);
}

// What is not short. It takes the arguments as its caller has them, which then need not keep a form in memory.
[[gnu::noinline]] void writeDecimal(DataCnv& cnv, const unsigned short* text, unsigned char* target, int& size,
                                    int virtualDecimalPoint, ESign sign, EJustification justification,
                                    unsigned short padChar, bool padCharIsUnicode, bool customSign,
                                    const unsigned short* positiveSignTable, const unsigned short* negativeSignTable) {
  const ExternalForm form{sign,       justification,     padChar,          padCharIsUnicode,
                          customSign, positiveSignTable, negativeSignTable};
  if (!wentFast([&] {
        return isForFastWays(text, target, size, virtualDecimalPoint, form) &&
               writeLongFast(cnv, text, target, size, virtualDecimalPoint, form);
      }))
    writeDecimalGeneral(cnv, text, target, size, virtualDecimalPoint, form);
}

}  // namespace

void DataCnv::UStringToExtDec(const KelWstring& text, unsigned char* target, int& size, int places, ESign sign,
                              EJustification justification, unsigned short padChar, bool padCharIsUnicode,
                              bool customSign, const unsigned short* positiveSignTable,
                              const unsigned short* negativeSignTable) {
  const ExternalForm form{sign,       justification,     padChar,          padCharIsUnicode,
                          customSign, positiveSignTable, negativeSignTable};
  if (wentFast([&] { return writeTextFast(*this, text, target, size, places, form); })) [[likely]]
    return;
  writeTextGeneral(*this, text, target, size, places, form);
}

void DataCnv::ExtDecFromDec(const unsigned short* text, unsigned char* target, int& size, int virtualDecimalPoint,
                            ESign sign, EJustification justification, unsigned short padChar, bool padCharIsUnicode,
                            bool customSign, const unsigned short* positiveSignTable,
                            const unsigned short* negativeSignTable) {
  const ExternalForm form{sign,       justification,     padChar,          padCharIsUnicode,
                          customSign, positiveSignTable, negativeSignTable};
  if (debugTraceOn() || !writeShortFast(*this, text, target, size, virtualDecimalPoint, form)) [[unlikely]]
    writeDecimal(*this, text, target, size, virtualDecimalPoint, sign, justification, padChar, padCharIsUnicode,
                 customSign, positiveSignTable, negativeSignTable);
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
