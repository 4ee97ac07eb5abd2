#include "kellocale.hpp"

#include <unicode/dcfmtsym.h>
#include <unicode/locid.h>

#include <mutex>

#include "kelforkhold.hpp"
#include "kelmemory.hpp"
#include "kelwstringconvertor.hpp"

constinit KelWstring KelLocale::iLocale;
constinit KelWstring KelLocale::iSymbols;
constinit std::atomic<bool> KelLocale::symbolsInitialised{false};

namespace {

// The point of the locale, and "." where ICU cannot tell.
icu::UnicodeString decimalPointOf(const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::DecimalFormatSymbols symbols(locale, status);
  oxr::requireMemory(status);
  if (U_FAILURE(status)) return {u'.'};
  return oxr::requireMemory(symbols.getConstSymbol(icu::DecimalFormatSymbols::kDecimalSeparatorSymbol));
}

}  // namespace

void KelLocale::initialiseExtendedInformation() {
  constinit static std::once_flag once;
  const KelForkHold hold;
  std::call_once(once, [] {
    const icu::Locale locale = icu::Locale::getDefault();
    const icu::UnicodeString point = oxr::askTwice([&] { return decimalPointOf(locale); });
    iLocale = oxr::fromUtf8(locale.getName());
    unsigned short* const units = iSymbols.resizeForOverwrite(static_cast<unsigned>(point.length()));
    point.extract(0, point.length(), oxr::toIcu(units));
    symbolsInitialised = true;  // comes last: a thread that sees it set sees both texts
  });
}
