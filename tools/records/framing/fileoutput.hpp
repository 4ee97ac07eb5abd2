#pragma once

#include <span>
#include <string>
#include <string_view>

#include "records/framing/filedescriptor.hpp"

namespace oxr::rec {

// Where lines or records go: a file of its own, or a descriptor that is open already. Nothing is buffered here.
//
// A file gets its name with close(). Until then it is written beside its place, as "NAME.12345.part" with the number of
// the process, and goes with the object: a program that ends early, or is killed, leaves no file that looks whole, and
// one that was there before stays as it was. What is no file, a device or a pipe, is written directly.
//
// All operations throw OutputError if the system refuses, and write() throws OutputClosed if nobody reads any more.
class FileOutput {
 public:
  // Refuses a path that names one of the `inputs`, or the file open as `input`, by whatever way.
  static FileOutput open(const std::string& path, std::span<const std::string> inputs, int input);
  // `name` is what messages call the output.
  FileOutput(FileDescriptor file, std::string name) : file_(std::move(file)), name_(std::move(name)) {}
  FileOutput(FileOutput&& other) noexcept;
  FileOutput& operator=(FileOutput&&) = delete;
  ~FileOutput();

  void write(std::string_view bytes);
  // To be called last: some systems tell only now that there was no room.
  void close();

 private:
  void discard();

  FileDescriptor file_;
  std::string name_;
  std::string target_;     // what the file is to be called
  std::string temporary_;  // what it is called; empty if it is written directly, or has its name
};

}  // namespace oxr::rec
