// Standard logical strings: the one text that each logical type has without any message model. A table says which
// members make it and read it.

#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "core/hextext.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "kelalloc.hpp"
#include "support/support.hpp"
#include "values/textinplace.hpp"

using namespace oxr;

namespace {

constexpr int kTerminated = -1;  // the length of a text that is zero-terminated
constexpr unsigned short kDateTimePattern[] = {'I', 0};

// What is read as a boolean, in any case, in the order of the tests. The first two are also what is written.
struct BooleanWord {
  const char16_t* text;
  std::uint32_t length;
  bool value;
};
constexpr BooleanWord kBooleanWords[] = {{u"true", 4, true}, {u"false", 5, false}, {u"1", 1, true}, {u"0", 1, false}};

// ---- Texts to values, and values to texts: a pair for each type.

PWFData readString(DataCnv&, const FailureSite&, const unsigned short* text, int length) {
  return PWFData(text, length);
}
PWFData writeString(DataCnv&, const PWFData& value) {
  return PWFData(value.getPWFStringValue());
}

PWFData readInteger(DataCnv& cnv, const FailureSite&, const unsigned short* text, int length) {
  return PWFData(cnv.StrToInt64(text, length, eSignLeadingSeparate, DataCnv::US_MINUS.characters(),
                                DataCnv::US_PLUS.characters(), eTrimNone, eJustifyLeft, '0', true),
                 false);
}
PWFData writeInteger(DataCnv& cnv, const PWFData& value) {
  return cnv.StrFromInt64(value.getInt64Value());
}

PWFData readFloat(DataCnv& cnv, const FailureSite&, const unsigned short* text, int length) {
  return PWFData(cnv.StrToDbl(text, length));
}
PWFData writeFloat(DataCnv& cnv, const PWFData& value) {
  return cnv.StrFromDbl(value.getDoubleValue());
}

PWFData readBinary(DataCnv& cnv, const FailureSite&, const unsigned short* text, int length) {
  return cnv.StrToBin(text, length);
}
PWFData writeBinary(DataCnv& cnv, const PWFData& value) {
  return cnv.StrFromBin(value);
}

// The length counts for nothing: StandardStrings.AreRead.
PWFData readBoolean(DataCnv&, const FailureSite& site, const unsigned short* text, int) {
  const auto* const word =
      std::find_if(std::begin(kBooleanWords), std::end(kBooleanWords), [text](const BooleanWord& candidate) {
        return u_strcasecmp(toIcu(text), candidate.text, U_FOLD_CASE_DEFAULT) == 0;
      });
  if (word == std::end(kBooleanWords))
    raiseBare<KelConversionException>(site, failures::kInvalidData, "Boolean value not recognised", "boolean", text);
  return PWFData(word->value);
}
PWFData writeBoolean(DataCnv&, const PWFData& value) {
  const BooleanWord& word = kBooleanWords[value.getBoolValue() ? 0 : 1];
  return TextInPlace::make(STRING, word.length, [&](unsigned short* out) { std::copy_n(word.text, word.length, out); });
}

PWFData readInterval(DataCnv& cnv, const FailureSite&, const unsigned short* text, int length) {
  return PWFData(cnv.StrToInterval(text, length));
}
PWFData writeInterval(DataCnv& cnv, const PWFData& value) {
  return cnv.StrFromInterval(value.getIntervalValue());
}

PWFData readDateTime(DataCnv& cnv, const FailureSite&, const unsigned short* text, int) {
  return PWFData(cnv.StrToDateTime(text, kDateTimePattern, kTerminated));
}
PWFData writeDateTime(DataCnv& cnv, const PWFData& value) {
  return cnv.StrFromDateTime(value.getDateTimeValue(), kDateTimePattern, nullptr);
}

PWFData readDecimal(DataCnv& cnv, const FailureSite&, const unsigned short* text, int length) {
  return cnv.StrToDec(text, length, false, 0, DataCnv::US_DECIMAL.characters(), eSignLeadingSeparate,
                      DataCnv::US_MINUS.characters(), DataCnv::US_PLUS.characters(), eTrimNone, eJustifyLeft, '0',
                      true);
}
PWFData writeDecimal(DataCnv& cnv, const PWFData& value) {
  return cnv.StrFromDec(value.getDecimalValue());
}

struct StandardForm {
  ELogicalType type;
  const char* name;   // as the failure has it
  bool isTerminated;  // the text is read up to its terminator, whatever its length is said to be
  PWFData (*read)(DataCnv& cnv, const FailureSite& site, const unsigned short* text, int length);
  PWFData (*write)(DataCnv& cnv, const PWFData& value);
};
constexpr StandardForm kForms[] = {
    {STRING, "String", false, readString, writeString},
    {INTEGER, "Integer", false, readInteger, writeInteger},
    {FLOAT, "Float", false, readFloat, writeFloat},
    {BINARY, "Binary", false, readBinary, writeBinary},
    {BOOLEAN, "Boolean", true, readBoolean, writeBoolean},
    {INTERVAL, "Interval", false, readInterval, writeInterval},
    {DATETIME, "DateTime", true, readDateTime, writeDateTime},
    {DECIMAL, "Decimal", false, readDecimal, writeDecimal},
};

// The form of a type. A type without one is a mistake of the caller.
const StandardForm& formOf(const FailureSite& site, ELogicalType type) {
  const auto* const form = std::find_if(std::begin(kForms), std::end(kForms),
                                        [type](const StandardForm& candidate) { return candidate.type == type; });
  if (form == std::end(kForms))
    raise<KelParserException>(site, failures::kInternalError, "Should not call this method without a valid type");
  return *form;
}

}  // namespace

PWFData DataCnv::StandardStrToData(ELogicalType type, const unsigned short* text, int length) {
  const FunctionTrace trace(this, "DataCnv::StandardStrToData", kDataCnvPath);
  if (text == nullptr)
    raise<KelParserException>(trace.site(), failures::kInternalError,
                              "Should not call this method with null a null string!");
  const StandardForm& form = formOf(trace.site(), type);
  try {
    return form.read(*this, trace.site(), text, length);
  } catch (const KelLog::ComplexItem& cause) {
    // Of the others only durations know a length of -1; to the rest it is a bad length, and nothing may be terminated.
    const bool isTerminated = form.isTerminated || (type == INTERVAL && length == kTerminated);
    const UnitView whole = isTerminated ? UnitView(text) : UnitView(text, static_cast<unsigned>(std::max(length, 0)));
    raise<KelConversionException>(trace.site(), failures::kInvalidLogicalString, form.name, KelWstring(whole), cause);
  }
}

PWFData DataCnv::StandardStrToData(ELogicalType type, const KelWstring& text) {
  const FunctionTrace trace(this, "DataCnv::StandardStrToData", kDataCnvPath);
  return StandardStrToData(type, text.characters(), static_cast<int>(text.length()));
}

PWFData DataCnv::StandardStrFromData(const PWFData& value) {
  const FunctionTrace trace(this, "DataCnv::StandardStrFromData", kDataCnvPath);
  if (value.isNothing() || value.isNull())
    raise<KelParserException>(trace.site(), failures::kInternalError, "Should not call this method with null data");
  return formOf(trace.site(), value.getDataLogicalType()).write(*this, value);
}

PWFData DataCnv::StrToBin(const unsigned short* text, int length) {
  const FunctionTrace trace(this, "DataCnv::StrToBin", kDataCnvPath);
  if (text == nullptr) raiseInternalError(trace.site(), "Null input pointer");
  if (length < 0)
    raiseBare<KelConversionException>(trace.site(), failures::kInvalidData, numbered("Invalid input length: ", length),
                                      "string", "binary");
  const UnitView digits(text, static_cast<unsigned>(length));
  KelBlock<unsigned char> block = allocateBlock<unsigned char>(digits.size() / 2 + 1);
  const auto [size, fault] = core::readHex(digits, block.get());
  if (fault == core::HexFault::foreign)
    raise<KelConversionException>(trace.site(), failures::kInvalidData, "hex character string", KelWstring(digits));
  if (fault == core::HexFault::oddCount)
    raiseBare<KelConversionException>(trace.site(), failures::kInvalidData,
                                      "Odd number of hexadecimal digits is not allowed");
  PWFData value(block.get(), static_cast<int>(size), BINARY, ADOPT);
  static_cast<void>(block.release());
  return value;
}

PWFData DataCnv::StrFromBin(const PWFData& value) {
  const FunctionTrace trace(this, "DataCnv::StrFromBin", kDataCnvPath);
  int length = 0;
  const auto* const bytes = static_cast<const unsigned char*>(value.getBinaryValue(length));
  const std::size_t size = bytes != nullptr && length > 0 ? static_cast<std::size_t>(length) : 0;
  return TextInPlace::make(STRING, 2 * size, [&](unsigned short* out) { core::writeHex({bytes, size}, out); });
}
