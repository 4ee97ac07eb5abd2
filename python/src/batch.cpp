#include "batch.hpp"

#include <iterator>

namespace oxr::python {

namespace {

// A batch stays in the processor's cache until it is made into dicts, and is large enough for the switch between the
// two to cost nothing.
constexpr std::size_t kTapeBytes = std::size_t{128} << 10;
constexpr unsigned kMostRecords = 4096;

}  // namespace

void Batch::fill() {
  entries_.clear();
  badFields_.clear();
  handler_.tape().resize(0);
  try {
    // Records that are left out do not fill it: their number has a bound, so that a signal gets its turn.
    for (unsigned i = 0; i < kMostRecords && handler_.tape().size() < kTapeBytes && !isAtEnd_; ++i)
      isAtEnd_ = !add();
  } catch (...) {
    ending_ = std::current_exception();
    isAtEnd_ = true;
  }
}

// False at the input's end.
bool Batch::add() {
  const std::size_t at = handler_.tape().size();
  if (!reading_.next()) return false;
  if (handler_.tape().size() == at) return true;  // records that were skipped
  std::vector<BadField>& bad = reading_.badFields();
  if (!bad.empty() && leavesBadOut_) {
    handler_.discard();
    return true;
  }
  const std::size_t first = badFields_.size();
  badFields_.insert(badFields_.end(), std::make_move_iterator(bad.begin()), std::make_move_iterator(bad.end()));
  const rec::RecordWorker& worker = reading_.worker();
  entries_.push_back({at, {worker.recordNumber(), handler_.offset()}, worker.kindOfRecord(), first, badFields_.size()});
  return true;
}

}  // namespace oxr::python
