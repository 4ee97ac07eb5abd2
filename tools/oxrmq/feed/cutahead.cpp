#include "oxrmq/feed/cutahead.hpp"

#include <utility>

#include "oxrmq/feed/waitinginput.hpp"

namespace oxr::mq {

namespace {

constexpr std::size_t kAhead = 4;               // parts
constexpr std::chrono::milliseconds kWait{50};  // so soon the connection is looked after again

}  // namespace

CutAhead::CutAhead(Cut cut, Stop& stop)
    : cut_(std::move(cut)), stop_(stop), thread_([this](const std::stop_token& isEnding) { keepCutting(isEnding); }) {}

void CutAhead::keepCutting(const std::stop_token& isEnding) {
  try {
    while (put(cut_(), isEnding)) {
    }
  } catch (const InputLeft&) {
    // Nobody asks for more.
  } catch (...) {
    const std::lock_guard lock(mutex_);
    failure_ = std::current_exception();
    changed_.notify_all();
  }
}

// Whether there is more to cut.
bool CutAhead::put(std::optional<rec::Chunk> chunk, const std::stop_token& isEnding) {
  std::unique_lock lock(mutex_);
  isAtEnd_ = !chunk.has_value();
  if (chunk) {
    if (!changed_.wait(lock, isEnding, [this] { return ready_.size() < kAhead; })) return false;
    ready_.push_back(*std::move(chunk));
  }
  changed_.notify_all();
  return !isAtEnd_;
}

Part CutAhead::next() {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, kWait, [this] { return !ready_.empty() || isAtEnd_ || failure_; });
  if (ready_.empty()) {
    if (failure_) std::rethrow_exception(failure_);
    return {std::nullopt, isAtEnd_};
  }
  Part part{std::move(ready_.front())};
  ready_.pop_front();
  changed_.notify_all();
  return part;
}

}  // namespace oxr::mq
