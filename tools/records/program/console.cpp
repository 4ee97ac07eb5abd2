#include "records/program/console.hpp"

namespace oxr::rec {

FileInput openInput(const std::string& path, const InputWindow& window, const Console& console) {
  if (path != kStandardStream) return FileInput::open(path, window);
  return FileInput(FileDescriptor::borrowed(console.input), "standard input", window);
}

FileOutput openOutput(const std::string& path, std::span<const std::string> inputs, int input, const Console& console) {
  if (path != kStandardStream) return FileOutput::open(path, inputs, input);
  return FileOutput(FileDescriptor::borrowed(console.output), "standard output");
}

FileOutput openOutput(const std::string& path, const Console& console) {
  return openOutput(path, {}, -1, console);
}

bool isSameOutput(const std::string& path, const std::string& other) {
  return path == kStandardStream || other == kStandardStream ? path == other : FileOutput::isSame(path, other);
}

}  // namespace oxr::rec
