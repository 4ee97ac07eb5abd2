#pragma once

#include <memory>
#include <string>

#include "oxrrec/decode.hpp"
#include "records/parallel/recordcutter.hpp"

namespace oxr::rec {

// What became of a chunk.
struct DecodedChunk {
  std::uint64_t bytes = 0;
  std::uint64_t records = 0;
  std::unique_ptr<LineHandler> lines;  // who made them has them
  HeardFaults faults;
  // What ended the work, if anything did; nothing after this chunk counts then.
  int code = kDone;
  std::string ended;
};

using LineHandlers = Spares<std::unique_ptr<LineHandler>>;

// Decodes chunks of one input, one after the other. Serves one thread; the plan may be shared.
class ChunkDecoder : private FaultListener {
 public:
  // `start` is that of the input. Handlers of `spares` are used again. Throws as makeWorker does.
  ChunkDecoder(const RecordPlan& plan, const DecodeOptions& options, const InputOptions& settled, FileInput& input,
               const InputStart& start, LineHandlers& spares, const Console& console);

  DecodedChunk decode(const Chunk& chunk);

 private:
  bool goOnAfter(const FieldFault& fault) override;
  void readRecords(ChunkSource& source);
  void finishRecord();
  void end(int code, const std::string& text);

  const RecordPlan& plan_;
  const DecodeOptions& options_;
  const InputStart& start_;
  LineHandlers& spares_;
  const std::string input_;  // what messages call it
  RecordWorker::Owner worker_;
  DecodedChunk decoded_;
  bool recordIsBad_ = false;
};

}  // namespace oxr::rec
