#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "records/framing/filedescriptor.hpp"
#include "records/framing/recordreader.hpp"

namespace oxr::rec {

// Lines that cannot be written. what() names the file.
class OutputError : public ToolError {
 public:
  using ToolError::ToolError;
};

// Where lines go: a file of its own, or a descriptor that is open already. Nothing is buffered here.
//
// All operations throw OutputError if the system refuses.
class FileOutput {
 public:
  // "-" stands for `standardOutput`. A file that exists is emptied, unless it is the one open as `input`.
  static FileOutput open(const std::string& path, int standardOutput, int input);

  // Writes whole lines. Where only a part of them can be written, a file of its own is cut behind the last whole line.
  void write(std::string_view lines);
  // To be called last: some systems tell only now that there was no room.
  void close();

 private:
  FileOutput(FileDescriptor file, std::string name) : file_(std::move(file)), name_(std::move(name)) {}
  void cutBehindLine(std::string_view written);

  FileDescriptor file_;
  std::string name_;
  std::uint64_t size_ = 0;  // bytes written
};

}  // namespace oxr::rec
