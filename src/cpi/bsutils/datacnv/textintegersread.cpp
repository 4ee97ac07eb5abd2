#include <unicode/uchar.h>

#include <algorithm>
#include <cstring>

#include "core/numbertextread.hpp"
#include "datacnv/padchar.hpp"
#include "datacnv/signform.hpp"
#include "datacnv/sourcepath.hpp"
#include "datacnv/textfield.hpp"
#include "dataconv.hpp"
#include "support/support.hpp"

namespace oxr {

// What the two readings of an integer differ in.
struct IntegerKind {
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

constexpr IntegerKind kInt32 = {"Null input pointer passed into DataCnv::StrToInt32",
                                "Null sign string pointer passed into DataCnv::StrToInt32",
                                "Tried to convert a zero length string to a integer",
                                true,
                                "2147483647",
                                "2147483648",
                                "4-byte integer"};
constexpr IntegerKind kInt64 = {"Null input pointer passed into DataCnv::StrToInt64",
                                "Null sign string pointer",
                                "Tried to convert a zero length string to an integer",
                                false,
                                "9223372036854775807",
                                "9223372036854775808",
                                "8-byte integer"};

void requireField(const FailureSite& site, const IntegerKind& kind, const TextField& field) {
  if (field.text == nullptr) raiseInternalError(site, kind.nullText);
  if (field.length < 0) raiseBare<KelConversionException>(site, failures::kInvalidData, kind.negativeLength, "integer");
  if (field.minusText == nullptr || field.plusText == nullptr) raiseInternalError(site, kind.nullSignText);
  if (isIncluded(field.sign) && !kind.takesIncludedSigns)
    raiseInternalError(site, numbered("Sign type invalid for context: ", field.sign));
}

// The value of a frequent field: ASCII digits, fewer than any limit has.
std::optional<PWFUInt64> quickInteger(const IntegerKind& kind, const TextField& field) {
  if (debugTraceOn()) return {};
  const auto number = bareNumber(field);
  if (!number || number->text.size() >= std::strlen(kind.positiveLimit) || core::aboveZero(number->text[0]) > 9)
    return {};
  const core::IntegerReading reading = core::readInteger(number->text);
  if (reading.fault != core::IntegerReading::Fault::none) return {};
  const auto magnitude = static_cast<PWFUInt64>(reading.value);
  return number->negative ? 0 - magnitude : magnitude;
}

bool isDigit(unsigned short unit) {
  return u_isdigit(unit) != 0;
}

// The value in two's complement, for the caller to narrow.
PWFUInt64 integerFrom(DataCnv& cnv, const FailureSite& site, const IntegerKind& kind, const TextField& field) {
  if (const auto quick = quickInteger(kind, field)) return *quick;
  requireField(site, kind, field);
  KelBufferedWstring<16u> digits(field.view());
  const unsigned short pad = field.padCharIsUnicode ? field.padChar : uncheckedPadUnit(cnv, field.padChar);
  cnv.TrimData(digits, field.trim, field.justification, pad, true);
  if (digits.length() == 0) return 0;
  const bool negative = cnv.CheckSign(digits, field.sign, field.minusText, field.plusText);
  if (!std::all_of(digits.view().begin(), digits.view().end(), isDigit))
    raise<KelConversionException>(site, failures::kInvalidData, "string", digits);
  if (!core::isWithin(digits.view(), negative ? kind.negativeLimit : kind.positiveLimit))
    raise<KelConversionException>(site, failures::kOutOfBounds, "string", kind.width, KelWstring(field.view()));
  // The magnitude first and the minus last lets the least value in.
  const PWFUInt64 magnitude = core::sumOfDigits(digits.view());
  return negative ? 0 - magnitude : magnitude;
}

// All of UStringToInt64.
[[gnu::cold, gnu::noinline]] PWFInt64 tracedInteger(DataCnv& cnv, const KelWstring& digits) {
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
  const FunctionTrace trace(this, "DataCnv::StrToInt32", kDataCnvPath);
  return static_cast<PWFInt32>(
      integerFrom(*this, trace.site(), kInt32,
                  {text, length, sign, minusText, plusText, trim, justification, padChar, padCharIsUnicode}));
}

PWFInt64 DataCnv::StrToInt64(const unsigned short* text, int length, ESign sign, const unsigned short* minusText,
                             const unsigned short* plusText, ETrimType trim, EJustification justification,
                             unsigned short padChar, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::StrToInt64", kDataCnvPath);
  return static_cast<PWFInt64>(
      integerFrom(*this, trace.site(), kInt64,
                  {text, length, sign, minusText, plusText, trim, justification, padChar, padCharIsUnicode}));
}

PWFInt64 DataCnv::UStringToInt64(const KelWstring& digits) {
  const core::IntegerReading reading = core::readInteger(digits.view());
  if (reading.fault == core::IntegerReading::Fault::none && !debugTraceOn()) [[likely]]
    return reading.value;
  return tracedInteger(*this, digits);
}
