#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "records/framing/buffersource.hpp"
#include "records/framing/recordheader.hpp"

namespace oxr::rec {

// Where the bytes of a record are.
struct RecordBytes {
  const unsigned char* data = nullptr;
  std::uint32_t size =
      0;  // of a variable record that is not framed: what the input still has, up to the longest record
  std::uint32_t padding = 0;  // of the size: blanks that a line was filled up with, which are not in the input
};

// Cuts an input into records. Does not look into them.
//
// Example:
//   reader.open(buffer, 0, &source);
//   while (!reader.atEnd()) {
//     const RecordBytes record = reader.next();
//     ...
//     reader.finish(record.size);
//   }
class RecordReader {
 public:
  // REQUIRES: the framing is not `automatic`.
  explicit RecordReader(const RecordForm& form);

  // Begins at byte `offset` of `buffer`. Without a `source` the input ends where the buffer does. Both are the
  // caller's.
  void open(const BitstreamBuffer* buffer, int offset, BufferSource* source);

  // True if no byte is left.
  bool atEnd() const { return data_ == end_ && blockLeft_ == 0; }
  // The next record; its bytes stay until finish(). Throws FrameError for one that the input does not hold whole and
  // for a header that is none. A variable record that is not framed may turn out to be longer than what there is: the
  // caller then calls refuseShort().
  RecordBytes next();
  // Goes on after the record, and looks whether the input has more. `size` is that of the record, which counts only
  // if it is not framed.
  void finish(std::uint32_t size);
  // Throws the FrameError for a record that needs `size` bytes where fewer are left.
  [[noreturn]] void refuseShort(std::uint64_t size) const;
  // Throws the FrameError "record 3 at byte 245: " and `what`.
  [[noreturn]] void fail(const std::string& what) const;
  // "; --records bdw fits: ...", if the start of the input fits another form and not this one; else empty.
  std::string hint() const;

  // Whether something in the input tells where each record ends.
  bool isFramed() const { return form_.framing != Framing::fixed; }
  // The records that next() gave, the one that it failed at included.
  std::uint64_t recordsRead() const { return count_; }
  // The number of the last one in the file, from 1.
  std::uint64_t recordNumber() const { return origin_.records + count_; }
  // Where byte `at` of the last record stands in the file, from 0. Headers are not among the bytes of a record.
  std::uint64_t offsetInInput(std::uint64_t at) const;
  // The bytes that whole records took since open(), with all that stands around them.
  std::uint64_t position() const { return position_; }
  // Whether the next record can be the first one of an input of its own: a record that begins within a block cannot.
  bool isAtStart() const { return blockLeft_ == 0; }

 private:
  // Where a part of a record that was put together stands.
  struct Piece {
    std::uint64_t inRecord;
    std::uint64_t inInput;  // since open()
  };

  std::uint32_t available() const { return static_cast<std::uint32_t>(end_ - data_); }
  bool ensure(std::uint32_t wanted);
  void slide(std::uint32_t wanted);
  void keepStart();
  RecordBytes nextUnframed();
  RecordBytes nextFramed();
  RecordBytes nextSpanned();
  RecordBytes nextLine();
  RecordBytes padded(std::uint32_t size);
  std::uint32_t beginFramed();
  std::uint32_t lengthInHeader() const;
  void enterBlock(std::uint64_t& position);
  Segment segmentInHeader() const;
  void keepSegment(std::uint32_t size);

  const RecordForm form_;
  const HeaderShape shape_;
  const std::uint32_t counted_;  // see countedHeader
  BufferSource* source_ = nullptr;
  Origin origin_;
  const unsigned char* begin_ = nullptr;  // of the buffer
  const unsigned char* data_ = nullptr;   // of the next record, header included
  const unsigned char* end_ = nullptr;
  std::uint64_t position_ = 0;
  std::uint64_t count_ = 0;
  std::uint64_t ahead_ = 0;            // bytes of the record in hand that data_ has passed already: earlier segments
  std::uint32_t taken_ = 0;            // bytes of it from data_ on, if it is framed
  std::uint32_t blockLeft_ = 0;        // bytes from data_ to the block's end
  std::vector<unsigned char> joined_;  // a record that does not lie in one piece
  std::vector<Piece> pieces_;
  // For hint(): the start of the input, if its size is known from the beginning, and the size once it is known.
  std::vector<unsigned char> start_;
  std::optional<std::uint64_t> size_;
};

}  // namespace oxr::rec
