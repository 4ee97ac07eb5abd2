#include <pybind11/pybind11.h>

#include "arguments.hpp"
#include "columnsreader.hpp"
#include "errors.hpp"
#include "layout.hpp"
#include "records.hpp"
#include "recordtype.hpp"
#include "values.hpp"
#include "writing.hpp"

// The part of the package oxrrec that is not Python: options, layouts, and the ways between records and objects. The
// package's own files make these into what people call.

PYBIND11_MODULE(_oxrrec, module) {
  module.attr("version") = OXR_VERSION;
  oxr::python::translateErrors();
  oxr::python::Makers::find();
  oxr::python::addArguments(module);
  oxr::python::addLayout(module);
  oxr::python::addRecordType(module);
  oxr::python::addRecordsType(module);
  oxr::python::addColumnsType(module);
  oxr::python::addWriter(module);
}
