#pragma once

#include <pybind11/pybind11.h>

#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "records/recordplan.hpp"

namespace oxr::python {

// A value that no field can have. `path` is that of the field, empty for the record.
class ValueFault : public std::runtime_error {
 public:
  ValueFault(const std::string& reason, std::string where) : std::runtime_error(reason), path(std::move(where)) {}
  std::string path;
};

// Where a value stands, from the inside out: a list on the stack, so that it costs nothing while all is well.
struct ValuePlace {
  const ValuePlace* around;  // null for the record
  std::string_view name;
  std::size_t occurrence;  // from 1, 0 for what is in no list

  // As in "MOVEMENT(2).AMOUNT".
  std::string path() const;
};

// Records of Python as the lines that the writer of record files takes. To be used with the interpreter held.
//
//   dict, list, tuple      object, array
//   str                    a text
//   int, Decimal, float    a number with all its digits; what is none (NaN) a text, which no number takes
//   date, time, datetime   its ISO text, with as many digits of a second as the field has
//   None                   null
//
// Anything else that counts or is a number by itself, as numpy's are, counts as int or float.
class RecordText {
 public:
  explicit RecordText(const rec::RecordPlan& plan);

  // Appends the record and a newline. Throws type_error if it is no dict, and ValueFault for what is none of the above;
  // the line is then to be forgotten. What a value's own methods raise goes through.
  void append(pybind11::handle record, std::string& line) const;

 private:
  void value(pybind11::handle value, const ValuePlace& place, std::string& line) const;
  void object(pybind11::handle dict, const ValuePlace& place, std::string& line) const;
  void array(pybind11::handle values, const ValuePlace& place, std::string& line) const;
  void moment(pybind11::handle value, const ValuePlace& place, std::string& line) const;

  std::map<std::string, std::size_t, std::less<>> fractions_;  // digits of a second, by the name of the field
};

}  // namespace oxr::python
