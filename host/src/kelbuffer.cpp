// A buffer has all of its bytes from the start, so each question to a window is one of offsets: the end is that of the
// bound, else the buffer's, and a move is refused before a member changes. An offset and a length that a caller gives
// are never added as ints: their sum may be beyond one.

#include "kelbuffer.hpp"

#include <algorithm>

KelBuffer::KelBuffer(const char* data, int length) : data_(data), length_(data != nullptr ? std::max(length, 0) : 0) {}

int KelBuffer::size(bool) const {
  return length_;
}

const char* KelBuffer::getData(int* remaining, int offset) const {
  *remaining = bytesAvailable(offset, false);
  return getData(offset);
}

bool KelBuffer::offsetAvailable(int offset) const {
  return offset >= 0 && offset < length_;
}

int KelBuffer::bytesAvailable(int offset, bool) const {
  return offsetAvailable(offset) ? length_ - offset : 0;
}

void KelBuffer::lockOffset(int offset) {
  locks_.push_back(offset);
}

void KelBuffer::unlockOffset(int offset) {
  const auto lock = std::find(locks_.rbegin(), locks_.rend(), offset);
  if (lock != locks_.rend()) locks_.erase(std::next(lock).base());
}

bool KelBuffer::isLocked(int offset) const {
  return std::find(locks_.begin(), locks_.end(), offset) != locks_.end();
}

KelBufferPointer::KelBufferPointer(KelBuffer* buffer) : buffer_(buffer) {}

KelBufferPointer::KelBufferPointer(KelBuffer* buffer, int offset, int length, bool lock)
    : buffer_(buffer), locked_(lock && buffer != nullptr) {
  const int size = boundEnd();
  boundStart_ = std::clamp(offset, 0, size);
  boundEnd_ = boundStart_ + std::clamp(length, 0, size - boundStart_);
  bounded_ = true;
  windowOffset_ = boundStart_;
  windowLength_ = boundEnd_ - boundStart_;
  if (locked_) buffer_->lockOffset(boundStart_);
}

int KelBufferPointer::boundEnd() const {
  if (bounded_) return boundEnd_;
  return buffer_ != nullptr ? buffer_->size(false) : 0;
}

bool KelBufferPointer::moveOffsetWindow(int offset, int length, bool acceptShorter) {
  const int end = boundEnd();
  if (offset < 0 || offset > end || length < 0) return false;
  const int taken = std::min(length, end - offset);
  if (taken < length && (!acceptShorter || taken == 0)) return false;
  windowOffset_ = offset;
  windowLength_ = taken;
  return true;
}

bool KelBufferPointer::moveOffsetWindow(int offset, int length, bool acceptShorter, char** start, char** end, bool) {
  const bool moved = moveOffsetWindow(offset, length, acceptShorter);
  *end = const_cast<char*>(getEndPointer());
  *start = moved ? const_cast<char*>(at(windowOffset_)) : *end;
  return moved;
}

bool KelBufferPointer::extendLength(int more, bool acceptShorter) {
  const int taken = std::min(more, boundEnd() - windowOffset_ - windowLength_);
  if (more < 0 || (taken < more && (!acceptShorter || taken == 0))) return false;
  windowLength_ += taken;
  return true;
}

bool KelBufferPointer::setLength(int length, bool acceptShorter) {
  return moveOffsetWindow(windowOffset_, length, acceptShorter);
}

bool KelBufferPointer::offsetAvailable(int offset) const {
  return offset >= 0 && offset < boundEnd();
}

bool KelBufferPointer::offsetAvailable(int offset, int distance) const {
  return offset >= 0 && distance >= -1 && static_cast<long>(offset) + distance < boundEnd();
}
