#include <unicode/decimfmt.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <string>

#include "core/decimaltext.hpp"
#include "core/numbertextwrite.hpp"
#include "datacnv/asciinumbers.hpp"
#include "datacnv/padchar.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/signform.hpp"
#include "datacnv/sourcepath.hpp"
#include "datacnv/textedit.hpp"
#include "dataconv.hpp"
#include "kelutility.hpp"
#include "support/support.hpp"
#include "values/textinplace.hpp"

namespace oxr {

// How a number looks in a field of a text message.
struct FieldLook {
  int length;  // of the field, in code units
  ESign sign;
  const unsigned short* minusText;
  const unsigned short* plusText;
  bool padField;
  EJustification justification;
  unsigned short padChar;
  bool padCharIsUnicode;
  bool showPlus = false;
};

// Where the point of a number with decimal places goes.
struct PointLook {
  bool useVirtualDecimalPoint;
  int precision;
  const unsigned short* decimalPoint;
};

}  // namespace oxr

using namespace oxr;

namespace {

// Decimal places that any double's shortest digits end within: ICU, left to itself, would round to six.
constexpr int kAllPlaces = std::numeric_limits<double>::max_digits10 - std::numeric_limits<double>::min_exponent10;

std::unique_ptr<icu::DecimalFormat> makeNotation(const icu::DecimalFormat& formatter, bool exponential) {
  std::unique_ptr<icu::DecimalFormat> made(formatter.clone());
  if (made == nullptr) throw std::bad_alloc();
  made->setMinimumIntegerDigits(1);
  made->setScientificNotation(exponential);
  made->setMaximumIntegerDigits(exponential ? 1 : 9999);
  if (exponential) made->setExponentSignAlwaysShown(true);
  made->setMaximumFractionDigits(kAllPlaces);
  return made;
}

void requireLook(const FailureSite& site, const FieldLook& look) {
  if (look.length < 1) raiseInternalError(site, numbered("Invalid output buffer length: ", look.length));
  if (look.minusText == nullptr || look.plusText == nullptr) raiseInternalError(site, "Null sign string pointer");
  if (isIncluded(look.sign)) raiseInternalError(site, numbered("Sign type invalid for context: ", look.sign));
}

// A value that a field cannot show: below zero without a sign, or too long. `shown` is the value or its text.
template <class Shown>
[[noreturn]] void raiseOutOfBounds(const FailureSite& site, const char* type, const std::string& target,
                                   const Shown& shown) {
  raise<KelConversionException>(site, failures::kOutOfBounds, type, target, shown);
}
std::string characters(int count) {
  return numbered("string (", count) + " characters)";
}

// What all buffer forms do: a text made by `format(KelWstring&)` goes to a field of exactly `length` units, which that
// sets to the text's length.
template <class Format>
void writeBuffer(const FailureSite& site, unsigned short* out, const int& length, Format format) {
  if (out == nullptr) raiseInternalError(site, "Null output buffer pointer");
  KelBufferedWstring<16u> text;
  format(text);
  std::copy_n(text.characters(), static_cast<unsigned>(length), out);
}

// The formatter's own text. A clone a notation: a switch from one to the other makes ICU build the formatter anew.
void formatDouble(DataCnv& cnv, double value, KelWstring& out, bool exponential) {
  std::unique_ptr<icu::DecimalFormat>& notation = DataCnvParts::notation(cnv, exponential);
  if (notation == nullptr) notation = makeNotation(*cnv.getDecimalFormatter(), exponential);
  icu::UnicodeString text;
  icu::FieldPosition position;
  notation->format(value, text, position);
  // A text that ICU could not make has no length.
  const auto length = static_cast<unsigned>(text.length());
  text.extract(0, text.length(), toIcu(out.resizeForOverwrite(length)), 0);
}

// Text with digits, perhaps the message's point, and no sign gets the canonical "-" where it is negative. A pad that is
// a digit goes between that and the digits, and then there is no other padding.
void padDigits(DataCnv& cnv, KelWstring& text, FieldLook& look, bool negative) {
  if (look.padField) {
    if (!look.padCharIsUnicode) look.padChar = uncheckedPadUnit(cnv, look.padChar);
    look.padCharIsUnicode = true;
    if (KelUtility::isDigit(look.padChar)) {
      std::int64_t missing = std::int64_t{look.length} - text.length();
      if (negative) missing -= static_cast<std::int64_t>(UnitView(look.minusText).size());
      if (look.showPlus && !negative) missing -= static_cast<std::int64_t>(UnitView(look.plusText).size());
      cnv.PadData(text, static_cast<int>(std::max<std::int64_t>(missing, 0)), look.justification, look.padChar, true);
      look.padField = false;
    }
  }
  if (negative) insertUnit(text, 0, '-');
}

// The message's sign text for the canonical one, and padding around all of it.
void signAndPad(DataCnv& cnv, KelWstring& text, const FieldLook& look, bool negative) {
  if (negative)
    cnv.SubstituteMinusSign(text, look.sign, look.minusText, false);
  else if (look.showPlus)
    cnv.SubstituteMinusSign(text, look.sign, look.plusText, true);
  const std::int64_t missing = std::int64_t{look.length} - text.length();
  if (look.padField && missing > 0)
    cnv.PadData(text, static_cast<int>(missing), look.justification, look.padChar, true);
}

// Brings digits to the places that the field has, cutting what is beyond them, and puts in the message's point.
void placePoint(DataCnv& cnv, KelWstring& text, const PointLook& point, bool exponential) {
  if (!exponential) {
    const bool hadDigits = text.length() != 0;
    cnv.TrimNonSignificantZeros(text);
    if (hadDigits && text.length() == 0) setToZero(text);
    if (!point.useVirtualDecimalPoint) {
      cnv.adjustPrecisionForString(text, point.precision);
    } else if (point.precision != 0) {  // else a fraction stays as it is: Format.WritesDoubles
      cnv.adjustDecimalForString(text, -std::max(point.precision, -std::numeric_limits<int>::max()));
      cnv.TrimFromDecimal(text);
    }
  }
  cnv.UpdateDecimal(text, DataCnv::US_DECIMAL.characters(), point.decimalPoint);
}

void formatInteger(DataCnv& cnv, const FailureSite& site, long value, KelWstring& out, int& length, FieldLook look,
                   const char* width) {
  requireLook(site, look);
  KelBufferedWstring<16u> number;
  cnv.Int64ToUString(value, number);
  if (look.sign == eSignNone && value < 0) raiseOutOfBounds(site, width, "string (no sign)", number);
  KelBufferedWstring<16u> text(number);
  padDigits(cnv, text, look, cnv.CheckSign(text, eSignLeadingSeparate, DataCnv::US_MINUS.characters(), look.plusText));
  signAndPad(cnv, text, look, value < 0);
  if (text.length() > static_cast<unsigned>(length)) raiseOutOfBounds(site, "integer", characters(length), number);
  out.assign(text);
  length = static_cast<int>(text.length());
}

}  // namespace

void DataCnv::Int64ToUString(long value, KelWstring& out) {
  const FunctionTrace trace(this, "DataCnv::Int64ToUString", kDataCnvPath);
  const core::IntegerText number(value);
  number.write(out.resizeForOverwrite(number.length()));
}

void DataCnv::doubleToUString(double value, KelWstring& out, bool exponential) {
  const FunctionTrace trace(this, "DataCnv::doubleToUString", kDataCnvPath);
  // The first double of the process makes the formatter: until then its symbols are not known.
  if (!readsAsciiNumbers() || !std::isfinite(value)) [[unlikely]] {
    formatDouble(*this, value, out, exponential);
    return;
  }
  const core::DoubleText number(value);
  if (!exponential)
    number.writePlain(out.resizeForOverwrite(number.plainLength()));
  else if (!number.isNines()) [[likely]]
    number.writeExponential(out.resizeForOverwrite(number.exponentialLength()));
  else  // "0.09999999999999999E+1" at times, which is ICU's to decide: Format.WritesDoublesAsTheFormatterDoes
    formatDouble(*this, value, out, true);
}

void DataCnv::StrFromInt64(long value, KelWstring& out, int& length, ESign sign, const unsigned short* minusText,
                           const unsigned short* plusText, bool padField, EJustification justification,
                           unsigned short padChar, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::StrFromInt64", kDataCnvPath);
  formatInteger(*this, trace.site(), value, out, length,
                {length, sign, minusText, plusText, padField, justification, padChar, padCharIsUnicode},
                "8-byte integer");
}

void DataCnv::StrFromInt64(long value, unsigned short* out, int& length, ESign sign, const unsigned short* minusText,
                           const unsigned short* plusText, bool padField, EJustification justification,
                           unsigned short padChar, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::StrFromInt64", kDataCnvPath);
  writeBuffer(trace.site(), out, length, [&](KelWstring& text) {
    StrFromInt64(value, text, length, sign, minusText, plusText, padField, justification, padChar, padCharIsUnicode);
  });
}

void DataCnv::StrFromInt32(int value, unsigned short* out, int& length, ESign sign, const unsigned short* minusText,
                           const unsigned short* plusText, bool padField, EJustification justification,
                           unsigned short padChar, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::StrFromInt32", kDataCnvPath);
  writeBuffer(trace.site(), out, length, [&](KelWstring& text) {
    formatInteger(*this, trace.site(), value, text, length,
                  {length, sign, minusText, plusText, padField, justification, padChar, padCharIsUnicode},
                  "4-byte integer");
  });
}

void DataCnv::StrFromDbl(double value, KelWstring& out, int& length, bool useVirtualDecimalPoint, int precision,
                         const unsigned short* decimalPoint, ESign sign, const unsigned short* minusText,
                         const unsigned short* plusText, bool padField, EJustification justification,
                         unsigned short padChar, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::StrFromDbl", kDataCnvPath);
  FieldLook look{length, sign, minusText, plusText, padField, justification, padChar, padCharIsUnicode};
  requireLook(trace.site(), look);
  const bool exponential = !useVirtualDecimalPoint && precision == core::kPlacesUntouched;
  KelBufferedWstring<16u> text;
  doubleToUString(value, text, exponential);
  if (sign == eSignNone && value < 0.0) raiseOutOfBounds(trace.site(), "double", "string (no sign)", text);
  placePoint(*this, text, {useVirtualDecimalPoint, precision, decimalPoint}, exponential);
  padDigits(*this, text, look, CheckSign(text, eSignLeadingSeparate, US_MINUS.characters(), plusText));
  signAndPad(*this, text, look, value < 0.0);  // negative zero keeps the canonical sign: Format.WritesDoubles
  if (text.length() > static_cast<unsigned>(length))
    raiseOutOfBounds(trace.site(), "double", characters(length), value);
  out.assign(text);
  length = static_cast<int>(text.length());
}

void DataCnv::StrFromDbl(double value, unsigned short* out, int& length, bool useVirtualDecimalPoint, int precision,
                         const unsigned short* decimalPoint, ESign sign, const unsigned short* minusText,
                         const unsigned short* plusText, bool padField, EJustification justification,
                         unsigned short padChar, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::StrFromDbl", kDataCnvPath);
  writeBuffer(trace.site(), out, length, [&](KelWstring& text) {
    StrFromDbl(value, text, length, useVirtualDecimalPoint, precision, decimalPoint, sign, minusText, plusText,
               padField, justification, padChar, padCharIsUnicode);
  });
}

void DataCnv::StrFromDec(const unsigned short* value, KelWstring& out, int& length, bool useVirtualDecimalPoint,
                         int precision, const unsigned short* decimalPoint, ESign sign, const unsigned short* minusText,
                         const unsigned short* plusText, bool padField, EJustification justification,
                         unsigned short padChar, bool padCharIsUnicode, bool showPlus) {
  const FunctionTrace trace(this, "DataCnv::StrFromDec", kDataCnvPath);
  if (value == nullptr) raiseInternalError(trace.site(), "Null input pointer");
  FieldLook look{length, sign, minusText, plusText, padField, justification, padChar, padCharIsUnicode, showPlus};
  requireLook(trace.site(), look);
  KelBufferedWstring<16u> text{UnitView(value)};
  validateDecimal(text, eSignLeadingSeparate);
  const bool negative = CheckSign(text, eSignLeadingSeparate, US_MINUS.characters(), plusText);
  if (negative && sign == eSignNone) raiseOutOfBounds(trace.site(), "decimal", "string (no sign)", value);
  placePoint(*this, text, {useVirtualDecimalPoint, precision, decimalPoint}, false);
  padDigits(*this, text, look, negative);
  signAndPad(*this, text, look, text[0] == '-');
  if (text.length() > static_cast<unsigned>(length))
    raise<KelConversionException>(trace.site(), failures::kTooLong, "decimal", "string", length, value);
  out.assign(text);
  length = static_cast<int>(text.length());
}

void DataCnv::StrFromDec(const unsigned short* value, unsigned short* out, int& length, bool useVirtualDecimalPoint,
                         int precision, const unsigned short* decimalPoint, ESign sign, const unsigned short* minusText,
                         const unsigned short* plusText, bool padField, EJustification justification,
                         unsigned short padChar, bool padCharIsUnicode, bool showPlus) {
  const FunctionTrace trace(this, "DataCnv::StrFromDec", kDataCnvPath);
  writeBuffer(trace.site(), out, length, [&](KelWstring& text) {
    StrFromDec(value, text, length, useVirtualDecimalPoint, precision, decimalPoint, sign, minusText, plusText,
               padField, justification, padChar, padCharIsUnicode, showPlus);
  });
}

void DataCnv::StrFromDec(const unsigned short* value, unsigned char* bytes, int& size, int scale) {
  const FunctionTrace trace(this, "DataCnv::StrFromDec", kDataCnvPath);
  if (value == nullptr) raiseInternalError(trace.site(), "Null input pointer");
  if (bytes == nullptr) raiseInternalError(trace.site(), "Null output buffer pointer");
  if (size < 1) raiseInternalError(trace.site(), numbered("Invalid output buffer size: ", size));
  KelBufferedWstring<16u> text{UnitView(value)};
  validateDecimal(text, eSignLeadingSeparate);
  adjustDecimalForString(text, -std::max(scale, -std::numeric_limits<int>::max()));
  const int room = size;
  const UErrorCode status = fromUnicodeString(text, bytes, size);
  if (status == U_BUFFER_OVERFLOW_ERROR)
    raise<KelConversionException>(trace.site(), failures::kTooLong, "decimal", "string", numbered("", room) + " bytes",
                                  text);
  if (U_FAILURE(status))
    raiseInternalError(trace.site(), numbered("Conversion to unicode string failed. Error code: ", status));
}

void DataCnv::StrFromDbl(double value, unsigned short* out, int& length) {
  const FunctionTrace trace(this, "DataCnv::StrFromDbl", kDataCnvPath);
  if (out == nullptr) raiseInternalError(trace.site(), "Null output buffer pointer");
  KelBufferedWstring<16u> text;
  doubleToUString(value, text, true);
  if (std::int64_t{text.length()} >= length) raiseOutOfBounds(trace.site(), "double", characters(length), value);
  std::copy_n(text.characters(), text.length() + 1, out);
  length = static_cast<int>(text.length());
}

PWFData DataCnv::StrFromDbl(double value) {
  const FunctionTrace trace(this, "DataCnv::StrFromDbl", kDataCnvPath);
  PWFData text = TextValue::make(STRING, 0, [](unsigned short*) {});
  doubleToUString(value, TextValue::text(text), true);
  return text;
}

PWFData DataCnv::StrFromInt64(long value) {
  const FunctionTrace trace(this, "DataCnv::StrFromInt64", kDataCnvPath);
  PWFData text = TextValue::make(STRING, 0, [](unsigned short*) {});
  Int64ToUString(value, TextValue::text(text));
  return text;
}

PWFData DataCnv::StrFromDec(const unsigned short* value) {
  const FunctionTrace trace(this, "DataCnv::StrFromDec", kDataCnvPath);
  PWFData text = TextValue::make(STRING, 0, [](unsigned short*) {});
  int length = std::numeric_limits<int>::max();
  StrFromDec(value, TextValue::text(text), length, false, core::kPlacesOfValue, US_DECIMAL.characters(),
             eSignLeadingSeparate, US_MINUS.characters(), US_PLUS.characters(), false, eJustifyLeft, '0', true, false);
  return text;
}
