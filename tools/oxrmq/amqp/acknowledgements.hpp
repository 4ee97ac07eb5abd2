#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <optional>
#include <set>

namespace oxr::mq {

// The deliveries of a channel that are not acknowledged yet, so that one answer can stand for many. The tags of a
// channel grow by one with each delivery.
class Acknowledgements {
 public:
  struct Next {
    std::uint64_t tag;
    bool isForAllBefore;
    bool operator==(const Next&) const = default;
  };

  // A delivery came in. REQUIRES: a tag higher than all before.
  void taken(std::uint64_t tag) { places_.push_back({tag, State::open}); }
  // It is to be acknowledged.
  void done(std::uint64_t tag) { set(tag, State::done); }
  // It is to be returned to its queue later, and does not hold up others.
  void setApart(std::uint64_t tag) {
    apart_.insert(tag);
    set(tag, State::apart);
  }
  // One that was set apart was returned.
  void returned(std::uint64_t tag) { apart_.erase(tag); }
  // What can be acknowledged now, once; nothing if the oldest delivery is still open. To be called until then.
  std::optional<Next> next() {
    std::optional<Next> next;
    for (; !places_.empty() && places_.front().state != State::open; places_.pop_front()) {
      if (places_.front().state == State::apart) continue;
      // No answer may stand for one that is apart.
      if (next && !apart_.empty()) break;
      next = {places_.front().tag, apart_.empty()};
    }
    return next;
  }
  bool isEmpty() const { return places_.empty() && apart_.empty(); }

 private:
  enum class State : std::uint8_t { open, done, apart };
  struct Place {
    std::uint64_t tag;
    State state;
  };

  void set(std::uint64_t tag, State state) {
    const auto place = std::lower_bound(places_.begin(), places_.end(), tag,
                                        [](const Place& each, std::uint64_t wanted) { return each.tag < wanted; });
    if (place != places_.end() && place->tag == tag) place->state = state;
  }

  std::deque<Place> places_;  // in the order of their tags
  std::set<std::uint64_t> apart_;
};

}  // namespace oxr::mq
