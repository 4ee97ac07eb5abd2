#include "oxrrec/badfields.hpp"

#include <utility>

#include "records/counted.hpp"

namespace oxr::rec {

BadFields::BadFields(OnError onError, std::ostream& messages, std::string input, std::function<void()> beforeText)
    : onError_(onError), messages_(messages), input_(std::move(input)), beforeText_(std::move(beforeText)) {}

bool BadFields::goOnAfter(const FieldFault& fault) {
  recordIsBad_ = true;
  if (file_ != nullptr) file_->add(fault, *worker_);
  if (++fields_ > kToldFields + 1 || onError_ == OnError::stop) return onError_ != OnError::stop;
  tell(fields_ <= kToldFields ? fault.text() : std::string());
  return true;
}

void BadFields::add(const HeardFaults& heard) {
  records_ += heard.records;
  for (const std::string& text : heard.texts)
    if (++fields_ <= kToldFields + 1) tell(text);
  const std::uint64_t untold = heard.fields - heard.texts.size();
  if (untold != 0 && onError_ != OnError::stop && fields_ <= kToldFields && fields_ + untold > kToldFields) {
    fields_ = kToldFields + 1;
    tell({});
    fields_ += untold - 1;
  } else {
    fields_ += untold;
  }
}

// Of the field that was counted last.
void BadFields::tell(const std::string& text) {
  beforeText_();
  messages_ << "oxrrec: " << input_ << ": "
            << (fields_ <= kToldFields ? text : "more bad fields follow; they are only counted") << '\n';
}

bool BadFields::finishRecord(std::uint64_t size) {
  if (recordIsBad_) ++records_;
  if (file_ != nullptr) file_->finishRecord(size);
  return std::exchange(recordIsBad_, false);
}

void BadFields::tellSum(std::uint64_t allRecords, const std::string& hint) const {
  if (fields_ == 0) return;
  messages_ << "oxrrec: " << input_ << ": " << counted(fields_, "bad field") << " in " << records_ << " of "
            << counted(allRecords, "record") << ", " << (isSkipping() ? "left out" : "written as null") << hint << '\n';
}

}  // namespace oxr::rec
