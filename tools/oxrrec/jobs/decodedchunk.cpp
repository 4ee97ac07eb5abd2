#include "oxrrec/jobs/decodedchunk.hpp"

#include <utility>

#include "records/program/reading.hpp"

namespace oxr::rec {

ChunkDecoder::ChunkDecoder(const RecordPlan& plan, const DecodeOptions& options, const InputOptions& settled,
                           FileInput& input, const InputStart& start, LineHandlers& spares, const Console& console)
    : plan_(plan),
      options_(options),
      start_(start),
      spares_(spares),
      input_(input.name()),
      worker_(makeWorker(plan, settled, input, *this, console)) {}

DecodedChunk ChunkDecoder::decode(const Chunk& chunk) {
  decoded_ = {};
  std::optional<std::unique_ptr<LineHandler>> spare = spares_.take();
  decoded_.lines = spare ? std::move(*spare) : makeHandler(plan_, options_);
  decoded_.lines->clear();
  worker_->setFIHandler(decoded_.lines.get(), false);
  ChunkSource source(chunk, start_);
  worker_->setSource(&source);
  worker_->initializeParse(-1, nullptr, -1);
  try {
    readRecords(source);
  } catch (const FieldError& error) {
    end(kBadField, input_ + ": " + error.what() + worker_->hint());
  } catch (const FrameError& error) {
    end(kFailed, input_ + ": " + error.what());
  } catch (const ToolError& error) {
    end(kFailed, error.what());
  }
  decoded_.bytes = chunk.bytes.size();
  decoded_.records = worker_->recordsRead();
  return std::move(decoded_);
}

void ChunkDecoder::readRecords(ChunkSource& source) {
  worker_->parseFirst(source.slide(0, 1), nullptr, true, 0, -1);
  if (worker_->recordsRead() == 0) return;
  finishRecord();
  while (worker_->hasNext()) {
    worker_->parseNext();
    finishRecord();
  }
}

void ChunkDecoder::finishRecord() {
  if (!std::exchange(recordIsBad_, false)) return;
  ++decoded_.faults.records;
  if (options_.onError == OnError::skip) decoded_.lines->discard();
}

void ChunkDecoder::end(int code, const std::string& text) {
  finishRecord();
  decoded_.lines->discardUnfinished();
  decoded_.code = code;
  decoded_.ended = text;
}

bool ChunkDecoder::goOnAfter(const FieldFault& fault) {
  recordIsBad_ = true;
  ++decoded_.faults.fields;
  if (options_.onError == OnError::stop) return false;
  if (decoded_.faults.fields <= kToldFields) decoded_.faults.texts.push_back(fault.text());
  return true;
}

}  // namespace oxr::rec
