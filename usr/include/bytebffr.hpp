#pragma once

#include <memory>
#include <vector>

#include "kelbuffer.hpp"
#include "oxrexport.hpp"

// The bytes of a message that a worker reads. Offsets and lengths are bytes.
//
// The view may stand on bytes that the broker is still receiving, which is why availability is asked for and not
// computed. An object serves one thread at a time.
class OXR_EXPORT BitstreamBuffer {
 public:
  BitstreamBuffer() = default;
  BitstreamBuffer(const BitstreamBuffer&) = delete;
  BitstreamBuffer& operator=(const BitstreamBuffer&) = delete;
  virtual ~BitstreamBuffer();

  // The byte at `offset`, with those after it up to the end. Null when there is no data. Bounds need not be
  // tested: ask offsetAvailable() first.
  virtual const char* getData(int offset) const = 0;
  // The same; `*remaining` becomes the number of bytes from `offset` to the end.
  virtual const char* getData(int* remaining, int offset) const = 0;
  // The number of bytes.
  virtual int getLength() const = 0;
  // The host buffer over the same bytes, on which a window can be set. Not the caller's: each class tells how long it
  // lasts.
  virtual KelBuffer* getBuffer() const = 0;
  // Whether there is a byte at `offset`.
  virtual bool offsetAvailable(int offset) const = 0;
};

// A view of bytes that the caller owns and keeps for as long as the object lives. It is bound to them once.
//
// Example:
//   ReadOnlyByteBuffer message;
//   message.create(bytes, 80);
//   message.offsetAvailable(79);        // true
//   worker.parse(&message, ...);
class OXR_EXPORT ReadOnlyByteBuffer : public BitstreamBuffer {
 public:
  // Not bound yet: no data, length 0.
  ReadOnlyByteBuffer();
  ~ReadOnlyByteBuffer() override;

  // Binds the object to `length` bytes at `data`. True for the first call; every later one changes nothing.
  bool create(const void* data, int length);

  const char* getData(int offset) const override;
  // `*remaining` is the length less the offset whatever that gives, so 0 and below tell an offset at the end or beyond.
  const char* getData(int* remaining, int offset) const override;
  int getLength() const override;
  // A new host buffer with each call, released together with this object.
  KelBuffer* getBuffer() const override;
  // Compares with the length alone: an offset below 0 counts as available.
  bool offsetAvailable(int offset) const override;

 private:
  bool created = false;
  int length = 0;  // bytes
  const char* data = nullptr;
  mutable std::vector<std::unique_ptr<KelBuffer>> buffers;  // those handed out by getBuffer()
};

// A view of a host buffer, which must outlive it. Every operation is the host buffer's own.
class OXR_EXPORT BitstreamBufferReader : public BitstreamBuffer {
 public:
  // `hostBuffer` is not null and stays the caller's.
  explicit BitstreamBufferReader(KelBuffer* hostBuffer);
  ~BitstreamBufferReader() override;

  const char* getData(int offset) const override;
  const char* getData(int* remaining, int offset) const override;
  // Reads to the end where the host buffer is still being filled.
  int getLength() const override;
  // The host buffer itself, the same with each call.
  KelBuffer* getBuffer() const override;
  bool offsetAvailable(int offset) const override;

 private:
  KelBuffer* buffer;
};

// The bytes of a message that a worker writes. The broker implements it; the order of the operations is part of the
// interface.
//
// Text is written without a copy: reserveForAppend() gives room at the end, the text is converted right there, and
// commitAppend() keeps the bytes that it took.
//
// Example:
//   char* const room = buffer.reserveForAppend(80);
//   const int used = format(room, 80);
//   buffer.commitAppend(used);
class OXR_EXPORT WritableBitstreamBuffer : public BitstreamBuffer {
 public:
  ~WritableBitstreamBuffer() override;

  // Cuts the buffer to `length` bytes, or appends zero bytes up to there. This library never calls it.
  virtual void setLength(int length) = 0;
  // Appends `length` bytes at the end.
  virtual void appendBytes(const char* bytes, int length) = 0;
  // Puts `length` bytes before `offset`, moving what follows. This library never calls it.
  virtual void insertBytesAt(const char* bytes, int length, int offset) = 0;
  // Overwrites from `offset` on.
  virtual void writeBytesAt(const char* bytes, int length, int offset) = 0;
  // At least `size` writable bytes after the end. They are no part of the buffer yet, and stay valid until the next
  // operation that changes it.
  virtual char* reserveForAppend(int size) = 0;
  // Makes the first `length` of the reserved bytes part of the buffer.
  virtual void commitAppend(int length) = 0;
};
