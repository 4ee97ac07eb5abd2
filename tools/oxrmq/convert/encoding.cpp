#include "oxrmq/convert/encoding.hpp"

#include <algorithm>

#include "oxrmq/convert/bodysource.hpp"

namespace oxr::mq {

namespace {

constexpr std::string_view kTypes[] = {"", kLinesType, "application/jsonl", "application/json", "text/plain"};

}  // namespace

Encoding::Encoding(const rec::RecordPlan& plan, const Settings& settings)
    : onError_(settings.onError),
      worker_(rec::RecordWorker::make(plan, settings.records, *this)),
      reader_(plan.names()) {}

bool Encoding::takes(std::string_view contentType) const {
  return std::find(std::begin(kTypes), std::end(kTypes), contentType) != std::end(kTypes);
}

Converted Encoding::convert(std::span<const unsigned char> body, rec::Origin origin) {
  Converted converted;
  buffer_.setLength(0);
  if (!isBegun_) worker_->initializeWrite(nullptr, 0, 0, 0);
  isBegun_ = false;
  BodySource source(body, {});
  rec::JsonLines lines(source);
  std::string why;
  while (const auto line = lines.next()) {
    if (add(*line, why)) {
      ++converted.records;
      continue;
    }
    ++converted.badFields;
    if (onError_ == OnError::skip) continue;
    converted.fault = {.reason = "line " + std::to_string(lines.lineNumber()) + ", " + why,
                       .record = origin.records + lines.lineNumber()};
    return converted;
  }
  if (converted.records == 0 && converted.badFields == 0) {
    converted.fault = {.reason = "the message has no records"};
    return converted;
  }
  worker_->finishWriting(buffer_);
  isBegun_ = true;
  converted.output = buffer_.bytes();
  return converted;
}

bool Encoding::add(std::string_view line, std::string& fault) {
  try {
    worker_->setFIMessageTree(&reader_.read(line), false);
    worker_->write(&buffer_, 0, 0);
    return true;
  } catch (const rec::JsonLineError& error) {
    fault = error.what();
  } catch (const rec::WriteError& error) {
    fault = error.what();
  } catch (const rec::FrameError& error) {
    fault = error.what();
  }
  return false;
}

}  // namespace oxr::mq
