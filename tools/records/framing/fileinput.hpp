#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "records/framing/buffersource.hpp"
#include "records/framing/filedescriptor.hpp"
#include "records/framing/recordform.hpp"

namespace oxr::rec {

// A file, or whatever comes in on a descriptor, read in blocks: what a worker has not consumed yet is carried over to
// the front of the next one. Memory is a block, or twice the longest stretch that is asked for at once and there, and
// the trailer of a pipe. Of a file only the bytes are given that it has when it is opened.
//
// All operations throw ToolError with the file's name if the system refuses, if the file has fewer bytes than its
// window asks for, or if it becomes shorter.
class FileInput : public BufferSource {
 public:
  // A block, and what is made of it, stay in the processor's cache.
  static constexpr std::size_t kBlockBytes = std::size_t{64} << 10;

  // Reads at most so many bytes to where it is told, and tells how many they were: 0 at the input's end.
  using Read = std::function<std::size_t(char* to, std::size_t most)>;

  static FileInput open(const std::string& path, const InputWindow& window = {});
  // What is no file of the system's. What `read` throws leaves the operation that asked for bytes.
  FileInput(Read read, std::string name, const InputWindow& window = {});
  // `name` is what messages call the input. A descriptor's bytes count from where it stands.
  FileInput(FileDescriptor file, std::string name, const InputWindow& window = {},
            std::size_t blockBytes = kBlockBytes);

  // The input from its start on. Belongs to this object, until the next call.
  const BitstreamBuffer* first() { return slide(0, 1); }
  const BitstreamBuffer* slide(int consumed, int wanted) override;
  Origin origin() const override { return origin_; }
  std::optional<std::uint64_t> totalSize() const override { return size_; }

  const std::string& name() const { return name_; }
  int descriptor() const { return file_.get(); }

 private:
  void beginWindow(const InputWindow& window);
  void windowOnFile(const InputWindow& window, std::uint64_t fileSize);
  void windowOnPipe(const InputWindow& window);
  void passOver(std::uint64_t bytes);
  std::size_t usable() const { return end_ - begin_ - std::min(end_ - begin_, heldBack_); }
  void fill(std::size_t wanted);
  std::size_t read(char* to, std::size_t most);
  void ended();

  FileDescriptor file_;
  Read other_;  // empty for a descriptor
  std::string name_;
  Origin origin_;
  std::optional<std::uint64_t> size_;  // of what is given, where that is known at once
  std::uint64_t left_ = 0;             // bytes to read; without an end of the window more than there can be
  std::size_t heldBack_ = 0;           // bytes at the end of what was read that may be the trailer
  std::vector<char> bytes_;
  std::size_t begin_ = 0;  // of what is not consumed yet
  std::size_t end_ = 0;
  bool isAtEnd_ = false;
  std::optional<ReadOnlyByteBuffer> view_;
};

}  // namespace oxr::rec
