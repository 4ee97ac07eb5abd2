#pragma once

#include <algorithm>
#include <chrono>
#include <random>

namespace oxr::mq {

// Pauses between attempts that fail: 100 ms at first, twice as long each time, never more than 10 s, and up to half of
// it less, by chance, so that many who lost the same broker do not come back at once.
class Backoff {
 public:
  using Pause = std::chrono::milliseconds;
  static constexpr Pause kFirst{100};
  static constexpr Pause kLongest{10'000};

  explicit Backoff(unsigned seed) : random_(seed) {}

  Pause next() {
    const Pause pause = longest_;
    longest_ = std::min(2 * longest_, kLongest);
    return Pause(std::uniform_int_distribution<Pause::rep>(pause.count() / 2, pause.count())(random_));
  }
  // After an attempt that went well.
  void reset() { longest_ = kFirst; }

 private:
  Pause longest_ = kFirst;
  std::minstd_rand random_;
};

}  // namespace oxr::mq
