#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "records/framing/filedescriptor.hpp"

namespace oxr::rec {

// Where lines go: a file of its own, or a descriptor that is open already. Nothing is buffered here.
//
// All operations throw OutputError if the system refuses.
class FileOutput {
 public:
  // A file that exists is emptied, unless it is the one open as `input`.
  static FileOutput open(const std::string& path, int input);
  // `name` is what messages call the output.
  FileOutput(FileDescriptor file, std::string name) : file_(std::move(file)), name_(std::move(name)) {}

  // Writes whole lines. Where only a part of them can be written, a file of its own is cut after the last whole line.
  void write(std::string_view lines);
  // To be called last: some systems tell only now that there was no room.
  void close();

 private:
  void cutAfterLine(std::string_view written);

  FileDescriptor file_;
  std::string name_;
  std::uint64_t size_ = 0;  // bytes written
};

}  // namespace oxr::rec
