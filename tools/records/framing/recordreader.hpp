#pragma once

#include <cstdint>

#include "records/framing/buffersource.hpp"
#include "records/framing/recordform.hpp"

namespace oxr::rec {

// Where the bytes of a record are.
struct RecordBytes {
  const unsigned char* data = nullptr;
  std::uint32_t size = 0;  // of a variable record without a header: what the input still has, up to the longest record
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
  static constexpr std::uint32_t kHeaderBytes = 4;

  explicit RecordReader(const RecordForm& form) : form_(form) {}

  // Begins at byte `offset` of `buffer`. Without a `source` the input ends where the buffer does. Both are the
  // caller's.
  void open(const BitstreamBuffer* buffer, int offset, BufferSource* source);

  // True if no byte is left.
  bool atEnd() const { return available() == 0; }
  // The next record; its bytes stay until finish(). Throws FrameError for one that the input does not hold whole and
  // for a header that is none. A variable record without a header may turn out to be longer than what there is: the
  // caller then calls refuseShort().
  RecordBytes next();
  // Goes on after `size` bytes of the record, all of it as a rule, and looks whether the input has more.
  void finish(std::uint32_t size);
  // Throws the FrameError for a record that needs `size` bytes where fewer are left.
  [[noreturn]] void refuseShort(std::uint64_t size) const;

  // The number, from 1, of the record that next() gave last, and where its bytes begin, counted from where open()
  // began. Its header is not among its bytes.
  std::uint64_t recordNumber() const { return recordNumber_; }
  std::uint64_t recordOffset() const { return position_ + headerSize(); }
  // The bytes that whole records took, headers included.
  std::uint64_t position() const { return position_; }
  // The size of the header that each record begins with.
  std::uint32_t headerSize() const { return form_.framing == Framing::fixed ? 0 : kHeaderBytes; }

 private:
  std::uint32_t available() const { return static_cast<std::uint32_t>(end_ - data_); }
  bool ensure(std::uint32_t wanted);
  std::uint32_t lengthInHeader() const;
  [[noreturn]] void fail(const std::string& what) const;

  const RecordForm form_;
  BufferSource* source_ = nullptr;
  const unsigned char* begin_ = nullptr;  // of the buffer
  const unsigned char* data_ = nullptr;   // of the next record, header included
  const unsigned char* end_ = nullptr;
  std::uint64_t position_ = 0;
  std::uint64_t recordNumber_ = 0;
};

}  // namespace oxr::rec
