#include "kellocale.hpp"

#include <unicode/dcfmtsym.h>
#include <unicode/locid.h>

#include <mutex>

#include "kelwstringconvertor.hpp"

constinit KelWstring KelLocale::iLocale;
constinit KelWstring KelLocale::iSymbols;
constinit std::atomic<bool> KelLocale::symbolsInitialised{false};

void KelLocale::initialiseExtendedInformation() {
  constinit static std::once_flag once;
  std::call_once(once, [] {
    const icu::Locale locale = icu::Locale::getDefault();
    UErrorCode status = U_ZERO_ERROR;
    const icu::DecimalFormatSymbols symbols(locale, status);
    const icu::UnicodeString point = U_SUCCESS(status)
                                         ? symbols.getConstSymbol(icu::DecimalFormatSymbols::kDecimalSeparatorSymbol)
                                         : icu::UnicodeString(u'.');
    iLocale = oxr::fromUtf8(locale.getName());
    unsigned short* const units = iSymbols.resizeForOverwrite(static_cast<unsigned>(point.length()));
    point.extract(0, point.length(), oxr::toIcu(units));
    symbolsInitialised = true;  // comes last: a thread that sees it set sees both texts
  });
}
