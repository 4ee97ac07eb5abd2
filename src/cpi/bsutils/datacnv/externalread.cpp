// External decimals: fields into values, texts and numbers.
//
// A field is read in the order in which it was filled, backwards: an included sign comes off as a byte, the rest is
// converted to text, a separate sign comes off, then the pads; the point is placed and what remains must be a decimal.
// The general way does this member by member. The fast way takes a field in a code page with a byte for each digit and
// looks at those bytes alone: in two registers if there are no pads, or else unit by unit.

#include <algorithm>
#include <cstring>
#include <optional>
#include <span>

#include "codepage/codepage.hpp"
#include "core/externaldigits.hpp"
#include "core/externalword.hpp"
#include "core/numbertextread.hpp"
#include "core/numbertextwrite.hpp"
#include "datacnv/externalcodes.hpp"
#include "datacnv/externalform.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/sourcepath.hpp"
#include "datacnv/textedit.hpp"
#include "dataconv.hpp"
#include "support/scratch.hpp"
#include "support/support.hpp"
#include "values/textinplace.hpp"

using namespace oxr;

namespace {

constexpr std::size_t kUsualField = 64;     // bytes of a field that need no heap
constexpr std::size_t kExactDigits = 15;    // that a double always holds
constexpr std::size_t kIntegerDigits = 18;  // that a 64-bit integer always holds

core::PadPlace padPlace(EJustification justification) {
  if (justification == eJustifyRight) return core::PadPlace::leading;
  return justification == eJustifyLeft ? core::PadPlace::trailing : core::PadPlace::none;
}

// Whether these are arguments of the fast ways. Those that are refused are left to the general way, before the
// converter is asked for anything.
inline bool isForFastWays(const unsigned char* source, int size, const ExternalForm& form) {
  return source != nullptr && static_cast<unsigned>(size) - 1 < core::kMaxExternalBytes && form.padCharIsUnicode &&
         isKnownSign(form.sign);
}

// The table of the code page for a field that the fast ways take; null for any other.
inline const core::SingleByteTable* tableFor(DataCnv& cnv, const unsigned char* source, int size,
                                             const ExternalForm& form) {
  if (!isForFastWays(source, size, form) || !externalCodes(cnv).haveDigitZone) [[unlikely]]
    return nullptr;
  return CodePage::byteTable(*DataCnvParts::converterIfMade(cnv));
}

// The digits of such a field; none where it holds anything else.
inline core::ExternalDigits readDigits(const core::SingleByteTable& table, DataCnv& cnv, const unsigned char* source,
                                       int size, const ExternalForm& form, core::ExternalUnits& units) {
  const core::ExternalLayout layout{table, form.overpunch(externalCodes(cnv).zero), form.signPlace(),
                                    padPlace(form.justification), form.padChar};
  return core::readExternal({source, static_cast<std::size_t>(size)}, layout, units);
}

// The digits of any field that is one for the fast ways; none for others.
inline core::ExternalDigits readDigitsFast(DataCnv& cnv, const unsigned char* source, int size,
                                           const ExternalForm& form, core::ExternalUnits& units) {
  const core::SingleByteTable* const table = tableFor(cnv, source, size, form);
  if (table == nullptr) [[unlikely]]
    return {};
  return readDigits(*table, cnv, source, size, form, units);
}

// A field of up to 16 bytes that are all digits, none of them a pad, whose point falls after one of them, and whose
// text lies inside the value.
struct ShortExternal {
  core::ExternalWord word;
  std::uint32_t wholeDigits = 0;  // before the point
  bool hasPoint = false;
  std::uint32_t minus = 0;   // units of the sign: 0 or 1
  std::uint32_t length = 0;  // units of the text

  // Up to 17 units: the text's room and its terminator.
  void write(unsigned short* out) const {
    *out = '-';
    if (hasPoint)
      word.writePointed(wholeDigits, out + minus);
    else
      word.write(out + minus);
  }
};

// Whether a digit that is the pad as well stands where padding would.
bool endsInPad(const core::ExternalWord& word, std::uint32_t size, const ExternalForm& form) {
  const unsigned pad = form.padChar - unsigned{'0'};
  return (form.justification == eJustifyRight && word.digit(0) == pad) ||
         (form.justification == eJustifyLeft && word.digit(size - 1) == pad);
}

// Takes leading zeros off, which are padding: all but those that the number needs before its point and after it.
void takeZerosOff(core::ExternalWord& word, std::uint32_t& size, std::uint32_t places) {
  const std::uint32_t count = std::min(word.leadingZeros(), size - places - 1);
  word.dropFirst(count);
  size -= count;
}

// It calls nothing, so that it saves no registers: looking up the codes of the page is left to what comes after it.
[[gnu::always_inline]] inline bool readShortFast(DataCnv& cnv, const unsigned char* source, int fieldSize,
                                                 int virtualDecimalPoint, const ExternalForm& form,
                                                 ShortExternal& number) {
  const auto size = static_cast<std::uint32_t>(fieldSize);
  const auto places = static_cast<std::uint32_t>(virtualDecimalPoint);  // below 0: more than any field has
  if (size > core::ExternalWord::kMaxSize || places >= size || !isForFastWays(source, fieldSize, form) ||
      core::isSeparate(form.signPlace()))
    return false;
  const ExternalCodes& codes = DataCnvParts::externalCodes(cnv);
  if (!codes.haveDigitZone || CodePage::byteTable(*DataCnvParts::converterIfMade(cnv)) == nullptr) [[unlikely]]
    return false;
  const unsigned char zero = codes.zero;
  number.word = core::ExternalWord(source, size, zero);
  core::SignByte carrier;
  if (isIncluded(form.sign)) {
    const std::uint32_t position = form.sign == eSignLeadingIncluded ? 0 : size - 1;
    carrier = core::readOverpunch(form.overpunch(zero), source[position]);
    number.word.replace(position, source[position], carrier.digit);
  }
  if (!carrier.valid || !number.word.isAllDigits()) return false;
  std::uint32_t count = size;
  const bool padIsZero = form.justification == eJustifyRight && form.padChar == '0';
  if (padIsZero)
    takeZerosOff(number.word, count, places);
  else if (endsInPad(number.word, count, form))
    return false;
  number.length = count + carrier.negative + (places != 0);
  number.wholeDigits = count - places;
  number.hasPoint = places != 0;
  number.minus = carrier.negative;
  return number.length <= TextInPlace::kInlineUnits;
}

// What the fast way reads of any other field.
struct LongExternal {
  core::ExternalUnits units;
  core::ExternalDigits number;  // its digits are in the units
  std::uint32_t places;         // of them, after the point

  // Zeros precede digits that are too few for their places.
  void write(KelWstring& text) const {
    const std::size_t count = number.digits.size();
    const std::size_t zeros = places < count ? 0 : places - count + 1;
    const std::size_t length = number.negative + zeros + count + (places != 0);
    unsigned short* out = text.resizeForOverwrite(static_cast<unsigned>(length));
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
  }
};

inline bool readLongFast(DataCnv& cnv, const unsigned char* source, int size, int virtualDecimalPoint,
                         const ExternalForm& form, LongExternal& number) {
  if (virtualDecimalPoint < 0) return false;
  number.places = static_cast<std::uint32_t>(virtualDecimalPoint);
  number.number = readDigitsFast(cnv, source, size, form, number.units);
  return !number.number.digits.empty();
}

inline bool readDoubleFast(DataCnv& cnv, const unsigned char* source, int size, int virtualDecimalPoint,
                           const ExternalForm& form, double& value) {
  core::ExternalUnits units;
  const auto places = static_cast<std::uint32_t>(virtualDecimalPoint);  // below 0: more than there are powers
  if (places >= core::kExactPowers.size()) return false;
  const core::ExternalDigits number = readDigitsFast(cnv, source, size, form, units);
  if (number.digits.empty() || number.digits.size() > kExactDigits) return false;
  // Digits and power are exact, so that the quotient is rounded once, as reading the text would do.
  value = static_cast<double>(core::sumOfDigits(number.digits)) / core::kExactPowers[places];
  if (number.negative) value = -value;
  return true;
}

inline bool readTextFast(DataCnv& cnv, const unsigned char* source, int size, const ExternalForm& form,
                         KelWstring& text) {
  core::ExternalUnits units;
  const core::ExternalDigits number = readDigitsFast(cnv, source, size, form, units);
  if (number.digits.empty()) return false;
  unsigned short* out = text.resizeForOverwrite(static_cast<unsigned>(number.digits.size()) + number.negative);
  if (number.negative) *out++ = '-';
  std::copy(number.digits.begin(), number.digits.end(), out);
  return true;
}

inline bool readIntegerFast(DataCnv& cnv, const unsigned char* source, int size, const ExternalForm& form,
                            PWFInt64& value) {
  core::ExternalUnits units;
  const core::ExternalDigits number = readDigitsFast(cnv, source, size, form, units);
  if (number.digits.empty() || number.digits.size() > kIntegerDigits) return false;
  value = static_cast<PWFInt64>(core::sumOfDigits(number.digits));
  if (number.negative) value = -value;
  return true;
}

void requireField(const FailureSite& site, const unsigned char* source, int size, const char* badSize) {
  if (source == nullptr) [[unlikely]]
    raiseInternalError(site, "Null input pointer");
  if (size <= 0) [[unlikely]]
    raiseInternalError(site, numbered(badSize, size));
}

// Turns the byte that carries the sign into its plain digit; the result says whether the sign is negative.
bool takeIncludedSign(const FailureSite& site, core::Overpunch code, unsigned char& byte) {
  const core::SignByte read = core::readOverpunch(code, byte);
  if (!read.valid) [[unlikely]]
    raise<KelConversionException>(site, failures::kInvalidData,
                                  code == core::Overpunch::ebcdic ? "External decimal - Invalid Positive sign code"
                                                                  : "External decimal - Custom Sign EBCDIC",
                                  static_cast<int>(byte));
  byte = read.digit;
  return read.negative;
}

// Converts a field to text without its sign; the result says whether that was negative. An included sign is a matter of
// bytes and comes off before the conversion, in a copy of the field; a separate one is a matter of text.
bool decodeField(DataCnv& cnv, const FailureSite& site, KelWstring& text, const unsigned char* source, int size,
                 const ExternalForm& form) {
  bool negative = false;
  if (source == nullptr) size = 0;  // which the conversion refuses: no character has no bytes
  if (!isIncluded(form.sign) || size <= 0) {
    cnv.toUnicodeString(text, source, size);
    cnv.ExtDecRemoveSign(text, form.sign, form.positiveSignTable, form.negativeSignTable, negative);
    return negative;
  }
  const core::Overpunch code = form.overpunch(cnv);
  Scratch<unsigned char, kUsualField> field(static_cast<std::size_t>(size));
  std::memcpy(field.data(), source, field.size());
  negative = takeIncludedSign(site, code, field.data()[form.sign == eSignLeadingIncluded ? 0 : size - 1]);
  cnv.toUnicodeString(text, field.data(), size);
  return negative;
}

// The text of any field, member by member. Texts and integers have no scale.
void decimalText(DataCnv& cnv, const FailureSite& site, KelWstring& text, const unsigned char* source, int size,
                 std::optional<int> virtualDecimalPoint, const ExternalForm& form) {
  const bool negative = decodeField(cnv, site, text, source, size, form);
  cnv.ExtDecTrimData(text, form.justification, form.padChar, form.padCharIsUnicode);
  if (virtualDecimalPoint) cnv.adjustDecimalForString(text, *virtualDecimalPoint);
  cnv.validateDecimal(text, form.sign);
  // After the scale, unlike a packed decimal's, so that digits that are few get their zero: ExternalDecimal.Reads.
  if (negative) insertUnit(text, 0, '-');
}

[[gnu::noinline]] void readDecimalGeneral(DataCnv& cnv, KelWstring& text, const unsigned char* source, int size,
                                          int virtualDecimalPoint, const ExternalForm& form) {
  const FunctionTrace trace(&cnv, "DataCnv::ExtDecToDec", kDataCnvPath);
  requireField(trace.site(), source, size, "Invalid external decimal size: ");
  decimalText(cnv, trace.site(), text, source, size, virtualDecimalPoint, form);
}

[[gnu::noinline]] double readDoubleGeneral(DataCnv& cnv, const unsigned char* source, int size, int virtualDecimalPoint,
                                           const ExternalForm& form) {
  const FunctionTrace trace(&cnv, "DataCnv::ExtDecToDbl", kDataCnvPath);
  requireField(trace.site(), source, size, "Invalid external decimal size: ");
  KelBufferedWstring<16u> text;
  decimalText(cnv, trace.site(), text, source, size, virtualDecimalPoint, form);
  return cnv.StrToDbl(text.characters(), static_cast<int>(text.length()));
}

// Into a text that may have room of its own. A field that is missing is left to the conversion to refuse, unlike in the
// other members: ExternalDecimal.RefusesBadFields.
[[gnu::noinline]] void readTextGeneral(DataCnv& cnv, const unsigned char* source, int size, const ExternalForm& form,
                                       KelWstring& text) {
  const FunctionTrace trace(&cnv, "DataCnv::ExtDecToStr", kDataCnvPath);
  decimalText(cnv, trace.site(), text, source, size, {}, form);
}

[[gnu::noinline]] PWFInt64 readIntegerGeneral(DataCnv& cnv, const unsigned char* source, int size,
                                              const ExternalForm& form) {
  const FunctionTrace trace(&cnv, "DataCnv::ExtDecToInt64", kDataCnvPath);
  // "extended" where the others say "external": ExternalDecimal.RefusesBadFields.
  requireField(trace.site(), source, size, "Invalid extended decimal size: ");
  KelBufferedWstring<16u> text;
  readTextGeneral(cnv, source, size, form, text);
  return cnv.StrToInt64(text.characters(), static_cast<int>(text.length()), eSignLeadingSeparate,
                        DataCnv::US_MINUS.characters(), DataCnv::US_PLUS.characters(), eTrimNone, eJustifyLeft, '0',
                        true);
}

// On reading, the pad comes as an int, of which a code unit counts.
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

// What is not short. It takes the arguments as its caller has them, which then need not keep a form in memory.
[[gnu::noinline]] void readDecimal(DataCnv& cnv, KelWstring& text, const unsigned char* source, int size,
                                   int virtualDecimalPoint, ESign sign, EJustification justification, int padChar,
                                   bool padCharIsUnicode, bool customSign, const unsigned short* positiveSignTable,
                                   const unsigned short* negativeSignTable) {
  const ExternalForm form =
      formOf(sign, justification, padChar, padCharIsUnicode, customSign, positiveSignTable, negativeSignTable);
  LongExternal number;
  if (wentFast([&] { return readLongFast(cnv, source, size, virtualDecimalPoint, form, number); }))
    number.write(text);
  else
    readDecimalGeneral(cnv, text, source, size, virtualDecimalPoint, form);
}

}  // namespace

PWFData DataCnv::ExtDecToDec(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign,
                             EJustification justification, int padChar, bool padCharIsUnicode, bool customSign,
                             const unsigned short* positiveSignTable, const unsigned short* negativeSignTable) {
  const ExternalForm form =
      formOf(sign, justification, padChar, padCharIsUnicode, customSign, positiveSignTable, negativeSignTable);
  PWFData value = TextInPlace::make(DECIMAL);
  ShortExternal number;
  if (!debugTraceOn() && readShortFast(*this, source, size, virtualDecimalPoint, form, number)) [[likely]] {
    TextInPlace::writeShort(value, number.length, [&](unsigned short* out) { number.write(out); });
  } else {
    readDecimal(*this, TextInPlace::text(value), source, size, virtualDecimalPoint, sign, justification, padChar,
                padCharIsUnicode, customSign, positiveSignTable, negativeSignTable);
    TextInPlace::traceMade(value);
  }
  return value;
}

double DataCnv::ExtDecToDbl(const unsigned char* source, int size, int virtualDecimalPoint, ESign sign,
                            EJustification justification, int padChar, bool padCharIsUnicode, bool customSign,
                            const unsigned short* positiveSignTable, const unsigned short* negativeSignTable) {
  const ExternalForm form =
      formOf(sign, justification, padChar, padCharIsUnicode, customSign, positiveSignTable, negativeSignTable);
  double value;
  if (wentFast([&] { return readDoubleFast(*this, source, size, virtualDecimalPoint, form, value); })) [[likely]]
    return value;
  return readDoubleGeneral(*this, source, size, virtualDecimalPoint, form);
}

KelWstring DataCnv::ExtDecToStr(const unsigned char* source, int size, ESign sign, EJustification justification,
                                int padChar, bool padCharIsUnicode, bool customSign,
                                const unsigned short* positiveSignTable, const unsigned short* negativeSignTable) {
  const ExternalForm form =
      formOf(sign, justification, padChar, padCharIsUnicode, customSign, positiveSignTable, negativeSignTable);
  KelWstring text;
  if (!wentFast([&] { return readTextFast(*this, source, size, form, text); })) [[unlikely]]
    readTextGeneral(*this, source, size, form, text);
  return text;
}

PWFInt64 DataCnv::ExtDecToInt64(const unsigned char* source, int size, ESign sign, EJustification justification,
                                int padChar, bool padCharIsUnicode, bool customSign,
                                const unsigned short* positiveSignTable, const unsigned short* negativeSignTable) {
  const ExternalForm form =
      formOf(sign, justification, padChar, padCharIsUnicode, customSign, positiveSignTable, negativeSignTable);
  PWFInt64 value;
  if (wentFast([&] { return readIntegerFast(*this, source, size, form, value); })) [[likely]]
    return value;
  return readIntegerGeneral(*this, source, size, form);
}
