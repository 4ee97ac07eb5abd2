#pragma once

#include <pybind11/pybind11.h>

namespace oxr::python {

// Puts `layout(arguments)` into the module: the items of a copybook's record as tuples, and what else there is to know.
void addLayout(pybind11::module_& module);

}  // namespace oxr::python
