#pragma once

#include <span>
#include <string>
#include <string_view>

#include "records/framing/filedescriptor.hpp"
#include "records/framing/temporaryfile.hpp"

namespace oxr::rec {

// Where lines or records go: a file of its own, or a descriptor that is open already. Nothing is buffered here.
//
// A file gets its name with close(). Until then it is written beside its place, as "NAME.12345.part" with the number of
// the process, and goes with the object, see TemporaryFile: a program that ends early, or is killed, leaves no file
// that looks whole, and one that was there before stays as it was. What is no file, a device or a pipe, is written
// directly.
//
// All operations throw OutputError if the system refuses, and write() throws OutputClosed if nobody reads any more.
class FileOutput {
 public:
  // Refuses a path that names one of the `inputs`, or the file open as `input`, by whatever way.
  static FileOutput open(const std::string& path, std::span<const std::string> inputs, int input);
  // `name` is what messages call the output.
  FileOutput(FileDescriptor file, std::string name) : file_(std::move(file)), name_(std::move(name)) {}
  // Whether two paths lead to the same file, or would.
  static bool isSame(const std::string& path, const std::string& other);

  void write(std::string_view bytes);
  // To be called last: some systems tell only now that there was no room.
  void close();
  // The same for what is to be there, whole, after a loss of power: returns when the disk has it.
  void closeDurably();

 private:
  FileDescriptor file_;
  std::string name_;
  TemporaryFile temporary_;  // none if it is written directly
};

}  // namespace oxr::rec
