#include "oxrrec/badrecords.hpp"

#include <algorithm>
#include <string>

#include "records/fields/hextext.hpp"

namespace oxr::rec {

namespace {

constexpr std::size_t kWriteBytes = std::size_t{256} << 10;

}  // namespace

void BadRecords::add(const FieldFault& fault, const RecordWorker& worker) {
  if (!isInRecord_) {
    isInRecord_ = true;
    const auto bytes = worker.recordInHand();
    raw_.assign(bytes.begin(), bytes.end());
    json_.writer().StartObject();
    json_.put("record", fault.record);
    json_.put("offset", worker.offsetInInput());
    json_.writer().Key("faults");
    json_.writer().StartArray();
  }
  json_.writer().StartObject();
  json_.put("path", fault.path());
  json_.put("offset", fault.offset);
  json_.put("reason", fault.reasonText());
  json_.put("bytes", hexText(fault.bytes));
  json_.writer().EndObject();
}

void BadRecords::finishRecord(std::uint64_t size) {
  if (!isInRecord_) return;
  isInRecord_ = false;
  raw_.resize(std::min<std::uint64_t>(raw_.size(), size));
  json_.writer().EndArray();
  json_.put("raw", hexText(raw_));
  json_.writer().EndObject();
  json_.endLine();
  if (json_.text().size() < kWriteBytes) return;
  output_.write(json_.text());
  json_.clear();
}

void BadRecords::close() {
  output_.write(json_.text());
  json_.clear();
  output_.close();
}

}  // namespace oxr::rec
