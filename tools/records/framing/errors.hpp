#pragma once

#include <stdexcept>

namespace oxr::rec {

// Input or output that cannot be worked with. what() is complete for people.
class ToolError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// An input that cannot be cut into records. what() tells record and byte, but not the input's name.
class FrameError : public ToolError {
 public:
  using ToolError::ToolError;
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
