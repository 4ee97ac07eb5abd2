#include "input.hpp"

#include <cstring>

#include "interpreter.hpp"
#include "values.hpp"

namespace py = pybind11;

namespace oxr::python {

Source::Source(const py::object& file) {
  if (py::isinstance<py::bytes>(file)) {
    path_ = py::cast<std::string>(file);
    return;
  }
  read_ = file.attr("read");
  const py::object name = py::getattr(file, "name", py::none());
  name_ = py::isinstance<py::str>(name) ? py::cast<std::string>(name) : "the input";
}

Source::~Source() {
  if (!read_) return;
  const Held interpreter;
  read_ = py::object();
}

rec::FileInput Source::open(const rec::InputWindow& window) {
  if (!read_) return rec::FileInput::open(path_, window);
  return rec::FileInput([this](char* to, std::size_t most) { return read(to, most); }, name_, window);
}

std::size_t Source::read(char* to, std::size_t most) {
  const Held interpreter;
  const py::object given = owned(orStay([&] { return PyObject_CallFunction(read_.ptr(), "n", most); }));
  char* bytes = nullptr;
  Py_ssize_t size = 0;
  if (given.is_none()) throw rec::ToolError(name_ + " has no bytes yet: a file that does not wait cannot be read");
  if (!py::isinstance<py::bytes>(given))
    throw py::type_error("read() of " + name_ + " gives no bytes: is it open as text?");
  if (PyBytes_AsStringAndSize(given.ptr(), &bytes, &size) != 0) throw py::error_already_set();
  if (static_cast<std::size_t>(size) > most)
    throw rec::ToolError("read() of " + name_ + " gives more than was asked for");
  std::memcpy(to, bytes, static_cast<std::size_t>(size));
  return static_cast<std::size_t>(size);
}

}  // namespace oxr::python
