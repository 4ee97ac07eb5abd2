#pragma once

#include "growingbytebuffer.hpp"
#include "oxrmq/convert/decoding.hpp"

namespace oxr::mq {

// Messages of JSON lines become messages of records: the way back of Decoding.
class Encoding final : public Conversion, private rec::FaultListener {
 public:
  struct Settings {
    rec::RecordWorker::Settings records{.form = {}, .onUnknown = rec::OnUnknown::isRaw};
    OnError onError = OnError::fails;    // not null
    std::uint64_t longest = kAnyLength;  // bytes of an output
  };

  // The plan must outlive the object. Throws KelRecoverableException for an unknown code page.
  Encoding(const rec::RecordPlan& plan, const Settings& settings);

  Converted convert(std::span<const unsigned char> body, rec::Origin origin) override;
  bool takes(std::string_view contentType) const override;
  const char* outputType() const override { return kRecordsType; }

 private:
  bool goOnAfter(const rec::FieldFault&) override { return false; }
  // Counts the line as a record, or as one that is left out, unless something is wrong with it.
  std::optional<Fault> add(std::string_view line, std::uint64_t lineStart, Converted& converted);
  bool isTooLong() const { return buffer_.bytes().size() > longest_; }

  const OnError onError_;
  const std::uint64_t longest_;
  const rec::RecordWorker::Owner worker_;
  rec::JsonReader reader_;
  GrowingByteBuffer buffer_;
  bool isBegun_ = false;  // the worker is ready to write, and holds nothing of an earlier message
};

}  // namespace oxr::mq
