// A message that grows in memory. The room doubles when it is used up, so that appending byte by byte costs the same as
// appending at once.

#include "growingbytebuffer.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include "support/support.hpp"

namespace oxr {

namespace {

constexpr char kSourcePath[] = "src/cpi/bsutils/growingbytebuffer";
constexpr std::int64_t kMostBytes = std::numeric_limits<int>::max();
constexpr std::int64_t kFewestBytes = 256;  // of the first allocation

// The library's memmove must not be asked to move nothing from null.
void put(char* target, const char* bytes, int length) {
  if (length > 0) std::memmove(target, bytes, static_cast<std::size_t>(length));
}

[[noreturn, gnu::cold, gnu::noinline]] void raiseInvalidArgument(const char* function) {
  raiseInternalError(untracedSite(nullptr, function, kSourcePath), std::string("Invalid argument for ") + function);
}
void require(bool holds, const char* function) {
  if (!holds) [[unlikely]]
    raiseInvalidArgument(function);
}

}  // namespace

GrowingByteBuffer::GrowingByteBuffer(int capacity) {
  if (capacity > 0) makeRoom(0, capacity, "GrowingByteBuffer::GrowingByteBuffer");
}

GrowingByteBuffer::~GrowingByteBuffer() = default;

const char* GrowingByteBuffer::getData(int offset) const {
  return offset >= 0 && offset <= length_ && data_ != nullptr ? data_.get() + offset : nullptr;
}

const char* GrowingByteBuffer::getData(int* remaining, int offset) const {
  *remaining = offsetAvailable(offset) ? length_ - offset : 0;
  return getData(offset);
}

int GrowingByteBuffer::getLength() const {
  return length_;
}

KelBuffer* GrowingByteBuffer::getBuffer() const {
  const bool isPresent =
      !buffers_.empty() && buffers_.back()->getData(0) == data_.get() && buffers_.back()->size(false) == length_;
  if (!isPresent) buffers_.push_back(std::make_unique<KelBuffer>(data_.get(), length_));
  return buffers_.back().get();
}

bool GrowingByteBuffer::offsetAvailable(int offset) const {
  return offset >= 0 && offset < length_;
}

// Makes room for `size` bytes at `offset`, both not negative. The result is the block that was outgrown, if any: bytes
// to be written may lie in it.
KelBlock<char> GrowingByteBuffer::makeRoom(int offset, int size, const char* function) {
  const std::int64_t needed = std::int64_t{offset} + size;
  if (needed <= capacity_) [[likely]]
    return nullptr;
  if (needed > kMostBytes)
    raise<KelConversionException>(untracedSite(nullptr, function, kSourcePath), failures::kTooLong,
                                  static_cast<long>(needed));
  const std::int64_t capacity = std::clamp(2 * std::int64_t{capacity_}, std::max(needed, kFewestBytes), kMostBytes);
  KelBlock<char> block = allocateBlock<char>(static_cast<unsigned long>(capacity));
  put(block.get(), data_.get(), length_);
  capacity_ = static_cast<int>(capacity);
  data_.swap(block);
  return block;
}

void GrowingByteBuffer::setLength(int length) {
  constexpr const char* kFunction = "GrowingByteBuffer::setLength";
  require(length >= 0, kFunction);
  makeRoom(0, length, kFunction);
  if (length > length_) std::fill(data_.get() + length_, data_.get() + length, '\0');
  length_ = length;
}

void GrowingByteBuffer::appendBytes(const char* bytes, int length) {
  constexpr const char* kFunction = "GrowingByteBuffer::appendBytes";
  require(length >= 0, kFunction);
  const KelBlock<char> outgrown = makeRoom(length_, length, kFunction);
  put(data_.get() + length_, bytes, length);
  length_ += length;
}

void GrowingByteBuffer::insertBytesAt(const char* bytes, int length, int offset) {
  require(length >= 0 && offset >= 0 && offset <= length_, "GrowingByteBuffer::insertBytesAt");
  const int end = length_;
  appendBytes(bytes, length);
  std::rotate(data_.get() + offset, data_.get() + end, data_.get() + length_);
}

void GrowingByteBuffer::writeBytesAt(const char* bytes, int length, int offset) {
  constexpr const char* kFunction = "GrowingByteBuffer::writeBytesAt";
  require(length >= 0 && offset >= 0, kFunction);
  const KelBlock<char> outgrown = makeRoom(offset, length, kFunction);
  if (offset > length_) std::fill(data_.get() + length_, data_.get() + offset, '\0');
  put(data_.get() + offset, bytes, length);
  length_ = std::max(length_, offset + length);
}

char* GrowingByteBuffer::reserveForAppend(int size) {
  constexpr const char* kFunction = "GrowingByteBuffer::reserveForAppend";
  require(size >= 0, kFunction);
  if (size > capacity_ - length_) [[unlikely]]
    makeRoom(length_, size, kFunction);
  return data_.get() + length_;
}

void GrowingByteBuffer::commitAppend(int length) {
  require(length >= 0 && length <= capacity_ - length_, "GrowingByteBuffer::commitAppend");
  length_ += length;
}

}  // namespace oxr
