#pragma once

#include <cstdint>
#include <deque>
#include <optional>

namespace oxr::mq {

// The deliveries of a channel that are not acknowledged yet, so that one answer can stand for many. The tags of a
// channel grow by one with each delivery.
class Acknowledgements {
 public:
  // A delivery came in. REQUIRES: a tag higher than all before.
  void taken(std::uint64_t tag) { places_.push_back({tag, State::open}); }
  // It is to be acknowledged.
  void done(std::uint64_t tag) { set(tag, State::done); }
  // It was returned to its queue by itself.
  void returned(std::uint64_t tag) { set(tag, State::returned); }
  // The tag up to which all can be acknowledged now, once; nothing if the oldest delivery is still open.
  std::optional<std::uint64_t> next() {
    std::optional<std::uint64_t> last;
    for (; !places_.empty() && places_.front().state != State::open; places_.pop_front())
      if (places_.front().state == State::done) last = places_.front().tag;
    return last;
  }
  std::size_t size() const { return places_.size(); }

 private:
  enum class State : std::uint8_t { open, done, returned };
  struct Place {
    std::uint64_t tag;
    State state;
  };

  void set(std::uint64_t tag, State state) {
    for (Place& place : places_)
      if (place.tag == tag) place.state = state;
  }

  std::deque<Place> places_;  // in the order of their tags
};

}  // namespace oxr::mq
