#include <algorithm>

#include "buffers/textsourcepath.hpp"
#include "support/support.hpp"
#include "textbffr.hpp"

using namespace oxr;

namespace {

// Entry and exit at trace level, where the other members trace theirs at debug level only.
class LifeTrace {
 public:
  explicit LifeTrace(const char* function) : function_(function) {
    if (KelLog::iEffectiveLogFilter > 2) handle_ = KelLog::writeEntry(function);
  }
  LifeTrace(const LifeTrace&) = delete;
  LifeTrace& operator=(const LifeTrace&) = delete;
  ~LifeTrace() {
    if (KelLog::iEffectiveLogFilter > 2) KelLog::writeExit(function_, handle_);
  }

 private:
  const char* function_;
  long handle_ = 0;
};

}  // namespace

SpawnableTextBufferReader::SpawnableTextBufferReader(const BitstreamBuffer* source, int codePage, EEndian byteOrder,
                                                     CPUnicodeConverter* shared)
    : TextBufferReader(source, codePage, byteOrder, shared) {
  const LifeTrace trace("SpawnableTextBufferReader::SpawnableTextBufferReader");
}

// Locks of windows that are still suspended stay with the host's buffer.
SpawnableTextBufferReader::~SpawnableTextBufferReader() {
  const LifeTrace trace("SpawnableTextBufferReader::~SpawnableTextBufferReader");
  while (!windowStack.empty())
    windowStack.pop_back();
}

void SpawnableTextBufferReader::spawnTextBufferReader(int length) {
  const FunctionTrace trace(nullptr, "SpawnableTextBufferReader::spawnTextBufferReader", kTextBufferPath);
  // The present window answers, so an inner stretch cannot go beyond an outer one.
  if (!pointer->offsetAvailable(currentOffset, std::max(length, -1) - 1))
    raiseBare<KelConversionException>(trace.site(), failures::kInternalError,
                                      "Trying to spawn buffer that extends beyond the length available to it.");
  // The lock that a window takes stays when the window goes. So the window comes last of all that can fail.
  windowStack.emplace_back();
  try {
    windowStack.back() = std::make_unique<KelBufferPointer>(pointer->buffer(), currentOffset, length, true);
  } catch (...) {
    windowStack.pop_back();
    throw;
  }
  std::swap(windowStack.back(), pointer);
}

void SpawnableTextBufferReader::unspawnTextBufferReader() {
  const FunctionTrace trace(nullptr, "SpawnableTextBufferReader::clearTextBufferReader", kTextBufferPath);
  if (windowStack.empty()) return;
  if (pointer->buffer() != nullptr && !pointer->hasNoLock()) pointer->buffer()->unlockOffset(pointer->boundStart());
  pointer = std::move(windowStack.back());
  windowStack.pop_back();
}

int SpawnableTextBufferReader::getLength() const {
  const FunctionTrace trace(nullptr, "SpawnableTextBufferReader::getLength", kTextBufferPath);
  return pointer->boundEnd();
}
