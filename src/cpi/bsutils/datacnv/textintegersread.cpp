// Integers of text fields, and plain integer texts. A field's integer is summed up without regard to its range, since
// its text has been compared with the limit before; a plain text's range is tested digit by digit.

#include <unicode/uchar.h>

#include <algorithm>
#include <cstring>

#include "core/numbertextread.hpp"
#include "datacnv/padchar.hpp"
#include "datacnv/sourcepath.hpp"
#include "datacnv/textfield.hpp"
#include "dataconv.hpp"
#include "support/fastway.hpp"
#include "support/support.hpp"

namespace oxr {

// What the two readings of an integer differ in.
struct IntegerKind {
  const char* function;
  const char* nullText;
  const char* nullSignText;
  const char* negativeLength;
  bool takesIncludedSigns;
  const char* positiveLimit;
  const char* negativeLimit;
  const char* width;
};

}  // namespace oxr

using namespace oxr;

namespace {

constexpr IntegerKind kInt32 = {"DataCnv::StrToInt32",
                                "Null input pointer passed into DataCnv::StrToInt32",
                                "Null sign string pointer passed into DataCnv::StrToInt32",
                                "Tried to convert a zero length string to a integer",
                                true,
                                "2147483647",
                                "2147483648",
                                "4-byte integer"};
constexpr IntegerKind kInt64 = {"DataCnv::StrToInt64",
                                "Null input pointer passed into DataCnv::StrToInt64",
                                "Null sign string pointer",
                                "Tried to convert a zero length string to an integer",
                                false,
                                "9223372036854775807",
                                "9223372036854775808",
                                "8-byte integer"};

// Serves every integer that can be read.
inline bool readDigits(UnitView text, PWFInt64& value) {
  if (core::readShortInteger(text, value)) [[likely]]
    return true;
  const core::IntegerReading reading = core::readInteger(text);
  value = reading.value;
  return reading.fault == core::IntegerReading::Fault::none;
}

// Serves ASCII digits, fewer than the limit has, so that no value is out of range. The value is in two's complement,
// for the caller to narrow.
inline bool readFieldFast(const IntegerKind& kind, const TextField& field, PWFUInt64& value) {
  const auto number = bareNumber(field);
  if (!number || number->text.size() >= std::strlen(kind.positiveLimit)) return false;
  if (core::digitValue(number->text[0]) > 9) return false;  // what follows would take a sign
  PWFInt64 read;
  if (!readDigits(number->text, read)) return false;
  const auto magnitude = static_cast<PWFUInt64>(read);
  value = number->negative ? 0 - magnitude : magnitude;
  return true;
}

// Tests the arguments in the order that decides which of several failures is told. A length of 0 is no failure.
void requireField(const FailureSite& site, const IntegerKind& kind, const TextField& field) {
  if (field.text == nullptr) raiseInternalError(site, kind.nullText);
  if (field.length < 0) raiseBare<KelConversionException>(site, failures::kInvalidData, kind.negativeLength, "integer");
  requireSignTexts(site, field.minusText, field.plusText, kind.nullSignText);
  if (!kind.takesIncludedSigns) requireSeparateSign(site, field.sign);
}

bool isDigit(unsigned short unit) {
  return u_isdigit(unit) != 0;
}

// Reads any field. The digit test is ICU's, and the sum takes the digits that it lets pass for ASCII ones, so that
// those of other scripts give a value of their own: NumbersFromText.ReadIntegers.
[[gnu::noinline]] PWFUInt64 readFieldGeneral(DataCnv& cnv, const IntegerKind& kind, const TextField& field) {
  const FunctionTrace trace(&cnv, kind.function, kDataCnvPath);
  requireField(trace.site(), kind, field);
  KelBufferedWstring<16u> digits(field.view());
  const unsigned short pad = field.padCharIsUnicode ? field.padChar : uncheckedPadUnit(cnv, field.padChar);
  cnv.TrimData(digits, field.trim, field.justification, pad, true);
  if (digits.length() == 0) return 0;
  const bool negative = cnv.CheckSign(digits, field.sign, field.minusText, field.plusText);
  // A text that is no number is told without its sign, a number out of range with all of its field.
  if (!std::all_of(digits.view().begin(), digits.view().end(), isDigit))
    raise<KelConversionException>(trace.site(), failures::kInvalidData, "string", digits);
  if (!core::isWithin(digits.view(), negative ? kind.negativeLimit : kind.positiveLimit))
    raise<KelConversionException>(trace.site(), failures::kOutOfBounds, "string", kind.width, KelWstring(field.view()));
  // The magnitude first and the minus last lets the least value in.
  const PWFUInt64 magnitude = core::sumOfDigits(digits.view());
  return negative ? 0 - magnitude : magnitude;
}

[[gnu::cold, gnu::noinline]] PWFInt64 readIntegerGeneral(DataCnv& cnv, const KelWstring& digits) {
  const FunctionTrace trace(&cnv, "DataCnv::UStringToInt64", kDataCnvPath);
  const core::IntegerReading reading = core::readInteger(digits.view());
  using Fault = core::IntegerReading::Fault;
  if (reading.fault == Fault::noDigit)
    raise<KelConversionException>(trace.site(), failures::kInvalidData, "string", digits);
  if (reading.fault == Fault::outOfBounds)
    raise<KelConversionException>(trace.site(), failures::kOutOfBounds, "string", "8-byte integer", digits);
  return reading.value;
}

}  // namespace

PWFInt32 DataCnv::StrToInt32(const unsigned short* text, int length, ESign sign, const unsigned short* minusText,
                             const unsigned short* plusText, ETrimType trim, EJustification justification,
                             unsigned short padChar, bool padCharIsUnicode) {
  const TextField field{text, length, sign, minusText, plusText, trim, justification, padChar, padCharIsUnicode};
  PWFUInt64 value;
  if (!wentFast([&] { return readFieldFast(kInt32, field, value); })) value = readFieldGeneral(*this, kInt32, field);
  return static_cast<PWFInt32>(value);
}

PWFInt64 DataCnv::StrToInt64(const unsigned short* text, int length, ESign sign, const unsigned short* minusText,
                             const unsigned short* plusText, ETrimType trim, EJustification justification,
                             unsigned short padChar, bool padCharIsUnicode) {
  const TextField field{text, length, sign, minusText, plusText, trim, justification, padChar, padCharIsUnicode};
  PWFUInt64 value;
  if (!wentFast([&] { return readFieldFast(kInt64, field, value); })) value = readFieldGeneral(*this, kInt64, field);
  return static_cast<PWFInt64>(value);
}

PWFInt64 DataCnv::UStringToInt64(const KelWstring& digits) {
  PWFInt64 value;
  if (wentFast([&] { return readDigits(digits.view(), value); })) [[likely]]
    return value;
  return readIntegerGeneral(*this, digits);
}
