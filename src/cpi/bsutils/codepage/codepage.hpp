#pragma once

#include "core/singlebyte.hpp"
#include "cpunicodeconverter.hpp"

namespace oxr {

// What the library knows of a converter's code page beyond what the exported members tell.
struct CodePage {
  // What each byte of the code page reads as. Null when the code page is not a single-byte one, and while the converter
  // holds units back, which must come out before any others. Costs a load and a compare: ask again for each field.
  static const core::SingleByteTable* byteTable(const CPUnicodeConverter& page) {
    return page.holdsUnitsBack ? nullptr : page.byteTable;
  }
};

}  // namespace oxr
