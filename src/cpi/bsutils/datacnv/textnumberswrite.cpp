// Numbers as text: in fields of messages, in plain forms, and a decimal in the code page.
//
// All field forms go the same way. The number gets its canonical text, the text its decimal places and the message's
// point, then padding and the message's sign. A pad that is a digit goes between sign and digits, any other around all.

#include <unicode/decimfmt.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <new>
#include <string>

#include "core/decimaltext.hpp"
#include "core/numbertextwrite.hpp"
#include "datacnv/formatters.hpp"
#include "datacnv/padchar.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/sourcepath.hpp"
#include "datacnv/textedit.hpp"
#include "datacnv/textfield.hpp"
#include "dataconv.hpp"
#include "kelforkhold.hpp"
#include "kelutility.hpp"
#include "support/fastway.hpp"
#include "support/scratch.hpp"
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

// So many decimal places hold the shortest digits of any double. ICU, left to itself, would round to six places.
constexpr int kAllPlaces = std::numeric_limits<double>::max_digits10 - std::numeric_limits<double>::min_exponent10;

// A formatter for one of the two notations, made from the object's own.
std::unique_ptr<icu::DecimalFormat> makeNotation(const icu::DecimalFormat& formatter, bool exponential) {
  const KelForkHold hold;
  std::unique_ptr<icu::DecimalFormat> made = cloneWhole(formatter);
  made->setMinimumIntegerDigits(1);
  made->setScientificNotation(exponential);
  made->setMaximumIntegerDigits(exponential ? 1 : 9999);
  if (exponential) made->setExponentSignAlwaysShown(true);
  made->setMaximumFractionDigits(kAllPlaces);
  requireWhole(*made);
  writeFirstNumbers(*made);
  return made;
}

// Tests the arguments that all field forms have, in the order that decides which of several failures is told.
void requireLook(const FailureSite& site, const FieldLook& look) {
  if (look.length < 1) raiseInternalError(site, numbered("Invalid output buffer length: ", look.length));
  requireSignTexts(site, look.minusText, look.plusText);
  requireSeparateSign(site, look.sign);
}

// Raises the failure of a value that a field cannot show, since it is below zero without a sign or too long. `shown` is
// the value or its text.
template <class Shown>
[[noreturn]] void raiseOutOfBounds(const FailureSite& site, const char* type, const std::string& target,
                                   const Shown& shown) {
  raise<KelConversionException>(site, failures::kOutOfBounds, type, target, shown);
}
// What a field is called in that failure.
std::string fieldOf(int count) {
  return numbered("string (", count) + " characters)";
}

// What all buffer forms do: a text that `write(KelWstring&)` makes goes into a field of exactly `length` units, which
// `write` sets to the text's length. No terminator follows it.
template <class Write>
void writeBuffer(const FailureSite& site, unsigned short* out, const int& length, Write write) {
  if (out == nullptr) raiseInternalError(site, "Null output buffer pointer");
  KelBufferedWstring<16u> text;
  write(text);
  std::copy_n(text.characters(), static_cast<unsigned>(length), out);
}

// Texts that are written at once get the room for all that is written, and then their length.
void writeNumber(const core::IntegerText& number, KelWstring& out) {
  if (number.isShort()) [[likely]] {
    number.writeShort(out.resizeForOverwrite(core::IntegerText::kShortUnits));
    out.cutTo(number.length());
  } else {
    number.write(out.resizeForOverwrite(number.length()));
  }
}
void writeNumber(const core::DoubleText& number, KelWstring& out) {
  using core::DoubleText;
  if (!number.isUsual()) {
    number.write(out.resizeForOverwrite(number.length()));
  } else if (unsigned short* const room = out.resizeInPlace(DoubleText::kUsualUnits)) {
    number.writeUsual(room);
    out.cutTo(number.length());
  } else {
    std::array<unsigned short, DoubleText::kUsualUnits> scratch;
    number.writeUsual(scratch.data());
    std::copy_n(scratch.data(), number.length(), out.resizeForOverwrite(number.length()));
  }
}

// Serves finite doubles while the formatter's symbols are ASCII.
inline bool writeDoubleFast(double value, KelWstring& out, bool exponential) {
  // The first double of the process goes the general way and makes the formatter, whose symbols are not known before.
  if (!DataCnvParts::hasAsciiSymbols() || !std::isfinite(value)) [[unlikely]]
    return false;
  const core::DoubleText number(value);
  if (!exponential) {
    writeNumber(number, out);
    return true;
  }
  // ICU writes some of these as "0.09999999999999999E+1". Which ones is its own affair.
  if (number.startsWithNines()) [[unlikely]]
    return false;
  number.writeExponential(out.resizeForOverwrite(number.exponentialLength()));
  return true;
}

// Writes the formatter's own text. Each notation has a formatter, since a switch from one to the other makes ICU build
// it anew.
[[gnu::noinline]] void writeDoubleGeneral(DataCnv& cnv, double value, KelWstring& out, bool exponential) {
  const FunctionTrace trace(&cnv, "DataCnv::doubleToUString", kDataCnvPath);
  std::unique_ptr<icu::DecimalFormat>& notation = DataCnvParts::notation(cnv, exponential);
  if (notation == nullptr) notation = makeNotation(*cnv.getDecimalFormatter(), exponential);
  icu::UnicodeString text;
  UErrorCode status = U_ZERO_ERROR;
  notation->format(value, text, nullptr, status);
  // Every number has a text: what is none, or has no length, found no memory.
  if (U_FAILURE(status) || requireMemory(text).isEmpty()) throw std::bad_alloc();
  const auto length = static_cast<unsigned>(text.length());
  text.extract(0, text.length(), toIcu(out.resizeForOverwrite(length)), 0);
}

// Pads the text by `missing` units; by none where it is longer than its field, which is for the caller to refuse.
void fill(DataCnv& cnv, KelWstring& text, const FieldLook& look, std::int64_t missing) {
  cnv.PadData(text, static_cast<int>(std::max<std::int64_t>(missing, 0)), look.justification, look.padChar, true);
}

// Takes a text of digits, perhaps with the message's point, and no sign. It gets the canonical "-" where the number is
// negative. A pad that is a digit goes between that and the digits, and then there is no other padding.
void padDigits(DataCnv& cnv, KelWstring& text, FieldLook& look, bool negative) {
  if (look.padField) {
    if (!look.padCharIsUnicode) look.padChar = uncheckedPadUnit(cnv, look.padChar);
    look.padCharIsUnicode = true;
    if (KelUtility::isDigit(look.padChar)) {
      // Room is left for the sign that is still to come.
      std::int64_t missing = std::int64_t{look.length} - text.length();
      if (negative) missing -= static_cast<std::int64_t>(UnitView(look.minusText).size());
      if (look.showPlus && !negative) missing -= static_cast<std::int64_t>(UnitView(look.plusText).size());
      fill(cnv, text, look, missing);
      look.padField = false;
    }
  }
  if (negative) insertUnit(text, 0, '-');
}

// Replaces the canonical sign by the message's, and pads all of it. The families differ in what they call negative.
void signAndPad(DataCnv& cnv, KelWstring& text, const FieldLook& look, bool negative) {
  if (negative)
    cnv.SubstituteMinusSign(text, look.sign, look.minusText, false);
  else if (look.showPlus)
    cnv.SubstituteMinusSign(text, look.sign, look.plusText, true);
  if (look.padField) fill(cnv, text, look, std::int64_t{look.length} - text.length());
}

// The count the other way round. The least number has no counterpart and becomes the greatest; both shift out of sight.
int reversed(int places) {
  return -std::max(places, -std::numeric_limits<int>::max());
}

// Brings digits to the places that the field has, cutting what is beyond them, and puts in the message's point.
void placePoint(DataCnv& cnv, KelWstring& text, const PointLook& point, bool exponential) {
  if (!exponential) {
    const bool hadDigits = text.length() != 0;  // zero comes out of the next step empty, and gets its digit back
    cnv.TrimNonSignificantZeros(text);
    if (hadDigits && text.length() == 0) setToZero(text);
    if (!point.useVirtualDecimalPoint) {
      cnv.adjustPrecisionForString(text, point.precision);
    } else if (point.precision != 0) {  // with 0 places a fraction stays as it is: NumbersToText.WriteFields
      cnv.adjustDecimalForString(text, reversed(point.precision));
      cnv.TrimFromDecimal(text);
    }
  }
  cnv.UpdateDecimal(text, DataCnv::US_DECIMAL.characters(), point.decimalPoint);
}

// The field forms of integers. Only a text that fits reaches `out` and `length`. `width` names the type in a failure.
void writeInteger(DataCnv& cnv, const FailureSite& site, long value, KelWstring& out, int& length, FieldLook look,
                  const char* width) {
  requireLook(site, look);
  KelBufferedWstring<16u> number;  // stays as it is, for the failures
  cnv.Int64ToUString(value, number);
  if (look.sign == eSignNone && value < 0) raiseOutOfBounds(site, width, "string (no sign)", number);
  KelBufferedWstring<16u> text(number);
  // A text that begins with the message's plus text loses that, even if it is a digit: NumbersToText.WriteFields.
  padDigits(cnv, text, look, cnv.CheckSign(text, eSignLeadingSeparate, DataCnv::US_MINUS.characters(), look.plusText));
  signAndPad(cnv, text, look, value < 0);
  if (text.length() > static_cast<unsigned>(length)) raiseOutOfBounds(site, "integer", fieldOf(length), number);
  out.assign(text);
  length = static_cast<int>(text.length());
}

// The plain forms are made of the buffer forms, which trace shows. A text that the fast ways serve is written where it
// stays, and needs no field.
constexpr int kPlainUnits = 100;  // more than any integer or exponential double has

// Serves every integer.
bool writePlainFast(long value, KelWstring& out) {
  writeNumber(core::IntegerText(value), out);
  return true;
}

bool writePlainFast(double value, KelWstring& out) {
  return writeDoubleFast(value, out, true);
}

// Serves every decimal that is one.
bool writePlainFast(const unsigned short* value, KelWstring& out) {
  if (value == nullptr) return false;
  const auto decimal = core::plainDecimal(value);
  if (!decimal) return false;
  decimal->write(out.resizeForOverwrite(decimal->length()));
  return true;
}

[[gnu::cold, gnu::noinline]] void writePlainGeneral(DataCnv& cnv, long value, KelWstring& out) {
  const FunctionTrace trace(&cnv, "DataCnv::StrFromInt64", kDataCnvPath);
  unsigned short text[kPlainUnits];
  int length = kPlainUnits;
  cnv.StrFromInt64(value, text, length, eSignLeadingSeparate, DataCnv::US_MINUS.characters(),
                   DataCnv::US_PLUS.characters(), false, eJustifyLeft, '0', true);
  out.assignInternal(text, static_cast<unsigned>(length), 0);
}

[[gnu::cold, gnu::noinline]] void writePlainGeneral(DataCnv& cnv, double value, KelWstring& out) {
  const FunctionTrace trace(&cnv, "DataCnv::StrFromDbl", kDataCnvPath);
  unsigned short text[kPlainUnits];
  int length = kPlainUnits;
  cnv.StrFromDbl(value, text, length);
  out.assignInternal(text, static_cast<unsigned>(length), 0);
}

// Only a leading zero can be added to a decimal. A null text is for the field form to refuse.
[[gnu::cold, gnu::noinline]] void writePlainGeneral(DataCnv& cnv, const unsigned short* value, KelWstring& out) {
  const FunctionTrace trace(&cnv, "DataCnv::StrFromDec", kDataCnvPath);
  const std::size_t units = value == nullptr ? 0 : UnitView(value).size();
  Scratch<unsigned short, kPlainUnits> text(units + 2);
  int length = static_cast<int>(text.size());
  cnv.StrFromDec(value, text.data(), length, false, core::kPlacesOfValue, DataCnv::US_DECIMAL.characters(),
                 eSignLeadingSeparate, DataCnv::US_MINUS.characters(), DataCnv::US_PLUS.characters(), false,
                 eJustifyLeft, '0', true, false);
  out.assignInternal(text.data(), static_cast<unsigned>(length), 0);
}

template <class Number>
[[gnu::always_inline]] inline PWFData plainText(DataCnv& cnv, Number value) {
  PWFData text = TextInPlace::make(STRING);
  KelWstring& out = TextInPlace::text(text);
  if (!wentFast([&] { return writePlainFast(value, out); })) [[unlikely]] {
    writePlainGeneral(cnv, value, out);
    TextInPlace::traceMade(text);
  }
  return text;
}

}  // namespace

void DataCnv::Int64ToUString(long value, KelWstring& out) {
  const FunctionTrace trace(this, "DataCnv::Int64ToUString", kDataCnvPath);
  writeNumber(core::IntegerText(value), out);
}

void DataCnv::doubleToUString(double value, KelWstring& out, bool exponential) {
  if (!wentFast([&] { return writeDoubleFast(value, out, exponential); })) [[unlikely]]
    writeDoubleGeneral(*this, value, out, exponential);
}

void DataCnv::StrFromInt64(long value, KelWstring& out, int& length, ESign sign, const unsigned short* minusText,
                           const unsigned short* plusText, bool padField, EJustification justification,
                           unsigned short padChar, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::StrFromInt64", kDataCnvPath);
  writeInteger(*this, trace.site(), value, out, length,
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
    writeInteger(*this, trace.site(), value, text, length,
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
  // A virtual point excludes the exponential form; the selector then counts as a number of places.
  const bool exponential = !useVirtualDecimalPoint && precision == core::kPlacesUntouched;
  KelBufferedWstring<16u> text;
  doubleToUString(value, text, exponential);
  if (sign == eSignNone && value < 0.0) raiseOutOfBounds(trace.site(), "double", "string (no sign)", text);
  placePoint(*this, text, {useVirtualDecimalPoint, precision, decimalPoint}, exponential);
  padDigits(*this, text, look, CheckSign(text, eSignLeadingSeparate, US_MINUS.characters(), plusText));
  signAndPad(*this, text, look, value < 0.0);  // negative zero keeps the canonical sign: NumbersToText.WriteFields
  if (text.length() > static_cast<unsigned>(length)) raiseOutOfBounds(trace.site(), "double", fieldOf(length), value);
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
  // Negative zero has a sign too, and needs room for it in the field.
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
  adjustDecimalForString(text, reversed(scale));
  const int room = size;  // what the field had, for the failure: the conversion sets `size`
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
  if (std::int64_t{text.length()} >= length) raiseOutOfBounds(trace.site(), "double", fieldOf(length), value);
  std::copy_n(text.characters(), text.length() + 1, out);  // with its terminator
  length = static_cast<int>(text.length());
}

PWFData DataCnv::StrFromDbl(double value) {
  return plainText(*this, value);
}

PWFData DataCnv::StrFromInt64(long value) {
  return plainText(*this, value);
}

PWFData DataCnv::StrFromDec(const unsigned short* value) {
  return plainText(*this, value);
}
