#pragma once

#include "core/singlebyte.hpp"
#include "cpunicodeconverter.hpp"

namespace oxr {

// Tells which converters are no more than a table, for whoever decodes fields straight from it.
struct SingleBytePage {
  // What `converter` makes of each byte; null when the code page is not a single-byte one, and while the converter
  // holds units back that must come out first.
  static const core::SingleByteTable* tableOf(const CPUnicodeConverter& converter) {
    return converter.holdsUnitsBack ? nullptr : converter.byteTable;
  }
};

}  // namespace oxr
