#include "records/framing/recordreader.hpp"

#include <algorithm>
#include <limits>
#include <string>

#include "records/framing/errors.hpp"

// The reader looks at one buffer. When that holds less than is wanted, the source slides it: a new buffer begins with
// the first byte that is not consumed. At the end of a record a byte of the next one is asked for, so that atEnd() is
// known without a call. Of a variable record without headers nobody knows the length beforehand: the longest is asked
// for, and what there is of it is handed out.

namespace oxr::rec {

void RecordReader::open(const BitstreamBuffer* buffer, int offset, BufferSource* source) {
  source_ = source;
  position_ = 0;
  recordNumber_ = 0;
  int remaining = 0;
  const char* const bytes = buffer->getData(&remaining, std::max(offset, 0));
  begin_ = data_ = reinterpret_cast<const unsigned char*>(bytes);
  end_ = data_ + std::max(remaining, 0);
  ensure(1);
}

// Makes `wanted` bytes available if the input has them, and tells whether it has.
bool RecordReader::ensure(std::uint32_t wanted) {
  if (available() >= wanted) return true;
  if (source_ == nullptr) return false;
  const BitstreamBuffer* const buffer =
      source_->slide(static_cast<int>(data_ - begin_),
                     static_cast<int>(std::min<std::uint32_t>(wanted, std::numeric_limits<int>::max())));
  int remaining = 0;
  begin_ = data_ = reinterpret_cast<const unsigned char*>(buffer->getData(&remaining, 0));
  end_ = data_ + remaining;
  return available() >= wanted;
}

RecordBytes RecordReader::next() {
  ++recordNumber_;
  std::uint32_t size = form_.maxSize;
  if (form_.framing != Framing::fixed) {
    if (!ensure(kHeaderBytes)) fail("the input ends within its record header");
    size = lengthInHeader();
    if (!ensure(kHeaderBytes + size))
      fail("its header asks for " + std::to_string(size) + " bytes, but the input has only " +
           std::to_string(available() - kHeaderBytes) + " left");
  } else if (!ensure(size)) {
    if (!form_.isVariable) refuseShort(size);
    size = available();
  }
  return {data_ + headerSize(), size};
}

void RecordReader::finish(std::uint32_t size) {
  if (size + headerSize() == 0) fail("it has no bytes");
  data_ += headerSize() + size;
  position_ += headerSize() + std::uint64_t{size};
  ensure(1);
}

// Bytes of the record that follow its header.
std::uint32_t RecordReader::lengthInHeader() const {
  const bool isBig = form_.framing == Framing::rdw;
  const std::uint32_t length = isBig ? data_[0] << 8 | data_[1] : data_[3] << 8 | data_[2];
  const std::uint32_t rest = isBig ? data_[2] | data_[3] : data_[0] | data_[1];
  if (rest != 0)
    fail("there is no record header: bytes " + std::string(isBig ? "3 and 4" : "1 and 2") + " of one are zero");
  if (!form_.countsHeader.value_or(true)) return length;
  if (length < kHeaderBytes)
    fail("its header gives a length of " + std::to_string(length) + ", less than the header's own " +
         std::to_string(kHeaderBytes) + " bytes");
  return length - kHeaderBytes;
}

void RecordReader::refuseShort(std::uint64_t size) const {
  fail("it has " + std::to_string(size) + " bytes, but the input has only " + std::to_string(available()) + " left");
}

void RecordReader::fail(const std::string& what) const {
  throw FrameError("record " + std::to_string(recordNumber_) + " at byte " + std::to_string(position_) + ": " + what);
}

}  // namespace oxr::rec
