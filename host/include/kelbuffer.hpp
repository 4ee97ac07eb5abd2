#pragma once

#include <vector>

#include "kelexport.hpp"

// A view of the bytes of a message. The bytes belong to the caller and must outlive the view.
//
// Offsets and lengths are bytes. An offset is available when there is a byte at it. All bytes are here from the start,
// so operations that could wait for more never do.
// An object serves one thread at a time.
class KELHOST_EXPORT KelBuffer {
 public:
  // Shows `length` bytes at `data`; null data or a negative length gives an empty buffer.
  KelBuffer(const char* data, int length);

  // Gives the number of bytes. `readAll` asks to fetch first what is still to come, which is nothing here.
  int size(bool readAll) const;

  // Gives the byte at `offset`. The offset after the last byte gives the end, which is not to be read; any other offset
  // that is not available gives null.
  const char* getData(int offset) const {
    return offset >= 0 && offset <= length_ && data_ != nullptr ? data_ + offset : nullptr;
  }
  // Does the same; `*remaining` becomes the number of bytes from `offset` to the end, 0 when there are none.
  const char* getData(int* remaining, int offset) const;

  // Tells whether there is a byte at `offset`.
  bool offsetAvailable(int offset) const;
  // Gives the number of bytes from `offset` to the end. `readAll` is as for size().
  int bytesAvailable(int offset, bool readAll) const;

  // Ask that the bytes from `offset` on be kept, and give that up again. Locks count, each offset for itself; giving
  // up one that is not held does nothing. Here all bytes stay anyway, so a lock is only remembered.
  void lockOffset(int offset);
  void unlockOffset(int offset);
  // Tells whether one lock at least is held on `offset`.
  bool isLocked(int offset) const;

 private:
  const char* data_;
  int length_;
  std::vector<int> locks_;  // an entry for each lock, in the order taken: they are few and come and go as on a stack
};

// A window on a KelBuffer: the stretch of bytes that a reader looks at just now. It is moved, grown and shrunk, and
// never shows a byte that the buffer does not have.
//
// A window may be bounded: then it ends at its bound as if the buffer ended there. Offsets stay those of the buffer,
// and bytes before the bound's start can still be looked at.
//
//   buffer          0 . . . . . . . . . . . . size
//   bound               boundStart . . . . boundEnd
//   window                   windowOffset . . windowOffset + windowLength
//
// An object serves one thread at a time; the buffer must outlive it.
//
// Example:
//   KelBufferPointer window(&buffer);
//   if (window.moveOffsetWindow(4, 10, true))  // up to 10 bytes from offset 4 on
//     use(window.getOffsetPointer(4), window.getEndPointer());
class KELHOST_EXPORT KelBufferPointer {
 public:
  // Makes an unbounded, empty window at offset 0. Without a buffer nothing is available.
  explicit KelBufferPointer(KelBuffer* buffer);
  // Makes a window bounded to `length` bytes from `offset` on, as far as the buffer has them, that shows all of it.
  // `lock` locks the bound's start; the destructor keeps that lock: whoever deletes a window whose hasNoLock() is false
  // unlocks boundStart(), unless the buffer goes too.
  KelBufferPointer(KelBuffer* buffer, int offset, int length, bool lock);
  KelBufferPointer(const KelBufferPointer&) = delete;
  KelBufferPointer& operator=(const KelBufferPointer&) = delete;

  // Moves the window to `length` bytes from `offset` on. Where they are not all available, `acceptShorter` takes what
  // there is, if that is one byte at least. False leaves the window as it is. No bytes (`length` 0) can be had at every
  // offset up to the end.
  bool moveOffsetWindow(int offset, int length, bool acceptShorter);
  // Does the same; `*start` and `*end` become the window's ends, for reading only. After a failure they show an empty
  // range.
  // The last argument is reserved: false.
  bool moveOffsetWindow(int offset, int length, bool acceptShorter, char** start, char** end, bool);

  // Grows the window by `more` bytes at its end. `acceptShorter` takes less, if that is one byte at least. False leaves
  // the window as it is.
  bool extendLength(int more, bool acceptShorter);
  // Makes the window `length` bytes long; its start stays. `acceptShorter` and the result are as in moveOffsetWindow.
  bool setLength(int length, bool acceptShorter);

  // Gives the byte at `offset`. An offset outside the window gives the window's end, so that a reader finds nothing
  // there.
  const char* getOffsetPointer(int offset) const {
    const bool inside = offset >= windowOffset_ && offset - windowOffset_ < windowLength_;
    return inside ? at(offset) : getEndPointer();
  }
  // Gives the address after the window's last byte; null only where there is no data at all.
  const char* getEndPointer() const { return at(windowOffset_ + windowLength_); }

  // Tells whether there is a byte at `offset` within the bound, be it in the window or not.
  bool offsetAvailable(int offset) const;
  // Tells whether there is one at each offset from `offset` to `offset + distance`, both included. A distance of -1 is
  // the empty range, which is available at every offset up to the end.
  bool offsetAvailable(int offset, int distance) const;

  KelBuffer* buffer() const { return buffer_; }       // the caller's; null without one
  int windowOffset() const { return windowOffset_; }  // bytes from the start of the buffer
  int windowLength() const { return windowLength_; }  // bytes
  bool isBounded() const { return bounded_; }         // whether it was made with a bound
  int boundStart() const { return boundStart_; }      // 0 when unbounded
  int boundEnd() const;                               // the buffer's size when unbounded
  bool hasNoLock() const { return !locked_; }         // false when the window was made with `lock`

 private:
  const char* at(int offset) const { return buffer_ != nullptr ? buffer_->getData(offset) : nullptr; }

  KelBuffer* buffer_;
  bool bounded_ = false;
  bool locked_ = false;
  int boundStart_ = 0;
  int boundEnd_ = 0;
  int windowOffset_ = 0;
  int windowLength_ = 0;
};
