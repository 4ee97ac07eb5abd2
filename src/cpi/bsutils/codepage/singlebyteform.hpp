#pragma once

#include <algorithm>

#include "codepage/form.hpp"
#include "core/singlebyte.hpp"

namespace oxr {

// Code pages where each byte is one character: the host has a table for each.
struct SingleByteForm {
  static bool isFormOf(const KelConverter& shared, std::string_view) { return shared.singleByteTable() != nullptr; }

  [[gnu::always_inline]] static core::Advance decode(PageTables tables, InputBytes bytes, OutputUnits units) {
    const std::size_t count = std::min(bytes.size(), units.size());
    core::decodeSingleBytes(bytes.first(count), *tables.units, units.data());
    return {count, count};
  }
  [[gnu::always_inline]] static core::Advance encode(PageTables tables, InputUnits units, OutputBytes bytes) {
    const std::size_t most = std::min(units.size(), bytes.size());
    const std::size_t count = core::encodeSingleBytes(units.first(most), *tables.bytes, bytes.data());
    return {count, count};
  }

  static std::size_t unitCount(InputBytes bytes) { return bytes.size(); }
  [[gnu::always_inline]] static bool decodeCounted(PageTables tables, InputBytes bytes, unsigned short* units) {
    core::decodeSingleBytes(bytes, *tables.units, units);
    return true;
  }
  static std::size_t plainCount(InputBytes bytes) { return bytes.size(); }
  [[gnu::always_inline]] static bool decodePlain(PageTables tables, InputBytes bytes, unsigned short* units) {
    return decodeCounted(tables, bytes, units);
  }

  static bool decodeByte(PageTables tables, unsigned char byte, unsigned short& unit) {
    unit = (*tables.units)[byte];
    return true;
  }
};

}  // namespace oxr
