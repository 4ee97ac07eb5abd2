#include "bytebffr.hpp"

BitstreamBuffer::~BitstreamBuffer() = default;
WritableBitstreamBuffer::~WritableBitstreamBuffer() = default;

ReadOnlyByteBuffer::ReadOnlyByteBuffer() = default;
ReadOnlyByteBuffer::~ReadOnlyByteBuffer() = default;

bool ReadOnlyByteBuffer::create(const void* bytes, int byteCount) {
  if (created) return false;
  data = static_cast<const char*>(bytes);
  length = byteCount;
  created = true;
  return true;
}

const char* ReadOnlyByteBuffer::getData(int offset) const {
  return data == nullptr ? nullptr : data + offset;
}

const char* ReadOnlyByteBuffer::getData(int* remaining, int offset) const {
  *remaining = static_cast<int>(static_cast<unsigned>(length) - static_cast<unsigned>(offset));
  return getData(offset);
}

int ReadOnlyByteBuffer::getLength() const {
  return length;
}

KelBuffer* ReadOnlyByteBuffer::getBuffer() const {
  return buffers.emplace_back(std::make_unique<KelBuffer>(data, length)).get();
}

bool ReadOnlyByteBuffer::offsetAvailable(int offset) const {
  return length > offset;
}

BitstreamBufferReader::BitstreamBufferReader(KelBuffer* hostBuffer) : buffer(hostBuffer) {}
BitstreamBufferReader::~BitstreamBufferReader() = default;

const char* BitstreamBufferReader::getData(int offset) const {
  return buffer->getData(offset);
}

const char* BitstreamBufferReader::getData(int* remaining, int offset) const {
  return buffer->getData(remaining, offset);
}

int BitstreamBufferReader::getLength() const {
  return buffer->size(true);
}

KelBuffer* BitstreamBufferReader::getBuffer() const {
  return buffer;
}

bool BitstreamBufferReader::offsetAvailable(int offset) const {
  return buffer->offsetAvailable(offset);
}
