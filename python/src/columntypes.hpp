#pragma once

#include <cstdint>
#include <vector>

#include "records/records.hpp"

namespace oxr::python {

// What decimals are in an array.
enum class DecimalForm : std::uint8_t {
  exact,   // objects: Decimal
  real,    // doubles
  scaled,  // 64-bit integers, in units of the last place
};

// What the array of a column holds.
enum class ColumnType : std::uint8_t {
  object,    // whatever a dict would have
  integer,   // 64 bits
  real,      // doubles
  scaled,    // 64 bits: decimals without their point
  decimal,   // doubles, of decimals
  days,      // since 1970-01-01, 64 bits
  instants,  // microseconds since 1970-01-01T00:00, 64 bits
};

struct ColumnShape {
  ColumnType type = ColumnType::object;
  int scale = 0;        // scaled, decimal: digits after the point
  bool isDate = false;  // object: ISO text that becomes one of Python's dates
};

// The shape of each node of the columns that is a field; the kinds of record that share a column may have it hold
// different things, which are then objects.
std::vector<ColumnShape> columnShapes(const rec::CsvColumns& columns, const rec::RecordPlan& plan, DecimalForm form);

}  // namespace oxr::python
