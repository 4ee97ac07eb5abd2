#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "records/framing/recordheader.hpp"

namespace oxr::rec {

// Puts around records what a RecordReader of the same form takes away.
//
// Example:
//   RecordFramer framer({.framing = Framing::bdw});
//   for (const std::string& record : records) framer.add(bytesOf(record), out);
//   framer.finish(out);
class RecordFramer {
 public:
  // Bytes of a full block of `bdw` and `spanned`, its header among them.
  static constexpr std::uint32_t kBlockSize = 32760;
  static constexpr std::uint32_t kSmallestBlock = 9;  // both headers and a byte
  static constexpr std::uint32_t kLargestBlock = 0xFFFF;

  // The form's block size goes before the other. REQUIRES: the framing is not `automatic`; kSmallestBlock <= blockSize
  // <= kLargestBlock.
  explicit RecordFramer(const RecordForm& form, std::uint32_t blockSize = kBlockSize);

  // Appends the record to `out`; in `bdw` and `spanned` it may wait for its block to be full. Throws FrameError for one
  // that the form cannot hold, and then appends nothing: too long for the length in front or for a block, or with a
  // line end in it. A record without a byte has no place in `fixed` and in `spanned`.
  void add(std::span<const unsigned char> record, std::string& out);
  // Appends the last block.
  void finish(std::string& out);
  // The records that add() took, and the one that it refused.
  std::uint64_t recordNumber() const { return count_; }

 private:
  using Bytes = std::span<const unsigned char>;

  void addHeader(std::size_t size, Segment segment, std::string& out) const;
  void addLine(Bytes record, std::string& out) const;
  void addToBlock(Bytes record, std::string& out);
  void addSegments(Bytes record, std::string& out);
  void require(std::uint64_t size, std::uint64_t most, const char* holder) const;
  void requireLine(Bytes record) const;
  std::size_t room() const { return blockSize_ - kBlockHeaderBytes - block_.size(); }

  const RecordForm form_;
  const HeaderShape shape_;
  const std::uint32_t counted_;
  const std::uint32_t blockSize_;
  std::uint64_t count_ = 0;
  std::string block_;  // without its header
};

}  // namespace oxr::rec
