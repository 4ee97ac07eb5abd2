#pragma once

#include "core/packedfield.hpp"
#include "dataconv.hpp"
#include "pwffrmtr.hpp"

namespace oxr {

// The one friend of DataCnv: what its members, which stand in a file a family, need of an object's state. Everything
// else that a family needs are functions of its own file, so that a new one touches no header that is installed.
struct DataCnvParts {
  using ExternalCodes = DataCnv::ExternalCodes;

  // Settings of the message.
  static int ccsid(const DataCnv& cnv) { return cnv.ccsid; }
  static EEndian integerEndian(const DataCnv& cnv) { return cnv.integerEndian; }
  static bool isPackedReversed(const DataCnv& cnv) { return cnv.packedEndian == eEndianLittle; }
  // The half byte of the sign of a packed decimal as it is written, as GetPackedDecimalSign has it.
  static unsigned packedSign(const DataCnv& cnv, bool isSigned, bool negative) {
    return core::packedSign(isSigned, negative, static_cast<unsigned char>(cnv.positivePackedSign));
  }
  static bool checksStrictly(const DataCnv& cnv) { return cnv.strictNumericChecking; }
  static bool takesLoosePoints(const DataCnv& cnv) { return cnv.messageStandard == eMessageStandardLooseDecimal; }

  // Caches, filled on first use.
  static const CPUnicodeConverter* converterIfMade(const DataCnv& cnv) { return cnv.converter.get(); }
  static std::unique_ptr<CPUnicodeConverter>& localConverter(DataCnv& cnv) { return cnv.localConverter; }
  static std::unique_ptr<icu::DecimalFormat>& notation(DataCnv& cnv, bool exponential) {
    return cnv.notations[exponential ? 1 : 0];
  }
  static bool& hasReadByIcu(DataCnv& cnv) { return cnv.hasReadByIcu; }
  static PWFDateTimeFormatter& dateTimes(DataCnv& cnv) {
    if (cnv.dtFormatter == nullptr) [[unlikely]]
      cnv.dtFormatter = std::make_unique<PWFDateTimeFormatter>(cnv.lenient, cnv.timeZoneName, cnv.centuryWindow,
                                                               cnv.dateTimeText, cnv.firstWeekOfYear, cnv.dateTimeFlag);
    return *cnv.dtFormatter;
  }
  static ExternalCodes& externalCodes(DataCnv& cnv) { return cnv.externalCodes; }

  // Whether the process has its decimal formatter, whose symbols are known from then on, and those are "0" to "9", "-",
  // "+" and "E", so that numbers can be read and written without ICU.
  static bool hasAsciiSymbols() {
    return DataCnv::_global_decFormatter.load(std::memory_order_acquire) != nullptr && DataCnv::_symbolsAreAscii;
  }
  // As it stands between the digits and the exponent of a number, and in the other case. Empty before the formatter is.
  static const icu::UnicodeString& exponentSymbol() { return DataCnv::_exponentSymbol; }
  static const icu::UnicodeString& otherCaseExponentSymbol() { return DataCnv::_otherCaseExponentSymbol; }
};

}  // namespace oxr
