#include "oxrmq/stop.hpp"

#include <algorithm>
#include <csignal>
#include <thread>

namespace oxr::mq {

namespace {

std::atomic<bool> signalled = false;
static_assert(std::atomic<bool>::is_always_lock_free);

constexpr std::chrono::milliseconds kLook{50};

}  // namespace

void Stop::listenToSignals() {
  for (const int number : {SIGTERM, SIGINT})
    std::signal(number, [](int) { signalled = true; });
}

bool Stop::wasSignalled() {
  return signalled;
}

void Stop::sleepFor(std::chrono::milliseconds time) const {
  const auto end = std::chrono::steady_clock::now() + time;
  for (auto now = std::chrono::steady_clock::now(); now < end && !isAsked(); now = std::chrono::steady_clock::now())
    std::this_thread::sleep_for(std::min<std::chrono::steady_clock::duration>(kLook, end - now));
}

}  // namespace oxr::mq
