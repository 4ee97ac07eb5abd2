#include "errors.hpp"

#include <exception>
#include <new>
#include <utility>

namespace py = pybind11;

namespace oxr::python {

namespace {

std::string bytesOf(std::span<const unsigned char> bytes) {
  return {bytes.begin(), bytes.end()};
}

void raise(const py::object& error) {
  PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error.ptr())), error.ptr());
}

void raise(const char* name, const std::string& text) {
  raise(errorClass(name)(text));
}

void raise(const rec::CopybookError& error) {
  raise(errorClass("CopybookError")(error.what(), error.file(), error.line(), error.column(), error.message()));
}

void raise(const RecordEnded& error) {
  if (error.isWriting)
    raise(errorClass("WriteError")(error.what(), error.record, error.path));
  else
    raise(errorClass("RecordError")(error.what(), error.record));
}

}  // namespace

BadField::BadField(const rec::FieldFault& fault)
    : text(fault.text()),
      record(fault.record),
      offset(fault.offset),
      path(fault.path()),
      reason(fault.reasonText()),
      bytes(bytesOf(fault.bytes)) {}

py::object errorClass(const char* name) {
  return py::module_::import("oxrrec._errors").attr(name);
}

py::object errorOf(const BadField& field, const std::string& text) {
  return errorClass("FieldError")(text, field.record, field.offset, field.path, field.reason, py::bytes(field.bytes));
}

namespace {

// May fail itself, as where the package is taken down.
void setErrorOrThrow() {
  try {
    throw;
  } catch (py::error_already_set& error) {
    error.restore();
  } catch (const py::builtin_exception& error) {
    error.set_error();
  } catch (const FieldEnded& error) {
    raise(errorOf(error.field, error.what()));
  } catch (const RecordEnded& error) {
    raise(error);
  } catch (const rec::CopybookError& error) {
    raise(error);
  } catch (const OptionFault& error) {
    raise("OptionError", error.what());
  } catch (const rec::PlanError& error) {
    raise("OptionError", error.what());
  } catch (const rec::ToolError& error) {
    raise("FileError", error.what());
  } catch (const KelException& failure) {
    raise("Error", rec::faultText(failure));
  } catch (const std::bad_alloc&) {
    PyErr_NoMemory();
  } catch (const std::exception& error) {
    raise("Error", error.what());
  }
}

}  // namespace

void setError() {
  try {
    setErrorOrThrow();
  } catch (py::error_already_set& error) {
    error.restore();
  }
}

void translateErrors() {
  py::register_exception_translator([](std::exception_ptr thrown) {
    try {
      if (thrown) std::rethrow_exception(std::move(thrown));
    } catch (py::error_already_set&) {
      throw;
    } catch (py::builtin_exception&) {
      throw;
    } catch (...) {
      setError();
    }
  });
}

}  // namespace oxr::python
