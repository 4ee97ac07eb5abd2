#include "oxrmq/convert/encoding.hpp"

#include <algorithm>

#include "oxrmq/convert/bodysource.hpp"

namespace oxr::mq {

namespace {

constexpr std::string_view kTypes[] = {"", kLinesType, "application/jsonl", "application/json", "text/plain"};

}  // namespace

Encoding::Encoding(const rec::RecordPlan& plan, const Settings& settings)
    : onError_(settings.onError),
      longest_(settings.longest),
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
  while (!isTooLong()) {
    std::optional<std::string_view> line;
    try {
      line = lines.next();
    } catch (const rec::FrameError& error) {
      converted.fault = {.reason = error.what(), .record = origin.records + lines.lineNumber() + 1};
      return converted;
    }
    if (!line) break;
    std::optional<Fault> fault = add(*line, origin.bytes + lines.lineStart(), converted);
    if (!fault) continue;
    ++converted.badFields;
    if (onError_ == OnError::skip) {
      ++converted.leftOut;
      continue;
    }
    fault->reason = "line " + std::to_string(lines.lineNumber()) + ", " + fault->reason;
    fault->record = origin.records + lines.lineNumber();
    converted.fault = std::move(fault);
    return converted;
  }
  if (converted.records == 0 && converted.leftOut == 0) {
    converted.fault = {.reason = "the message has no records"};
    return converted;
  }
  worker_->finishWriting(buffer_);
  isBegun_ = true;
  if (isTooLong())
    converted.fault = tooLong(longest_);
  else
    converted.output = buffer_.bytes();
  return converted;
}

std::optional<Fault> Encoding::add(std::string_view line, std::uint64_t lineStart, Converted& converted) {
  try {
    worker_->setFIMessageTree(&reader_.read(line), false);
    worker_->write(&buffer_, 0, 0);
    ++converted.records;
    return std::nullopt;
  } catch (const rec::UnknownRecord&) {
    ++converted.leftOut;
    return std::nullopt;
  } catch (const rec::JsonLineError& error) {
    return Fault{.reason = error.what(), .offset = lineStart + error.column() - 1};
  } catch (const rec::WriteError& error) {
    return Fault{.reason = error.what(), .path = error.path(), .number = error.number(), .offset = lineStart};
  } catch (const rec::FrameError& error) {
    return Fault{.reason = error.what(), .offset = lineStart};
  }
}

}  // namespace oxr::mq
