#include "oxrrec/badrecords.hpp"

#include <algorithm>
#include <string>

#include "oxrrec/hextext.hpp"

namespace oxr::rec {

namespace {

constexpr std::size_t kWriteBytes = std::size_t{256} << 10;

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

void putText(Writer& writer, const char* key, const std::string& text) {
  writer.Key(key);
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

void putNumber(Writer& writer, const char* key, std::uint64_t number) {
  writer.Key(key);
  writer.Uint64(number);
}

}  // namespace

void BadRecords::add(const FieldFault& fault, const RecordWorker& worker) {
  if (!isInRecord_) {
    isInRecord_ = true;
    const auto bytes = worker.recordInHand();
    raw_.assign(bytes.begin(), bytes.end());
    writer_.Reset(lines_);
    writer_.StartObject();
    putNumber(writer_, "record", fault.record);
    putNumber(writer_, "offset", worker.offsetInInput());
    writer_.Key("faults");
    writer_.StartArray();
  }
  writer_.StartObject();
  putText(writer_, "path", fault.path());
  putNumber(writer_, "offset", fault.offset);
  putText(writer_, "reason", fault.reasonText());
  putText(writer_, "bytes", hexText(fault.bytes));
  writer_.EndObject();
}

void BadRecords::finishRecord(std::uint64_t size) {
  if (!isInRecord_) return;
  isInRecord_ = false;
  raw_.resize(std::min<std::uint64_t>(raw_.size(), size));
  writer_.EndArray();
  putText(writer_, "raw", hexText(raw_));
  writer_.EndObject();
  lines_.Put('\n');
  if (lines_.GetSize() < kWriteBytes) return;
  output_.write({lines_.GetString(), lines_.GetSize()});
  lines_.Clear();
}

void BadRecords::close() {
  output_.write({lines_.GetString(), lines_.GetSize()});
  lines_.Clear();
  output_.close();
}

}  // namespace oxr::rec
