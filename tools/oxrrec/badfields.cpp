#include "oxrrec/badfields.hpp"

#include <utility>

namespace oxr::rec {

namespace {

constexpr std::uint64_t kToldFields = 20;

}  // namespace

BadFields::BadFields(OnError onError, std::ostream& messages, std::string input, std::function<void()> beforeText)
    : onError_(onError), messages_(messages), input_(std::move(input)), beforeText_(std::move(beforeText)) {}

bool BadFields::goOnAfter(const FieldFault& fault) {
  ++fields_;
  recordIsBad_ = true;
  if (file_ != nullptr) file_->add(fault, *worker_);
  if (onError_ == OnError::stop) return false;
  if (fields_ <= kToldFields) {
    beforeText_();
    messages_ << "oxrrec: " << input_ << ": " << fault.text() << '\n';
  } else if (fields_ == kToldFields + 1) {
    messages_ << "oxrrec: " << input_ << ": more bad fields follow; they are only counted\n";
  }
  return true;
}

bool BadFields::finishRecord(std::uint64_t size) {
  if (recordIsBad_) ++records_;
  if (file_ != nullptr) file_->finishRecord(size);
  return std::exchange(recordIsBad_, false);
}

void BadFields::tellSum(std::uint64_t allRecords, const std::string& hint) const {
  if (fields_ == 0) return;
  messages_ << "oxrrec: " << input_ << ": " << fields_ << (fields_ == 1 ? " bad field in " : " bad fields in ")
            << records_ << " of " << allRecords << (allRecords == 1 ? " record, " : " records, ")
            << (isSkipping() ? "left out" : "written as null") << hint << '\n';
}

}  // namespace oxr::rec
