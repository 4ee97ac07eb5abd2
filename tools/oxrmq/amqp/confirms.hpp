#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <utility>
#include <vector>

namespace oxr::mq {

// What was published on a channel and is not confirmed yet. The broker counts a channel's messages from 1; its answers
// may come in any order, and one may stand for all messages up to a number.
//
// Example:
//   window.add(connection.nextNumber(), delivery);
//   connection.publish(...);
//   for (Delivery& done : window.settle(answer.number, answer.isForAllBefore)) ...
template <class Value>
class ConfirmWindow {
 public:
  // Keeps what is going to be published, so that nothing is lost where publishing fails half way. The result lies here
  // until it is settled. If memory runs out, all is as before, and `value` too.
  // REQUIRES: numbers come one after the other.
  Value& add(std::uint64_t number, Value&& value) {
    std::optional<Value>& place = places_.emplace_back(std::move(value));
    if (places_.size() == 1) first_ = number;
    ++size_;
    return *place;
  }
  // Takes out those that an answer is for, in their order. A number that is not waiting stands for nothing.
  std::vector<Value> settle(std::uint64_t number, bool isForAllBefore) {
    std::vector<Value> settled;
    if (number < first_ || number - first_ >= places_.size()) return settled;
    const std::size_t last = static_cast<std::size_t>(number - first_);
    for (std::size_t at = isForAllBefore ? 0 : last; at <= last; ++at) {
      if (!places_[at]) continue;
      settled.push_back(std::move(*places_[at]));
      places_[at].reset();
    }
    size_ -= settled.size();
    for (; !places_.empty() && !places_.front(); ++first_)
      places_.pop_front();
    return settled;
  }
  // Takes out all, in their order: nobody will answer any more.
  std::vector<Value> takeAll() {
    return places_.empty() ? std::vector<Value>() : settle(first_ + places_.size() - 1, true);
  }
  // The oldest one; null if nothing waits.
  const Value* oldest() const { return places_.empty() ? nullptr : &*places_.front(); }
  std::size_t size() const { return size_; }

 private:
  std::uint64_t first_ = 1;                  // number of the first place
  std::deque<std::optional<Value>> places_;  // empty: answered; never the first one
  std::size_t size_ = 0;
};

}  // namespace oxr::mq
