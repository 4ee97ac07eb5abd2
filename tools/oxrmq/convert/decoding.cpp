#include "oxrmq/convert/decoding.hpp"

#include <utility>

#include "oxrmq/convert/bodysource.hpp"

namespace oxr::mq {

Decoding::Decoding(const rec::RecordPlan& plan, const Settings& settings)
    : onError_(settings.onError),
      longest_(settings.longest),
      worker_(rec::RecordWorker::make(plan, settings.records, *this)),
      lines_(plan.names(), settings.json) {
  worker_->setFIHandler(&lines_, false);
}

bool Decoding::takes(std::string_view contentType) const {
  return contentType.empty() || contentType == kRecordsType;
}

Converted Decoding::convert(std::span<const unsigned char> body, rec::Origin origin) {
  converted_ = {};
  lines_.clear();
  isRecordBad_ = false;
  BodySource source(body, origin);
  const std::uint64_t skippedBefore = worker_->recordsSkipped();
  try {
    readAll(source);
    if (!converted_.fault) converted_.output = lines_.lines();
  } catch (const rec::FieldError&) {
    lines_.discardUnfinished();  // the fault was kept when it was told
  } catch (const rec::FrameError& error) {
    lines_.discardUnfinished();
    converted_.fault = {.reason = error.what(), .record = worker_->recordNumber(), .offset = error.byte()};
  }
  converted_.leftOut += worker_->recordsSkipped() - skippedBefore;
  converted_.records = worker_->recordsRead() - converted_.leftOut;
  return std::move(converted_);
}

void Decoding::readAll(rec::BufferSource& source) {
  worker_->setSource(&source);
  worker_->initializeParse(-1, nullptr, -1);
  worker_->parseFirst(source.slide(0, 1), nullptr, true, 0, -1);
  while (finishRecord() && worker_->hasNext())
    worker_->parseNext();
}

// Whether the next one may follow.
bool Decoding::finishRecord() {
  if (std::exchange(isRecordBad_, false) && onError_ == OnError::skip) {
    lines_.discard();
    ++converted_.leftOut;
  }
  if (lines_.lines().size() <= longest_) return true;
  converted_.fault = tooLong(longest_);
  return false;
}

bool Decoding::goOnAfter(const rec::FieldFault& fault) {
  ++converted_.badFields;
  isRecordBad_ = true;
  if (onError_ != OnError::fails) return true;
  converted_.fault = {.reason = fault.reasonText(),
                      .path = fault.path(),
                      .number = fault.reason.message,
                      .record = fault.record,
                      .offset = fault.offset};
  return false;
}

}  // namespace oxr::mq
