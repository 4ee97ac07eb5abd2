#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <limits>

namespace oxr::mq {

// Asked to come to an end: by SIGTERM or SIGINT, or by a thread of this program that cannot go on. What is in hand is
// finished, as far as that can be done in the time of grace. Serves all threads.
class Stop {
 public:
  explicit Stop(std::chrono::seconds grace) : grace_(grace) {}

  // From now on the signals ask all objects of the class; one that was ignored, as by nohup, stays ignored.
  static void listenToSignals();

  void ask() { setNow(askedAt_); }
  bool isAsked() const { return askedAt() != kNever; }
  // The time of grace is over: what is in hand is given up.
  bool isOver() const { return isAsked() && Clock::now().time_since_epoch().count() - askedAt() >= grace_.count(); }
  // Returns after the time, or soon after an end is asked for.
  void sleepFor(std::chrono::milliseconds time) const;

 private:
  using Clock = std::chrono::steady_clock;
  using Time = std::atomic<Clock::rep>;  // since the clock's start
  static constexpr Clock::rep kNever = std::numeric_limits<Clock::rep>::max();

  // Unless it is set already.
  static void setNow(Time& time);
  Clock::rep askedAt() const { return std::min(askedAt_.load(), signalledAt_.load()); }

  static Time signalledAt_;
  static_assert(Time::is_always_lock_free, "for the handler of signals");
  const Clock::duration grace_;
  Time askedAt_ = kNever;
};

}  // namespace oxr::mq
