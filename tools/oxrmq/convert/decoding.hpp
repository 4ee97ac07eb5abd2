#pragma once

#include "oxrmq/convert/conversion.hpp"
#include "records/records.hpp"

namespace oxr::mq {

// What becomes of a message in which something cannot be converted.
enum class OnError : std::uint8_t {
  fails,  // it goes, whole, to the target for errors
  null,   // the field is null
  skip,   // the record is left out
};

// Messages of records become JSON lines, the same that a record file gives.
class Decoding final : public Conversion, private rec::FaultListener {
 public:
  struct Settings {
    rec::RecordWorker::Settings records;
    rec::JsonHandler::Options json{};
    OnError onError = OnError::fails;
    std::uint64_t longest = kAnyLength;  // bytes of an output
  };

  // The plan must outlive the object. Throws KelRecoverableException for an unknown code page.
  Decoding(const rec::RecordPlan& plan, const Settings& settings);

  Converted convert(std::span<const unsigned char> body, rec::Origin origin) override;
  bool takes(std::string_view contentType) const override;
  const char* outputType() const override { return kLinesType; }

 private:
  bool goOnAfter(const rec::FieldFault& fault) override;
  void readAll(rec::BufferSource& source);
  bool finishRecord();

  const OnError onError_;
  const std::uint64_t longest_;
  const rec::RecordWorker::Owner worker_;
  rec::JsonHandler lines_;
  Converted converted_;
  bool isRecordBad_ = false;
};

}  // namespace oxr::mq
