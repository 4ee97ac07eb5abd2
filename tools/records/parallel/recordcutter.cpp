#include "records/parallel/recordcutter.hpp"

#include <algorithm>
#include <utility>

// The cutter stands between the walk and the input: whatever of a buffer the walk has consumed when it asks for the
// next one is copied, in one piece, to the chunk in the making.

namespace oxr::rec {

RecordCutter::RecordCutter(const RecordPlan& plan, const RecordWorker::Settings& settings, BufferSource& input,
                           std::size_t size, Spares<std::string>& spares)
    : input_(input), size_(size), spares_(spares), walk_(plan, settings, *this) {
  keepStart();
}

RecordCutter::RecordCutter(const RecordForm& form, BufferSource& input, std::size_t size, Spares<std::string>& spares)
    : input_(input), size_(size), spares_(spares), walk_(form, *this) {
  keepStart();
}

void RecordCutter::keepStart() {
  start_.size = input_.totalSize();
  if (!start_.size) return;
  int size = 0;
  const char* const bytes = input_.slide(0, kDetectBytes)->getData(&size, 0);
  startBytes_.assign(bytes, bytes + std::min<std::uint32_t>(static_cast<std::uint32_t>(size), kDetectBytes));
  start_.bytes = startBytes_;
}

const BitstreamBuffer* RecordCutter::slide(int consumed, int wanted) {
  const std::uint64_t at = bufferAt_ + static_cast<std::uint64_t>(consumed);
  if (at > keptUpTo_) keepUpTo(at);
  // If reading fails, the input's buffer is gone.
  if (buffer_ != nullptr) ahead_.assign(buffer_ + consumed, bufferSize_ - static_cast<std::size_t>(consumed));
  const BitstreamBuffer* const buffer = input_.slide(consumed, wanted);
  int size = 0;
  buffer_ = buffer->getData(&size, 0);
  bufferAt_ = at;
  bufferSize_ = static_cast<std::size_t>(size);
  return buffer;
}

void RecordCutter::keepUpTo(std::uint64_t position) {
  kept_.append(buffer_ + (keptUpTo_ - bufferAt_), position - keptUpTo_);
  keptUpTo_ = position;
}

std::optional<Chunk> RecordCutter::next() {
  if (isAtEnd_) return std::nullopt;
  const std::uint64_t begin = walk_.position();
  Chunk chunk;
  chunk.origin = {input_.origin().bytes + begin, input_.origin().records + walk_.records()};
  gather(chunk);
  return chunk.bytes.empty() && !chunk.failure ? std::nullopt : std::optional(std::move(chunk));
}

// `kept_` may hold bytes of a record that is not passed yet, beyond the end of the chunk.
void RecordCutter::gather(Chunk& chunk) {
  const std::uint64_t begin = walk_.position();
  const std::uint64_t first = walk_.records();
  std::uint64_t end = begin;
  const auto isFull = [&] { return walk_.position() - begin >= size_ || walk_.records() - first >= mostRecords_; };
  try {
    while (!isAtEnd_ && (!isFull() || !walk_.isAtStart()))
      isAtEnd_ = !walk_.step();
    end = walk_.position();
    if (end > keptUpTo_) keepUpTo(end);
  } catch (const FrameError& error) {
    isAtEnd_ = true;
    chunk.fault = error.what();
    end = bufferAt_ + bufferSize_;
    if (end > keptUpTo_) keepUpTo(end);
  } catch (const ToolError&) {
    isAtEnd_ = true;
    chunk.failure = std::current_exception();
    kept_ += ahead_;
    end = begin + kept_.size();
  }
  chunk.records = walk_.records() - first;
  chunk.whole = walk_.position() - begin;
  chunk.bytes = std::exchange(kept_, spares_.take().value_or(std::string()));
  kept_.assign(chunk.bytes, end - begin);
  chunk.bytes.resize(end - begin);
}

const BitstreamBuffer* ChunkSource::slide(int consumed, int wanted) {
  at_ += static_cast<std::size_t>(consumed);
  const std::size_t left = chunk_.bytes.size() - at_;
  if (left < static_cast<std::size_t>(wanted) && chunk_.failure) std::rethrow_exception(chunk_.failure);
  view_.emplace().create(chunk_.bytes.data() + at_, static_cast<int>(left));
  return &*view_;
}

}  // namespace oxr::rec
