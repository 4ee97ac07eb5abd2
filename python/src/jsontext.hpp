#pragma once

#include <pybind11/pybind11.h>

#include <map>
#include <string>
#include <string_view>

#include "records/recordplan.hpp"

namespace oxr::python {

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

  // Appends the record and a newline. Throws type_error for what is none of these.
  void append(pybind11::handle record, std::string& line) const;

 private:
  void value(pybind11::handle value, std::string_view name, std::string& line) const;
  void object(pybind11::handle dict, std::string& line) const;
  void number(pybind11::handle text, std::string& line) const;
  void moment(pybind11::handle value, std::string_view name, std::string& line) const;

  std::map<std::string, std::size_t, std::less<>> fractions_;  // digits of a second, by the name of the field
};

}  // namespace oxr::python
