// What a converter is made of and told: its settings, the constant texts, its beginning and its end.

#include <unicode/decimfmt.h>

#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "kellocale.hpp"
#include "kelwstringconvertor.hpp"
#include "pwffrmtr.hpp"
#include "support/support.hpp"

using oxr::FunctionTrace;
using oxr::kDataCnvPath;

// These are built at load and only read later. No member looks at them before the first object is made.
const KelWstring DataCnv::UHEX_NUMBERS = convertString(L"0123456789abcdefABCDEF");
const KelWstring DataCnv::US_PLUS = convertString(L"+");
const KelWstring DataCnv::US_MINUS = convertString(L"-");
const KelWstring DataCnv::US_DECIMAL = convertString(L".");
const KelWstring DataCnv::DATE_PATTERN = convertString(L"yyyy-MM-dd");
const KelWstring DataCnv::TIME_PATTERN = convertString(L"HH:mm:ss");
const KelWstring DataCnv::TIMESTAMP_PATTERN = convertString(L"yyyy-MM-dd HH:mm:ss");
const KelWstring DataCnv::MILLISEC_PATTERN = convertString(L".SSS");

namespace {

// The decimal point of the process's locale, which the first object of the process finds out.
const KelWstring& localeDecimalText() {
  if (!KelLocale::symbolsInitialised) KelLocale::initialiseExtendedInformation();
  return KelLocale::iSymbols;
}

}  // namespace

// The owner is ignored, and set with setOwner alone: Settings.OwnerArgumentIsIgnored.
DataCnv::DataCnv(int codePage, EEndian endianOfIntegers, EEndian endianOfPacked, EFloatFmt formatOfFloats,
                 int windowOfCentury, const unsigned short* nameOfTimeZone, bool flagOfDateTime,
                 const unsigned short* textOfDateTime, int firstWeek, bool isLenient, char positiveSign,
                 bool checksStrictly, EMessageStandard standard, const KelNamedLogSource* /*owner*/)
    : ccsid(codePage),
      centuryWindow(windowOfCentury),
      integerEndian(endianOfIntegers),
      packedEndian(endianOfPacked),
      floatFormat(formatOfFloats),
      // Floats have no byte order of their own.
      floatEndian(formatOfFloats == eFloatIeeeLittle ? eEndianLittle : eEndianBig),
      timeZoneName(nameOfTimeZone),
      dateTimeFlag(flagOfDateTime),
      lenient(isLenient),
      dateTimeText(textOfDateTime),
      positivePackedSign(positiveSign),
      firstWeekOfYear(firstWeek),
      strictNumericChecking(checksStrictly),
      messageStandard(standard),
      // Only the first of these two asks for the locale, so that their order matters.
      localeDecimal(localeDecimalText().characters()),
      localeDecimalDiffers(!(KelLocale::iSymbols == US_DECIMAL)) {
  const FunctionTrace trace(this, "DataCnv::DataCnv", kDataCnvPath);
}

DataCnv::~DataCnv() {
  const FunctionTrace trace(this, "DataCnv::~DataCnv", kDataCnvPath);
  // The order is part of what trace shows, and with it the reason why this is not left to the members.
  converter.reset();
  localConverter.reset();
  if (dtFormatter != nullptr) {
    trace.fact("Deleting dtFormatter");
    dtFormatter.reset();
  }
  if (decFormatter != nullptr) {
    trace.fact("Deleting decFormatter");
    decFormatter.reset();
  }
}

// The texts are held by pointer and stay the caller's; an empty one is none.
void DataCnv::setDateTimeProperties(int windowOfCentury, const unsigned short* nameOfTimeZone,
                                    const unsigned short* textOfDateTime, int firstWeek, bool isLenient,
                                    bool flagOfDateTime) {
  const auto textOrNull = [](const unsigned short* text) { return text != nullptr && text[0] != 0 ? text : nullptr; };
  centuryWindow = windowOfCentury;
  timeZoneName = textOrNull(nameOfTimeZone);
  dateTimeText = textOrNull(textOfDateTime);
  firstWeekOfYear = firstWeek;
  lenient = isLenient;
  dateTimeFlag = flagOfDateTime;
}
