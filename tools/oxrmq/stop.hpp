#pragma once

#include <atomic>
#include <chrono>

namespace oxr::mq {

// Asked to come to an end: by SIGTERM or SIGINT, or by a thread of this program that cannot go on. What is in hand is
// finished. Serves all threads.
class Stop {
 public:
  // From now on the signals ask all objects of the class.
  static void listenToSignals();

  void ask() { isAsked_ = true; }
  bool isAsked() const { return isAsked_ || wasSignalled(); }
  // Returns after the time, or soon after an end is asked for.
  void sleepFor(std::chrono::milliseconds time) const;

 private:
  static bool wasSignalled();

  std::atomic<bool> isAsked_ = false;
};

}  // namespace oxr::mq
