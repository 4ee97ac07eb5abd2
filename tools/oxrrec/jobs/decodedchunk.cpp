#include "oxrrec/jobs/decodedchunk.hpp"

#include <utility>

#include "records/program/reading.hpp"

namespace oxr::rec {

ChunkDecoder::ChunkDecoder(const RecordPlan& plan, const DecodeOptions& options, const InputOptions& settled,
                           FileInput& input, const InputStart& start, Spares& spares, const Console& console)
    : onError_(options.onError),
      start_(start),
      spares_(spares),
      input_(input.name()),
      worker_(makeWorker(plan, settled, input, *this, console)),
      lines_(makeHandler(plan, options)) {
  worker_->setFIHandler(lines_.get(), false);
}

DecodedChunk ChunkDecoder::decode(const Chunk& chunk) {
  decoded_ = {};
  decoded_.lines = spares_.take();
  lines_->clear();
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
  decoded_.lines.assign(lines_->lines());
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
  if (onError_ == OnError::skip) lines_->discard();
}

void ChunkDecoder::end(int code, const std::string& text) {
  finishRecord();
  lines_->discardUnfinished();
  decoded_.code = code;
  decoded_.ended = text;
}

bool ChunkDecoder::goOnAfter(const FieldFault& fault) {
  recordIsBad_ = true;
  ++decoded_.faults.fields;
  if (onError_ == OnError::stop) return false;
  if (decoded_.faults.fields <= kToldFields) decoded_.faults.texts.push_back(fault.text());
  return true;
}

}  // namespace oxr::rec
