#include <unicode/uchar.h>

#include <iterator>
#include <optional>

#include "core/decimaltext.hpp"
#include "core/numbertextread.hpp"
#include "core/strictnumber.hpp"
#include "datacnv/asciinumbers.hpp"
#include "datacnv/padchar.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/signform.hpp"
#include "datacnv/sourcepath.hpp"
#include "datacnv/textedit.hpp"
#include "datacnv/textfield.hpp"
#include "dataconv.hpp"
#include "support/support.hpp"
#include "values/textinplace.hpp"

namespace oxr {

// What the readings of decimals and of doubles differ in.
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

// By the number of the StrictFault.
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

[[noreturn]] void refuse(const FailureSite& site, const Failure& failure, const NumberField& field) {
  const KelWstring untouched(field.view());
  if (failure.number == failures::kStrictPlaces.number)
    raise<KelConversionException>(site, failure, untouched, field.precision);
  raise<KelConversionException>(site, failure, untouched);
}

void requireField(const FailureSite& site, const NumberKind& kind, const NumberField& field) {
  if (field.text == nullptr) raiseInternalError(site, "Null input pointer");
  if (field.length < 0)
    raiseBare<KelConversionException>(site, failures::kInvalidData, kind.negativeLength, kind.word, "");
  if (field.minusText == nullptr || field.plusText == nullptr) raiseInternalError(site, "Null sign string pointer");
  if (field.decimalPoint == nullptr) raiseInternalError(site, "Null decimal point string pointer");
  if (isIncluded(field.sign)) raiseInternalError(site, numbered("Sign type invalid for context: ", field.sign));
}

// A "." where the message has a point of its own; some messages may have both.
void requireOwnPoint(const FailureSite& site, const NumberField& field, const KelWstring& text) {
  if (field.decimalPoint[0] == '.' || findPoint(text) == KelWstring::npos) return;
  refuse(site, field.precision == 0 ? failures::kStrictPlaces : failures::kStrictDecimalPoint, field);
}

// The value of a frequent field: ASCII digits with at most a point of one unit among them, and no fault.
std::optional<double> quickDouble(const NumberField& field, bool isStrict) {
  if (field.decimalPoint == nullptr || field.useVirtualDecimalPoint || field.precision == core::kExplicitPoint)
    return {};
  const unsigned short point = field.decimalPoint[0];
  // Nor an exponent's letter, which strict checking would look for.
  const bool isPlainPoint =
      point != 0 && field.decimalPoint[1] == 0 && core::aboveZero(point) > 9 && point != 'e' && point != 'E';
  if (!isPlainPoint || (isStrict && u_isdigit(field.padChar))) return {};
  const auto number = bareNumber(field);
  if (!number) return {};
  const auto value = core::readShortDecimal(number->text, point);
  if (!value) return {};
  if (isStrict && core::strictFault(number->text, number->text.find(point), {false, field.precision, true}) !=
                      core::StrictFault::none)
    return {};
  return number->negative ? -*value : *value;
}

// Puts the canonical point for the message's, and under strict checking sees to it that the number has its form.
void settlePoint(DataCnv& cnv, const FailureSite& site, const NumberKind& kind, const NumberField& field,
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
  if (fault != core::StrictFault::none) refuse(site, *kStrictFailures[static_cast<std::size_t>(fault)], field);
}

// Brings a field to canonical text without its sign, and tells whether that was negative. An empty text stays empty; of
// a double's field, only when nothing but padding was in it.
bool numberFrom(DataCnv& cnv, const FailureSite& site, const NumberKind& kind, const NumberField& field,
                KelWstring& text) {
  requireField(site, kind, field);
  const bool hasUnits = field.length != 0;
  text.assignInternal(field.text, static_cast<unsigned>(field.length), 0);
  const unsigned short pad = field.padCharIsUnicode ? field.padChar : uncheckedPadUnit(cnv, field.padChar);
  // The checks must see the zeros that a field was filled with: NumbersFromText.StrictCheckingTrimsDigitsLate.
  const bool trimsLate = DataCnvParts::checksStrictly(cnv) && u_isdigit(pad);
  if (!trimsLate) cnv.TrimData(text, field.trim, field.justification, pad, true);
  if (text.length() == 0 && (hasUnits || kind.isDouble)) {
    if (DataCnvParts::checksStrictly(cnv)) refuse(site, failures::kStrictZeroLength, field);
    if (kind.isDouble) return false;
    setToZero(text);
  }
  const bool negative = cnv.CheckSign(text, field.sign, field.minusText, field.plusText);
  if (DataCnvParts::checksStrictly(cnv) && hasUnits && text.length() == 0)
    refuse(site, failures::kStrictIntegerDigit, field);
  settlePoint(cnv, site, kind, field, text);
  if (trimsLate) cnv.TrimData(text, field.trim, field.justification, pad, true);
  if (!kind.isDouble) {
    cnv.TrimData(text, eTrimPadding, eJustifyRight, '0', true);
    if (!DataCnvParts::checksStrictly(cnv)) cnv.TrimData(text, eTrimSpaceBoth, field.justification, ' ', true);
  }
  if (hasUnits && text.length() == 0) setToZero(text);
  if (kind.isDouble) cnv.ReplaceExponentialSign(text, field.minusText, field.plusText);
  if (field.useVirtualDecimalPoint) cnv.adjustDecimalForString(text, field.precision);
  if (!cnv.isDecimalValid(text, !field.useVirtualDecimalPoint && field.precision == core::kExplicitPoint))
    raise<KelConversionException>(site, failures::kInvalidData, "string", KelWstring(field.view()));
  return negative;
}

void decimalFrom(DataCnv& cnv, const NumberField& field, KelWstring& text) {
  const FunctionTrace trace(&cnv, "DataCnv::StrToDecimal", kDataCnvPath);
  const bool negative = numberFrom(cnv, trace.site(), kDecimal, field, text);
  if (!field.useVirtualDecimalPoint) cnv.removeTrailingDecimal(text);
  if (negative) insertUnit(text, 0, '-');
}

}  // namespace

KelWstring DataCnv::StrToDecimal(const unsigned short* text, int length, bool useVirtualDecimalPoint, int precision,
                                 const unsigned short* decimalPoint, ESign sign, const unsigned short* minusText,
                                 const unsigned short* plusText, ETrimType trim, EJustification justification,
                                 unsigned short padChar, bool padCharIsUnicode) {
  KelBufferedWstring<16u> decimal;
  decimalFrom(*this,
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
  const FunctionTrace trace(this, "DataCnv::StrToDbl", kDataCnvPath);
  const NumberField field{{text, length, sign, minusText, plusText, trim, justification, padChar, padCharIsUnicode},
                          useVirtualDecimalPoint,
                          precision,
                          decimalPoint};
  if (readsAsciiNumbers()) [[likely]] {
    if (const auto value = quickDouble(field, strictNumericChecking)) return *value;
  }
  KelBufferedWstring<16u> number;
  const bool negative = numberFrom(*this, trace.site(), kDouble, field, number);
  const double value = number.length() == 0 ? 0.0 : PWFStringTodouble(number);
  return negative ? -value : value;
}

PWFData DataCnv::StrToDec(const unsigned short* text, int length, bool useVirtualDecimalPoint, int precision,
                          const unsigned short* decimalPoint, ESign sign, const unsigned short* minusText,
                          const unsigned short* plusText, ETrimType trim, EJustification justification,
                          unsigned short padChar, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::StrToDec", kDataCnvPath);
  PWFData value = TextValue::make(DECIMAL, 0, [](unsigned short*) {});
  decimalFrom(*this,
              {{text, length, sign, minusText, plusText, trim, justification, padChar, padCharIsUnicode},
               useVirtualDecimalPoint,
               precision,
               decimalPoint},
              TextValue::text(value));
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
  // A length of 0 passes in spite of the words: NumbersFromText.BytesBecomeDecimals.
  if (length < 0)
    raiseBare<KelConversionException>(trace.site(), failures::kInvalidData, kDecimal.negativeLength, kDecimal.word, "");
  PWFData value = TextValue::make(DECIMAL, 0, [](unsigned short*) {});
  KelWstring& text = TextValue::text(value);
  toUnicodeString(text, bytes, length);
  validateDecimal(text, eSignLeadingSeparate);
  adjustDecimalForString(text, scale);
  return value;
}
