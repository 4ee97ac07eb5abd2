#pragma once

#include <atomic>

#include "kelexport.hpp"
#include "kelwstring.hpp"

// What the host knows of the process's locale, as ICU's default locale tells it (LC_ALL, LC_MESSAGES, LANG).
//
// The members are filled once and never change again, so their characters may be held by pointer to the end of the
// process. Call initialiseExtendedInformation() before the first look at them; any thread may.
//
// Example:
//   if (!KelLocale::symbolsInitialised) KelLocale::initialiseExtendedInformation();
//   KelLocale::iSymbols;  // "," with LC_ALL=de_DE.UTF-8
class KELHOST_EXPORT KelLocale {
 public:
  static KelWstring iLocale;                    // ICU's name of the locale, "de_DE"
  static KelWstring iSymbols;                   // its decimal separator
  static std::atomic<bool> symbolsInitialised;  // true once both are set

  // Sets them; a second call does nothing. Returns when they are set, whichever thread does it.
  static void initialiseExtendedInformation();
};
