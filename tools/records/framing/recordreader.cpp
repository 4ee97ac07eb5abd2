#include "records/framing/recordreader.hpp"

#include <algorithm>
#include <cstring>
#include <limits>

#include "records/counted.hpp"
#include "records/framing/detect.hpp"
#include "records/framing/errors.hpp"

// The reader looks at one buffer. When that holds less than is wanted, the source slides it: a new buffer begins with
// the first byte that is not consumed. At the end of a record a byte of the next one is asked for, so that atEnd() is
// known without a call. Of a variable record without headers nobody knows the length beforehand: the longest is asked
// for, and what there is of it is handed out.
//
// A record is handed out where it lies. Only one of several segments, and a line that is shorter than the layout, are
// put together in a buffer of the reader.

namespace oxr::rec {

namespace {

// A line end is looked for so far, unless the layout asks for more.
constexpr std::uint32_t kLongestLine = std::uint32_t{1} << 24;

const unsigned char* find(unsigned char byte, const unsigned char* from, const unsigned char* end) {
  return static_cast<const unsigned char*>(std::memchr(from, byte, static_cast<std::size_t>(end - from)));
}

const unsigned char* findLineEnd(const RecordForm& form, const unsigned char* from, const unsigned char* end) {
  const unsigned char* const feed = find(form.lineFeed, from, end);
  if (form.nextLine == form.lineFeed) return feed;
  const unsigned char* const next = find(form.nextLine, from, feed == nullptr ? end : feed);
  return next == nullptr ? feed : next;
}

}  // namespace

RecordReader::RecordReader(const RecordForm& form)
    : form_(form), shape_(headerShape(form.framing)), counted_(countedHeader(form)) {}

void RecordReader::open(const BitstreamBuffer* buffer, int offset, BufferSource* source) {
  source_ = source;
  origin_ = source == nullptr ? Origin{} : source->origin();
  size_ = source == nullptr ? std::nullopt : source_->totalSize();
  position_ = count_ = ahead_ = 0;
  blockLeft_ = 0;
  int remaining = 0;
  const char* const bytes = buffer->getData(&remaining, std::max(offset, 0));
  begin_ = data_ = reinterpret_cast<const unsigned char*>(bytes);
  end_ = data_ + std::max(remaining, 0);
  ensure(1);
  if (source == nullptr) size_ = available();
  keepStart();
}

// Of a pipe the start is not kept: nobody shall wait for it.
void RecordReader::keepStart() {
  start_.clear();
  if (!size_ || (source_ != nullptr && source_->start() != nullptr)) return;
  ensure(kDetectBytes);
  start_.assign(data_, data_ + std::min(available(), kDetectBytes));
}

// Makes `wanted` bytes available if the input has them, and tells whether it has.
bool RecordReader::ensure(std::uint32_t wanted) {
  if (available() >= wanted) return true;
  if (source_ != nullptr) slide(wanted);
  if (available() >= wanted) return true;
  size_ = position_ + ahead_ + available();
  return false;
}

void RecordReader::slide(std::uint32_t wanted) {
  const BitstreamBuffer* const buffer =
      source_->slide(static_cast<int>(data_ - begin_),
                     static_cast<int>(std::min<std::uint32_t>(wanted, std::numeric_limits<int>::max())));
  int remaining = 0;
  begin_ = data_ = reinterpret_cast<const unsigned char*>(buffer->getData(&remaining, 0));
  end_ = data_ + remaining;
}

RecordBytes RecordReader::next() {
  ++count_;
  switch (form_.framing) {
    case Framing::fixed:
      return nextUnframed();
    case Framing::bdw:
      enterBlock(position_);
      return nextFramed();
    case Framing::spanned:
      return nextSpanned();
    case Framing::lines:
      return nextLine();
    default:
      return nextFramed();
  }
}

RecordBytes RecordReader::nextUnframed() {
  std::uint32_t size = form_.maxSize;
  if (!ensure(size)) {
    if (!form_.isVariable) refuseShort(size);
    size = available();
  }
  return {data_, size};
}

RecordBytes RecordReader::nextFramed() {
  const std::uint32_t size = beginFramed();
  taken_ = shape_.bytes + size;
  return {data_ + shape_.bytes, size};
}

// Makes a header and what it stands before available. The result is the size of the latter.
std::uint32_t RecordReader::beginFramed() {
  if (!ensure(shape_.bytes)) fail("the input ends within its record header");
  const std::uint32_t size = lengthInHeader();
  if (isBlocked(form_.framing) && blockLeft_ < shape_.bytes + size)
    fail("its header asks for " + counted(size, "byte") + ", but its block has only " +
         std::to_string(blockLeft_ - std::min<std::uint32_t>(blockLeft_, shape_.bytes)) + " left");
  if (!ensure(shape_.bytes + size))
    fail("its header asks for " + counted(size, "byte") + ", but the input has only " +
         std::to_string(available() - shape_.bytes) + " left");
  return size;
}

// Bytes that follow a header.
std::uint32_t RecordReader::lengthInHeader() const {
  const std::uint32_t length = lengthIn(shape_, data_);
  const std::uint32_t rest = restOf(shape_, data_);
  if (form_.framing == Framing::spanned ? rest >> 8 > kHighestSegment || (rest & 0xFF) != 0 : rest != 0)
    fail("there is no record header: " + std::string(form_.framing == Framing::spanned
                                                         ? "byte 3 of one is 0 to 3, byte 4 zero"
                                                     : shape_.isBig ? "bytes 3 and 4 of one are zero"
                                                                    : "bytes 1 and 2 of one are zero"));
  if (length < counted_)
    fail("its header gives a length of " + std::to_string(length) + ", less than the header's own " +
         counted(counted_, "byte"));
  if (length - counted_ > kLongestRecord)
    fail("its header asks for " + counted(length - counted_, "byte") + ", more than a record has");
  return length - counted_;
}

// Passes over a block's header, if one is next. `position` moves with it.
void RecordReader::enterBlock(std::uint64_t& position) {
  if (blockLeft_ != 0) return;
  if (!ensure(kBlockHeaderBytes)) fail("the input ends within its block's header");
  const std::optional<std::uint32_t> length = blockLengthIn(data_);
  if (!length) fail("there is no block header: bytes 3 and 4 of one are zero");
  if (*length <= counted_)
    fail("its block's header gives a length of " + std::to_string(*length) + ": it has no record");
  blockLeft_ = *length - counted_;
  data_ += kBlockHeaderBytes;
  position += kBlockHeaderBytes;
}

RecordBytes RecordReader::nextSpanned() {
  pieces_.clear();
  enterBlock(position_);
  std::uint32_t size = beginFramed();
  Segment segment = segmentInHeader();
  taken_ = shape_.bytes + size;
  if (segment == Segment::whole) return {data_ + shape_.bytes, size};
  if (segment != Segment::first) fail("it begins with a later segment of a record");
  joined_.clear();
  keepSegment(size);
  while (segment != Segment::last) {
    if (blockLeft_ == 0 && !ensure(1)) fail("the input ends before its last segment");
    enterBlock(ahead_);
    size = beginFramed();
    segment = segmentInHeader();
    if (segment == Segment::whole || segment == Segment::first) fail("another one begins before its last segment");
    keepSegment(size);
  }
  taken_ = 0;
  return {joined_.data(), static_cast<std::uint32_t>(joined_.size())};
}

Segment RecordReader::segmentInHeader() const {
  return static_cast<Segment>(data_[2]);
}

void RecordReader::keepSegment(std::uint32_t size) {
  if (joined_.size() + size > kLongestRecord) fail("its segments have more bytes than a record has");
  pieces_.push_back({joined_.size(), position_ + ahead_ + shape_.bytes});
  joined_.insert(joined_.end(), data_ + shape_.bytes, data_ + shape_.bytes + size);
  const std::uint32_t all = shape_.bytes + size;
  data_ += all;
  ahead_ += all;
  blockLeft_ -= all;
}

RecordBytes RecordReader::nextLine() {
  const std::uint32_t longest = std::max(kLongestLine, form_.maxSize);
  std::uint32_t looked = 0;
  const unsigned char* lineEnd = nullptr;
  while ((lineEnd = findLineEnd(form_, data_ + looked, end_)) == nullptr) {
    looked = available();
    if (looked > longest) fail("its line does not end within " + counted(longest, "byte"));
    if (!ensure(looked + 1)) break;
  }
  std::uint32_t size = lineEnd == nullptr ? available() : static_cast<std::uint32_t>(lineEnd - data_);
  taken_ = size + (lineEnd == nullptr ? 0 : 1);
  if (lineEnd != nullptr && size != 0 && data_[size - 1] == form_.carriageReturn) --size;
  return size < form_.maxSize ? padded(size) : RecordBytes{data_, size};
}

RecordBytes RecordReader::padded(std::uint32_t size) {
  joined_.assign(data_, data_ + size);
  joined_.resize(form_.maxSize, form_.blank);
  return {joined_.data(), form_.maxSize, form_.maxSize - size};
}

void RecordReader::finish(std::uint32_t size) {
  if (!isFramed()) taken_ = size;
  if (taken_ + ahead_ == 0) fail("it has no bytes");
  if (isBlocked(form_.framing)) blockLeft_ -= taken_;
  data_ += taken_;
  position_ += ahead_ + taken_;
  ahead_ = 0;
  ensure(1);
}

std::uint64_t RecordReader::offsetInInput(std::uint64_t at) const {
  const std::uint64_t record = origin_.bytes + position_;
  if (form_.framing == Framing::lines) return record + std::min<std::uint64_t>(at, taken_);
  if (pieces_.empty()) return record + shape_.bytes + at;
  const auto after = std::upper_bound(pieces_.begin() + 1, pieces_.end(), at,
                                      [](std::uint64_t place, const Piece& piece) { return place < piece.inRecord; });
  const Piece& piece = after[-1];
  return origin_.bytes + piece.inInput + (at - piece.inRecord);
}

void RecordReader::refuseShort(std::uint64_t size) const {
  fail("it has " + counted(size, "byte") + ", but the input has only " + std::to_string(available()) + " left");
}

void RecordReader::fail(const std::string& what) const {
  const std::uint64_t byte = origin_.bytes + position_;
  throw FrameError(
      "record " + std::to_string(recordNumber()) + " at byte " + std::to_string(byte) + ": " + what + hint(), byte);
}

std::string RecordReader::hint() const {
  const InputStart* const given = source_ == nullptr ? nullptr : source_->start();
  const InputStart start = given != nullptr ? *given : InputStart{start_, size_};
  return start.bytes.empty() ? std::string() : hintFor(form_, start);
}

}  // namespace oxr::rec
