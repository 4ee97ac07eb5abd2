#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "records/framing/buffersource.hpp"
#include "records/framing/filedescriptor.hpp"

namespace oxr::rec {

// A file, or whatever comes in on a descriptor, read in blocks: what a worker has not consumed yet is carried over to
// the front of the next one. Memory is a block, or twice the longest stretch that is asked for at once.
//
// All operations throw ToolError with the file's name if the system refuses.
class FileInput : public BufferSource {
 public:
  static constexpr std::size_t kBlockBytes = std::size_t{1} << 20;

  static FileInput open(const std::string& path);
  // `name` is what messages call the input.
  FileInput(FileDescriptor file, std::string name, std::size_t blockBytes = kBlockBytes);

  // The input from its start on. Belongs to this object, until the next call.
  const BitstreamBuffer* first() { return slide(0, 1); }
  const BitstreamBuffer* slide(int consumed, int wanted) override;

  const std::string& name() const { return name_; }
  int descriptor() const { return file_.get(); }
  // Bytes of a regular file; nothing for a pipe, whose end is not known.
  std::optional<std::uint64_t> totalSize() const override { return totalSize_; }

 private:
  void makeRoom(std::size_t wanted);
  void fill(std::size_t wanted);

  FileDescriptor file_;
  std::string name_;
  std::optional<std::uint64_t> totalSize_;
  std::vector<char> bytes_;
  std::size_t begin_ = 0;  // of what is not consumed yet
  std::size_t end_ = 0;
  bool isAtEnd_ = false;
  std::optional<ReadOnlyByteBuffer> view_;
};

}  // namespace oxr::rec
