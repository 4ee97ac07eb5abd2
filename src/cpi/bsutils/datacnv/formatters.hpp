#pragma once

#include <unicode/decimfmt.h>
#include <unicode/numberformatter.h>

#include <memory>
#include <new>

#include "kelmemory.hpp"

// ICU's decimal formatters tell nobody when one of their settings found no memory: they write and read as before, or
// nothing at all. Whoever makes one asks here whether it is whole.
namespace oxr {

// Throws std::bad_alloc where the formatter could not be brought to its last settings.
inline void requireWhole(const icu::DecimalFormat& formatter) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::number::LocalizedNumberFormatter* const numbers = formatter.toNumberFormatter(status);
  if (numbers == nullptr || numbers->copyErrorTo(status) != 0 || formatter.getDecimalFormatSymbols() == nullptr)
    throw std::bad_alloc();
}

// ICU puts some work off to the first numbers that a formatter reads and writes, and takes locks for it. These do it
// while the process is kept from forking.
inline void readFirstNumber(const icu::DecimalFormat& formatter) {
  UErrorCode status = U_ZERO_ERROR;
  icu::Formattable number;
  static_cast<const icu::NumberFormat&>(formatter).parse(icu::UnicodeString(u"1"), number, status);
  requireMemory(status);
}
inline void writeFirstNumbers(const icu::DecimalFormat& formatter) {
  constexpr int kNumbers = 4;  // ICU 72 takes no lock from then on
  for (int i = 0; i < kNumbers; ++i) {
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString text;
    formatter.format(1.0, text, nullptr, status);
    requireMemory(status);
  }
}

inline std::unique_ptr<icu::DecimalFormat> cloneWhole(const icu::DecimalFormat& formatter) {
  std::unique_ptr<icu::DecimalFormat> clone(formatter.clone());
  if (clone == nullptr) throw std::bad_alloc();
  requireWhole(*clone);
  return clone;
}

}  // namespace oxr
