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

inline std::unique_ptr<icu::DecimalFormat> cloneWhole(const icu::DecimalFormat& formatter) {
  std::unique_ptr<icu::DecimalFormat> clone(formatter.clone());
  if (clone == nullptr) throw std::bad_alloc();
  requireWhole(*clone);
  return clone;
}

}  // namespace oxr
