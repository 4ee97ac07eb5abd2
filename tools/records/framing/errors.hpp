#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace oxr::rec {

// Input or output that cannot be worked with. what() is complete for people.
class ToolError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// An input that cannot be cut into records, or a record that cannot be put among others. what() tells record and byte,
// but not the input's name.
class FrameError : public ToolError {
 public:
  explicit FrameError(const std::string& what, std::optional<std::uint64_t> byte = {}) : ToolError(what), byte_(byte) {}
  // Of the input, counted from 0, where the record begins; nothing where records are written.
  std::optional<std::uint64_t> byte() const { return byte_; }

 private:
  std::optional<std::uint64_t> byte_;
};

// Lines that cannot be written. what() names where they were to go.
class OutputError : public ToolError {
 public:
  using ToolError::ToolError;
};

// Whoever read the lines wants no more of them. Nothing is to be told.
class OutputClosed : public OutputError {
 public:
  using OutputError::OutputError;
};

}  // namespace oxr::rec
