#pragma once

#include "datacnv/parts.hpp"
#include "support/support.hpp"

namespace oxr {

// Whether ICU need not be asked about plain numbers. It is asked while there is no formatter yet, whose symbols could
// be looked at: the first number of the process makes it. With trace on it is asked about all, which shows it at work.
inline bool readsAsciiNumbers() {
  return DataCnvParts::hasAsciiSymbols() && !debugTraceOn();
}

}  // namespace oxr
