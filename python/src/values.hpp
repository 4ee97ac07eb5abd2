#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <string_view>
#include <vector>

#include "records/recordplan.hpp"
#include "tape.hpp"

namespace oxr::python {

// Python's types and functions that values are made by, looked up where the module is made: an import may let
// another thread run, which must not wait for the first one to be done. Each is borrowed for ever: they go with the
// process.
struct Makers {
  PyObject* decimal;  // makes a Decimal of a text
  PyObject* decimalType;
  PyObject* date;  // fromisoformat of each
  PyObject* time;
  PyObject* dateTime;
  static const Makers& get();
  static void find();
};

// Owns what a call has made; throws error_already_set if it made nothing.
pybind11::object owned(PyObject* made);

// Each returns a new reference. Throw error_already_set.
PyObject* newText(Token token, const char* bytes, std::size_t size);
PyObject* newDecimal(const char* digits, std::size_t size);
PyObject* newBigInteger(const char* digits, std::size_t size);
// A date, a time or both; the text itself if Python's types have no such year, or if it is no whole date.
PyObject* newDate(const char* text, std::size_t size);

// What a head that is neither a group nor an array begins, whose bytes are at `bytes`; a new reference.
PyObject* newScalar(const Head& head, const char* bytes);

// Makes dicts and lists of what is on a tape. To be used with the interpreter held.
class Builder {
 public:
  explicit Builder(const rec::RecordPlan& plan);

  // Fills `record`, an empty dict, with the members of the record that begins at `at`.
  void fill(PyObject* record, const char* at);

 private:
  PyObject* make(const Head& head);
  PyObject* makeList(std::uint64_t size);
  void members(PyObject* dict, std::uint64_t count);
  Head next();

  std::vector<pybind11::object> keys_;  // by the place of the name
  const char* at_ = nullptr;
};

}  // namespace oxr::python
