#pragma once

#include <pybind11/pybind11.h>

#include <optional>
#include <string>

#include "records/records.hpp"

namespace oxr::python {

// What records are read from: a path as bytes, or an object with a method read(size) that gives bytes.
class Source {
 public:
  explicit Source(const pybind11::object& file);
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;
  // Holds the interpreter while the object goes.
  ~Source();

  // Needs no interpreter, and is better called without: a pipe waits for who writes to it. Reading from an object takes
  // it for as long as that lasts.
  rec::FileInput open(const rec::InputWindow& window);

  // The method of the object, for the collector of garbage; null for a path.
  PyObject* reader() const { return read_.ptr(); }

 private:
  std::size_t read(char* to, std::size_t most);
  std::size_t readPipe(char* to, std::size_t most);

  std::string path_;  // empty if there is an object
  std::optional<rec::FileDescriptor> pipe_;
  std::string name_;
  pybind11::object read_;
};

}  // namespace oxr::python
