#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

namespace oxr::mq {

// What a run of the program has done so far. Serves all threads.
struct Counters {
  using Count = std::atomic<std::uint64_t>;

  Count messagesIn{};       // taken from queues
  Count messagesOut{};      // confirmed by the broker, those with errors not among them
  Count messagesFailed{};   // that went to the target for errors
  Count records{};          // in the messages that went out
  Count messagesLeftOut{};  // of which nothing was to go out
  Count recordsLeftOut{};   // because they are of no kind, or bad, and the options say so
  Count bytesIn{};          // of messages' bodies
  Count bytesOut{};
  Count badFields{};
  Count redeliveries{};  // messages that had been delivered before
  Count notTaken{};      // messages that the broker did not take at first
  Count givenBack{};     // messages that went back to their queue
  Count connectionsLost{};
  Count blocked{};  // times that the broker asked for a pause
  Count convertingNanoseconds{};
  Count publishingNanoseconds{};
  Count waitingNanoseconds{};
};

// Adds the time of its life to a count.
class Stopwatch {
 public:
  explicit Stopwatch(Counters::Count& nanoseconds) : nanoseconds_(nanoseconds) {}
  Stopwatch(const Stopwatch&) = delete;
  Stopwatch& operator=(const Stopwatch&) = delete;
  ~Stopwatch() {
    const auto time = std::chrono::steady_clock::now() - start_;
    nanoseconds_ += static_cast<std::uint64_t>(std::chrono::nanoseconds(time).count());
  }

 private:
  Counters::Count& nanoseconds_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace oxr::mq
