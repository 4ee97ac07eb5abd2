#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <stop_token>
#include <thread>

#include "records/framing/filedescriptor.hpp"

namespace oxr::mq {

// Ends operations on a connection that do not come to an end. The client library sends, and reads on in a message that
// has begun, for as long as it takes, and heeds neither signs of life nor a wish to end meanwhile. While an operation
// is under way, a thread looks at its socket, and shuts it down, so that the operation fails,
//
//  - if for too long no byte came in and none of those that went out has arrived at the other machine. A broker that
//    takes nothing for want of memory still gives signs of life; one that has stopped does not;
//  - if the time that an end leaves is over.
class StallGuard {
 public:
  // `isOver` tells whether that time is over; it is called on the guard's thread. The socket stays the caller's.
  StallGuard(int socket, std::function<bool()> isOver);

  // Zero, as at first: no silence is too long.
  void setLongestSilence(std::chrono::seconds silence) { longestSilence_ = silence; }
  // Why the socket was shut down; null if it was not.
  const char* why() const { return why_; }

  // For as long as it lives an operation is under way.
  class Operation {
   public:
    explicit Operation(StallGuard& guard) : guard_(guard) { guard_.isBusy_ = true; }
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    ~Operation() { guard_.isBusy_ = false; }

   private:
    StallGuard& guard_;
  };

 private:
  using Clock = std::chrono::steady_clock;

  void keepLooking(const std::stop_token& isEnding);
  const char* whyNow();
  std::uint64_t bytesMoved() const;

  const rec::FileDescriptor socket_;  // of its own: the number of the other one may come to stand for something else
  const std::function<bool()> isOver_;
  std::atomic<std::chrono::seconds> longestSilence_{std::chrono::seconds(0)};
  std::atomic<bool> isBusy_ = false;
  std::atomic<const char*> why_ = nullptr;
  // Of the thread:
  std::uint64_t moved_ = 0;                 // bytes, when it looked last
  Clock::time_point since_ = Clock::now();  // it has been so many, or no operation was under way before
  std::mutex mutex_;
  std::condition_variable_any never_;
  std::jthread thread_;
};

}  // namespace oxr::mq
