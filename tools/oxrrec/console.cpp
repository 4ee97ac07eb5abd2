#include "oxrrec/console.hpp"

namespace oxr::rec {

FileInput openInput(const std::string& path, const Console& console) {
  if (path != kStandardStream) return FileInput::open(path);
  return FileInput(FileDescriptor::borrowed(console.input), "standard input");
}

FileOutput openOutput(const std::string& path, const Console& console, int input) {
  if (path != kStandardStream) return FileOutput::open(path, input);
  return FileOutput(FileDescriptor::borrowed(console.output), "standard output");
}

}  // namespace oxr::rec
