#pragma once

#include <exception>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "records/parallel/recordwalk.hpp"
#include "records/parallel/spares.hpp"

namespace oxr::rec {

// Some records of an input.
struct Chunk {
  std::string bytes;
  Origin origin;
  std::exception_ptr failure;  // what reading the bytes after it gave, if that failed
  std::uint64_t records = 0;   // that are whole
  std::uint64_t whole = 0;     // bytes of those
  std::string fault;           // why what comes after those is no record; empty unless this is the last chunk
};

// A chunk as an input of its own.
class ChunkSource : public BufferSource {
 public:
  // `start` is that of the whole input. Both stay the caller's.
  ChunkSource(const Chunk& chunk, const InputStart& start) : chunk_(chunk), start_(start) {}
  const BitstreamBuffer* slide(int consumed, int wanted) override;
  Origin origin() const override { return chunk_.origin; }
  const InputStart* start() const override { return &start_; }

 private:
  const Chunk& chunk_;
  const InputStart& start_;
  std::size_t at_ = 0;
  std::optional<ReadOnlyByteBuffer> view_;
};

// Cuts an input into chunks of whole records. What is wrong with the input stays for the chunk's reader to find: the
// last chunk then has all bytes that are at hand, and its source throws what the input threw.
class RecordCutter : private BufferSource {
 public:
  // Chunks have `size` bytes or a little more; more too where a record, or a run of blocks that a record may not begin
  // in, is longer. Their bytes lie in strings of `spares`, where they may be given back to. See RecordWalk.
  RecordCutter(const RecordPlan& plan, const RecordWorker::Settings& settings, BufferSource& input, std::size_t size,
               Spares<std::string>& spares);

  // The same for records whose ends the form alone tells.
  RecordCutter(const RecordForm& form, BufferSource& input, std::size_t size, Spares<std::string>& spares);

  // From now on chunks have no more records than this, unless one may not begin after them.
  void setMostRecords(std::uint64_t most) { mostRecords_ = most; }
  // The next chunk, nothing at the end.
  std::optional<Chunk> next();
  // Of the input: no bytes where its size is not known at once.
  const InputStart* start() const override { return &start_; }

 private:
  const BitstreamBuffer* slide(int consumed, int wanted) override;
  Origin origin() const override { return input_.origin(); }
  std::optional<std::uint64_t> totalSize() const override { return input_.totalSize(); }

  void gather(Chunk& chunk);
  void keepUpTo(std::uint64_t position);
  void keepStart();

  BufferSource& input_;
  const std::size_t size_;
  std::uint64_t mostRecords_ = std::numeric_limits<std::uint64_t>::max();
  Spares<std::string>& spares_;
  std::vector<unsigned char> startBytes_;
  InputStart start_;
  RecordWalk walk_;
  bool isAtEnd_ = false;
  // The bytes since the last chunk, as far as they are no longer, or not only, in the input's buffer.
  std::string kept_;
  std::uint64_t keptUpTo_ = 0;    // positions in the input, from its start
  const char* buffer_ = nullptr;  // the input's, which begins at
  std::uint64_t bufferAt_ = 0;
  std::size_t bufferSize_ = 0;
  std::string ahead_;  // what the walk had not consumed when it asked for more
};

}  // namespace oxr::rec
