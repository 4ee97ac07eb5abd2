#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "oxrrec/badrecords.hpp"

namespace oxr::rec {

// What becomes of a record with a field that cannot be read.
enum class OnError : std::uint8_t {
  stop,  // it ends the work
  null,  // the field is null
  skip,  // the record is left out
};

// So many are told; the others are only counted.
inline constexpr std::uint64_t kToldFields = 20;

// What somebody heard of the faults in a part of an input.
struct HeardFaults {
  std::uint64_t fields = 0;
  std::uint64_t records = 0;       // that have a bad field
  std::vector<std::string> texts;  // of the first kToldFields, unless faults end the work
};

// Decides by the option on errors, tells the first bad fields, and counts.
class BadFields : public FaultListener {
 public:
  // `input` is what messages call the input; `beforeText` is called before each.
  BadFields(OnError onError, std::ostream& messages, std::string input, std::function<void()> beforeText);

  // Who else hears of each fault; nobody at first.
  void setRecords(BadRecords* records, const RecordWorker* worker) {
    file_ = records;
    worker_ = worker;
  }

  bool goOnAfter(const FieldFault& fault) override;
  // Tells and counts what another listener heard of the next part of the input.
  void add(const HeardFaults& heard);
  // To be called after each record, which has `size` bytes at most: whether it has a bad field.
  bool finishRecord(std::uint64_t size);
  // Whether a record with a bad field is left out.
  bool isSkipping() const { return onError_ == OnError::skip; }
  // Whether there was any.
  bool hasAny() const { return fields_ != 0; }
  // `hint` ends the line.
  void tellSum(std::uint64_t allRecords, const std::string& hint) const;

 private:
  void tell(const std::string& text);

  const OnError onError_;
  std::ostream& messages_;
  const std::string input_;
  const std::function<void()> beforeText_;
  BadRecords* file_ = nullptr;
  const RecordWorker* worker_ = nullptr;
  std::uint64_t fields_ = 0;
  std::uint64_t records_ = 0;
  bool recordIsBad_ = false;
};

}  // namespace oxr::rec
