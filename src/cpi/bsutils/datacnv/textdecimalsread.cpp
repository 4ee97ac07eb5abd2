// Fields of numbers with decimal places, read as decimals and as doubles.
//
// Both readings bring a field to canonical text first, in the same steps: trim, sign, point, and under strict checking
// the tests of the form that the field is declared with. A decimal is that text; a double is read from it.

#include <unicode/uchar.h>

#include <iterator>
#include <optional>

#include "core/decimaltext.hpp"
#include "core/numbertextread.hpp"
#include "core/strictnumber.hpp"
#include "datacnv/padchar.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/sourcepath.hpp"
#include "datacnv/textedit.hpp"
#include "datacnv/textfield.hpp"
#include "dataconv.hpp"
#include "support/fastway.hpp"
#include "support/support.hpp"
#include "values/textinplace.hpp"

namespace oxr {

// What the readings of decimals and of doubles differ in. The word and the text are those of their failures.
struct NumberKind {
  bool isDouble;
  const char* negativeLength;
  const char* word;
};

}  // namespace oxr

using namespace oxr;

namespace {

constexpr NumberKind kDecimal = {false, "Tried to convert a zero length string to a decimal", "decimal"};
constexpr NumberKind kDouble = {true, "Tried to convert a zero length string to a double", "float"};

// The failure of each StrictFault.
constexpr const Failure* kStrictFailures[] = {
    nullptr,
    &failures::kStrictVirtualPoint,
    &failures::kStrictIntegerDigit,
    &failures::kStrictNoPoint,
    &failures::kStrictEndsWithPoint,
    &failures::kStrictPlaces,
    &failures::kStrictNonExponential,
    &failures::kStrictExponential,
};
static_assert(std::size(kStrictFailures) == static_cast<std::size_t>(core::StrictFault::isNotExponential) + 1);

// Raises a failure of strict checking. It quotes the field as it came, and the places where their number is wrong.
[[noreturn]] void raiseStrict(const FailureSite& site, const Failure& failure, const NumberField& field) {
  const KelWstring untouched(field.view());
  if (failure.number == failures::kStrictPlaces.number)
    raise<KelConversionException>(site, failure, untouched, field.precision);
  raise<KelConversionException>(site, failure, untouched);
}

// Tests the arguments in the order that decides which of several failures is told. A length of 0 is no failure.
void requireField(const FailureSite& site, const NumberKind& kind, const NumberField& field) {
  if (field.text == nullptr) raiseInternalError(site, "Null input pointer");
  if (field.length < 0)
    raiseBare<KelConversionException>(site, failures::kInvalidData, kind.negativeLength, kind.word, "");
  requireSignTexts(site, field.minusText, field.plusText);
  if (field.decimalPoint == nullptr) raiseInternalError(site, "Null decimal point string pointer");
  requireSeparateSign(site, field.sign);
}

// Refuses a "." where the message has a point of its own.
void requireOwnPoint(const FailureSite& site, const NumberField& field, const KelWstring& text) {
  if (field.decimalPoint[0] == '.' || findPoint(text) == KelWstring::npos) return;
  raiseStrict(site, field.precision == 0 ? failures::kStrictPlaces : failures::kStrictDecimalPoint, field);
}

// Serves ASCII digits with at most a point of one unit among them, in a field that has no fault.
inline bool readDoubleFast(const NumberField& field, bool isStrict, double& value) {
  if (!DataCnvParts::hasAsciiSymbols()) return false;
  if (field.decimalPoint == nullptr || field.useVirtualDecimalPoint || field.precision == core::kExplicitPoint)
    return false;
  const unsigned short point = field.decimalPoint[0];
  // A digit would be one of the number's, and an exponent's letter is what strict checking looks for.
  const bool isPlainPoint =
      point != 0 && field.decimalPoint[1] == 0 && core::digitValue(point) > 9 && point != 'e' && point != 'E';
  if (!isPlainPoint || (isStrict && u_isdigit(field.padChar))) return false;
  const auto number = bareNumber(field);
  if (!number) return false;
  double magnitude;
  if (!core::readShortDecimal(number->text, point, magnitude)) return false;
  if (isStrict && core::strictFault(number->text, number->text.find(point), {false, field.precision, true}) !=
                      core::StrictFault::none)
    return false;
  value = number->negative ? -magnitude : magnitude;
  return true;
}

// Replaces the message's point by the canonical one, and under strict checking requires the declared form of the
// number, which is looked at from its point on.
void replacePoint(DataCnv& cnv, const FailureSite& site, const NumberKind& kind, const NumberField& field,
                  KelWstring& text) {
  const bool mayHaveBothPoints = field.useVirtualDecimalPoint || DataCnvParts::takesLoosePoints(cnv);
  if (DataCnvParts::checksStrictly(cnv) && !mayHaveBothPoints) requireOwnPoint(site, field, text);
  int point = -1;
  if (field.decimalPoint[0] != '.')
    point = cnv.UpdateDecimal(text, field.decimalPoint, DataCnv::US_DECIMAL.characters());
  if (!DataCnvParts::checksStrictly(cnv)) return;
  const core::StrictFault fault =
      core::strictFault(text.view(), point < 0 ? UnitView::npos : static_cast<std::size_t>(point),
                        {field.useVirtualDecimalPoint, field.precision, kind.isDouble});
  if (fault != core::StrictFault::none) raiseStrict(site, *kStrictFailures[static_cast<std::size_t>(fault)], field);
}

// Reads a field as canonical text without its sign, and tells whether that was negative. The text of an empty field is
// empty; so is that of a double's field that holds nothing but padding.
bool readNumber(DataCnv& cnv, const FailureSite& site, const NumberKind& kind, const NumberField& field,
                KelWstring& text) {
  requireField(site, kind, field);
  const bool hasUnits = field.length != 0;  // an empty field is no number, and yet no failure for a decimal
  text.assignInternal(field.text, static_cast<unsigned>(field.length), 0);
  const unsigned short pad = field.padCharIsUnicode ? field.padChar : uncheckedPadUnit(cnv, field.padChar);
  // Strict checking must see the zeros that a field was filled with, so that they are trimmed after it:
  // NumbersFromText.ReadDecimalsAndDoubles.
  const bool trimsLate = DataCnvParts::checksStrictly(cnv) && u_isdigit(pad);
  if (!trimsLate) cnv.TrimData(text, field.trim, field.justification, pad, true);
  if (text.length() == 0 && (hasUnits || kind.isDouble)) {
    if (DataCnvParts::checksStrictly(cnv)) raiseStrict(site, failures::kStrictZeroLength, field);
    if (kind.isDouble) return false;
    setToZero(text);
  }
  // From here to the end the text has no sign, so that a point moves among digits alone.
  const bool negative = cnv.CheckSign(text, field.sign, field.minusText, field.plusText);
  if (DataCnvParts::checksStrictly(cnv) && hasUnits && text.length() == 0)
    raiseStrict(site, failures::kStrictIntegerDigit, field);
  replacePoint(cnv, site, kind, field, text);
  if (trimsLate) cnv.TrimData(text, field.trim, field.justification, pad, true);
  if (!kind.isDouble) {  // a double's digits are read with leading zeros, and not with white space
    cnv.TrimData(text, eTrimPadding, eJustifyRight, '0', true);
    if (!DataCnvParts::checksStrictly(cnv)) cnv.TrimData(text, eTrimSpaceBoth, field.justification, ' ', true);
  }
  if (hasUnits && text.length() == 0) setToZero(text);
  // Only a double's exponent has a meaning, and may be written with the message's own signs.
  if (kind.isDouble) cnv.ReplaceExponentialSign(text, field.minusText, field.plusText);
  if (field.useVirtualDecimalPoint) cnv.adjustDecimalForString(text, field.precision);
  // The last word on the text is the same for both readings, with and without strict checking.
  if (!cnv.isDecimalValid(text, !field.useVirtualDecimalPoint && field.precision == core::kExplicitPoint))
    raise<KelConversionException>(site, failures::kInvalidData, "string", KelWstring(field.view()));
  return negative;
}

// Reads a decimal into a text of the caller's, which may be that of a value.
void readDecimal(DataCnv& cnv, const NumberField& field, KelWstring& text) {
  const FunctionTrace trace(&cnv, "DataCnv::StrToDecimal", kDataCnvPath);
  const bool negative = readNumber(cnv, trace.site(), kDecimal, field, text);
  if (!field.useVirtualDecimalPoint) cnv.removeTrailingDecimal(text);
  if (negative) insertUnit(text, 0, '-');
}

// Reads any field. A negative zero keeps its sign.
[[gnu::noinline]] double readDoubleGeneral(DataCnv& cnv, const NumberField& field) {
  const FunctionTrace trace(&cnv, "DataCnv::StrToDbl", kDataCnvPath);
  KelBufferedWstring<16u> number;
  const bool negative = readNumber(cnv, trace.site(), kDouble, field, number);
  const double value = number.length() == 0 ? 0.0 : cnv.PWFStringTodouble(number);
  return negative ? -value : value;
}

}  // namespace

KelWstring DataCnv::StrToDecimal(const unsigned short* text, int length, bool useVirtualDecimalPoint, int precision,
                                 const unsigned short* decimalPoint, ESign sign, const unsigned short* minusText,
                                 const unsigned short* plusText, ETrimType trim, EJustification justification,
                                 unsigned short padChar, bool padCharIsUnicode) {
  KelBufferedWstring<16u> decimal;  // a decimal of usual length needs no heap until it is handed over
  readDecimal(*this,
              {{text, length, sign, minusText, plusText, trim, justification, padChar, padCharIsUnicode},
               useVirtualDecimalPoint,
               precision,
               decimalPoint},
              decimal);
  return KelWstring(static_cast<KelWstring&&>(decimal));
}

double DataCnv::StrToDbl(const unsigned short* text, int length, bool useVirtualDecimalPoint, int precision,
                         const unsigned short* decimalPoint, ESign sign, const unsigned short* minusText,
                         const unsigned short* plusText, ETrimType trim, EJustification justification,
                         unsigned short padChar, bool padCharIsUnicode) {
  const NumberField field{{text, length, sign, minusText, plusText, trim, justification, padChar, padCharIsUnicode},
                          useVirtualDecimalPoint,
                          precision,
                          decimalPoint};
  double value;
  if (wentFast([&] { return readDoubleFast(field, strictNumericChecking, value); })) [[likely]]
    return value;
  return readDoubleGeneral(*this, field);
}

PWFData DataCnv::StrToDec(const unsigned short* text, int length, bool useVirtualDecimalPoint, int precision,
                          const unsigned short* decimalPoint, ESign sign, const unsigned short* minusText,
                          const unsigned short* plusText, ETrimType trim, EJustification justification,
                          unsigned short padChar, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::StrToDec", kDataCnvPath);
  PWFData value = TextInPlace::make(DECIMAL);
  readDecimal(*this,
              {{text, length, sign, minusText, plusText, trim, justification, padChar, padCharIsUnicode},
               useVirtualDecimalPoint,
               precision,
               decimalPoint},
              TextInPlace::text(value));
  TextInPlace::traceMade(value);
  return value;
}

PWFData DataCnv::StrToDec(const unsigned short* text, int& length, ETrimType trim) {
  const FunctionTrace trace(this, "DataCnv::StrToDec", kDataCnvPath);
  return StrToDec(text, length, false, 0, US_DECIMAL.characters(), eSignLeadingSeparate, US_MINUS.characters(),
                  US_PLUS.characters(), trim, eJustifyLeft, '0', true);
}

PWFData DataCnv::StrToDec(const unsigned char* bytes, int& length, int scale) {
  const FunctionTrace trace(this, "DataCnv::StrToDec", kDataCnvPath);
  if (bytes == nullptr) raiseInternalError(trace.site(), "Null input pointer");
  // A length of 0 passes in spite of the words, and is for toUnicodeString to refuse: NumbersFromText.ReadPlainTexts.
  if (length < 0)
    raiseBare<KelConversionException>(trace.site(), failures::kInvalidData, kDecimal.negativeLength, kDecimal.word, "");
  PWFData value = TextInPlace::make(DECIMAL);
  KelWstring& text = TextInPlace::text(value);
  toUnicodeString(text, bytes, length);
  validateDecimal(text, eSignLeadingSeparate);
  adjustDecimalForString(text, scale);
  TextInPlace::traceMade(value);
  return value;
}
