#pragma once

#include <pybind11/pybind11.h>

namespace oxr::python {

// Puts `write(arguments, target, records)` into the module: the way from dicts to a record file, through the writer of
// `oxrrec encode`. It gives the number of records written, and the notes of what was left out.
void addWriter(pybind11::module_& module);

}  // namespace oxr::python
