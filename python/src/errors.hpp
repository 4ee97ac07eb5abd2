#pragma once

#include <pybind11/pybind11.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "records/records.hpp"

namespace oxr::python {

// A field that could not be read, or a record that does not fit, as it is told when the record is gone.
struct BadField {
  explicit BadField(const rec::FieldFault& fault);
  std::string text;
  std::uint64_t record;
  std::uint64_t offset;
  std::string path;
  std::string reason;
  std::string bytes;
};

// A bad field ends the work. what() is all that is told.
class FieldEnded : public std::runtime_error {
 public:
  FieldEnded(const std::string& text, BadField badField) : std::runtime_error(text), field(std::move(badField)) {}
  BadField field;
};

// A record cannot be cut out of the input, or cannot be written.
class RecordEnded : public std::runtime_error {
 public:
  RecordEnded(const std::string& text, std::uint64_t number, bool isWritten, std::string where = {})
      : std::runtime_error(text), record(number), isWriting(isWritten), path(std::move(where)) {}
  std::uint64_t record;
  bool isWriting;
  std::string path;
};

// An option has a value that it cannot have.
class OptionFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Of the exceptions, which are classes of Python code.
pybind11::object errorClass(const char* name);
// The FieldError of a bad field.
pybind11::object errorOf(const BadField& field, const std::string& text);

// Sets what Python raises for the exception that is being handled.
void setError();
// Has pybind11 do the same where an exception leaves a function of the module.
void translateErrors();

}  // namespace oxr::python
