#pragma once

#include <pybind11/pybind11.h>

// Tables of records: dicts of arrays, a chunk of rows at a time.

namespace oxr::python {

// Makes the class Columns and puts it and `columns(arguments, file, rows, decimals)` into the module.
void addColumnsType(pybind11::module_& module);

}  // namespace oxr::python
