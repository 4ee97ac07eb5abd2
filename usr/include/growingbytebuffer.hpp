#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "bytebffr.hpp"
#include "kelalloc.hpp"
#include "oxrexport.hpp"

namespace oxr {

// The bytes of a message that is being written, in memory: a WritableBitstreamBuffer for whoever has no broker's at
// hand. Offsets and lengths are bytes.
//
// The room at least doubles whenever it is used up, so that appending costs a copy or two a byte in the long run. Bytes
// given to an operation may lie in the buffer itself. A message is at most 2147483647 bytes long.
// An object serves one thread at a time. Pointers to its bytes are valid until the next operation that changes it.
//
// Example:
//   oxr::GrowingByteBuffer message;
//   TextBufferWriter writer(&message, 1208, eEndianUnset);
//   writer.appendStr(text, 3);
//   file << message.bytes();
class OXR_EXPORT GrowingByteBuffer : public WritableBitstreamBuffer {
 public:
  // Empty, with room for `capacity` bytes; allocates nothing for a capacity of 0 or less.
  explicit GrowingByteBuffer(int capacity = 0);
  ~GrowingByteBuffer() override;

  // All bytes of the message.
  std::string_view bytes() const { return {data_.get(), static_cast<std::size_t>(length_)}; }
  // The number of bytes for which there is room without a further allocation. It never shrinks.
  int capacity() const { return capacity_; }

  // The offset after the last byte gives the end, not to be read. Outside of that there is null, and 0 remaining.
  const char* getData(int offset) const override;
  const char* getData(int* remaining, int offset) const override;
  int getLength() const override;
  // The bytes as they are at the time of the call: a host buffer that a later change leaves behind must not be read any
  // more. The same one as long as nothing has changed.
  KelBuffer* getBuffer() const override;
  bool offsetAvailable(int offset) const override;

  // In addition to what each operation is for: writeBytesAt() makes the message longer where it goes beyond its end,
  // with zero bytes in between if it begins beyond it.
  // KelConversionException: 0xC000157E (OXR5502) "CPI Internal Error" and "Invalid argument for
  // GrowingByteBuffer::setLength", or whichever it was, for a negative length or offset, an insertion beyond the end,
  // and a commitAppend() of more than there is room for. 0xC0001583 (OXR5507) "CPI InputData Too Long" when the message
  // would become too long. The message stays as it was.
  void setLength(int length) override;
  void appendBytes(const char* bytes, int length) override;
  void insertBytesAt(const char* bytes, int length, int offset) override;
  void writeBytesAt(const char* bytes, int length, int offset) override;
  char* reserveForAppend(int size) override;
  void commitAppend(int length) override;

 private:
  KelBlock<char> makeRoom(int offset, int size, const char* function);

  KelBlock<char> data_;  // null without capacity
  int length_ = 0;
  int capacity_ = 0;                                         // bytes at data_
  mutable std::vector<std::unique_ptr<KelBuffer>> buffers_;  // those handed out by getBuffer()
};

}  // namespace oxr
