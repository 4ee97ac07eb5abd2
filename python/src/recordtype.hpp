#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>

namespace oxr::python {

// The class Record of Python: a dict with the place of the record in its input, and what could not be read in it.
struct RecordPlace {
  std::uint64_t number = 0;  // from 1
  std::uint64_t offset = 0;  // of its first byte, from 0
};

// Makes the class and puts it into the module.
void addRecordType(pybind11::module_& module);
// An empty record; a new reference. `kind` is a text or None, `errors` a tuple. Throws error_already_set.
PyObject* newRecord(const RecordPlace& place, PyObject* kind, PyObject* errors);

}  // namespace oxr::python
