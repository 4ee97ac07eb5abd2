#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace oxr::rec {

// A copybook that cannot be read or laid out. what() is complete for people and may have several lines:
//
//   customers.cob:7:34: expected a number of times after OCCURS, found 'FIVE'
//         |           10 TRANSACTION OCCURS FIVE TO 5
//         |                                 ^
class CopybookError : public std::runtime_error {
 public:
  CopybookError(const std::string& text, std::string file, std::uint32_t line, std::uint32_t column,
                std::string message)
      : std::runtime_error(text), file_(std::move(file)), line_(line), column_(column), message_(std::move(message)) {}

  const std::string& file() const { return file_; }
  // Both count from 1, tabs up to their stop. Both are 0 if the fault is not in one place.
  std::uint32_t line() const { return line_; }
  std::uint32_t column() const { return column_; }
  const std::string& message() const { return message_; }  // without place and source line

 private:
  std::string file_;
  std::uint32_t line_;
  std::uint32_t column_;
  std::string message_;
};

}  // namespace oxr::rec
