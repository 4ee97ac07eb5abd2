#include "input.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
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

namespace {

// Does a call of the system that may wait, and again while a signal ends it early. Before each the signal's handler of
// Python runs, which may throw: of a signal that came before the wait began, nothing would end it.
template <class Call>
auto uninterrupted(Call call) {
  for (;;) {
    {
      const Held interpreter;
      if (orStay([] { return PyErr_CheckSignals(); }) != 0) throw py::error_already_set();
    }
    const auto result = call();
    if (result >= 0 || errno != EINTR) return result;
  }
}

bool isPipe(const std::string& path) {
  struct stat status;
  return ::stat(path.c_str(), &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode));
}

}  // namespace

rec::FileInput Source::open(const rec::InputWindow& window) {
  if (read_) return rec::FileInput([this](char* to, std::size_t most) { return read(to, most); }, name_, window);
  if (!isPipe(path_)) return rec::FileInput::open(path_, window);
  pipe_.emplace(
      rec::FileDescriptor::owned(uninterrupted([this] { return ::open(path_.c_str(), O_RDONLY | O_CLOEXEC); })));
  if (pipe_->get() < 0) throw rec::ToolError("cannot open " + path_ + ": " + std::strerror(errno));
  return rec::FileInput([this](char* to, std::size_t most) { return readPipe(to, most); }, path_, window);
}

// What may wait for ever is to be ended by a signal.
std::size_t Source::readPipe(char* to, std::size_t most) {
  const ssize_t count = uninterrupted([&] { return ::read(pipe_->get(), to, most); });
  if (count < 0) throw rec::ToolError("cannot read " + path_ + ": " + std::strerror(errno));
  return static_cast<std::size_t>(count);
}

std::size_t Source::read(char* to, std::size_t most) {
  const Held interpreter;
  const py::object given = owned(orStay([&] { return PyObject_CallFunction(read_.ptr(), "n", most); }));
  if (given.is_none()) throw rec::ToolError(name_ + " has no bytes yet: a file that does not wait cannot be read");
  if (py::isinstance<py::str>(given))
    throw py::type_error("read() of " + name_ + " gives no bytes: is it open as text?");
  if (PyObject_CheckBuffer(given.ptr()) == 0)
    throw py::type_error("read() of " + name_ + " gives a " + Py_TYPE(given.ptr())->tp_name + ", not bytes");
  Py_buffer bytes;
  if (PyObject_GetBuffer(given.ptr(), &bytes, PyBUF_SIMPLE) != 0) throw py::error_already_set();
  const auto size = static_cast<std::size_t>(bytes.len);
  if (size <= most) std::memcpy(to, bytes.buf, size);
  PyBuffer_Release(&bytes);
  if (size > most) throw rec::ToolError("read() of " + name_ + " gives more than was asked for");
  return size;
}

}  // namespace oxr::python
