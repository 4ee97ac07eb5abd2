#include "oxrmq/stop.hpp"

#include <algorithm>
#include <csignal>
#include <thread>

namespace oxr::mq {

namespace {

constexpr std::chrono::milliseconds kLook{50};

}  // namespace

constinit Stop::Time Stop::signalledAt_ = kNever;

void Stop::listenToSignals() {
  for (const int number : {SIGTERM, SIGINT}) {
    struct sigaction action {};
    if (::sigaction(number, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;
    action = {};
    action.sa_handler = [](int) { setNow(signalledAt_); };
    action.sa_flags = SA_RESTART;
    ::sigaction(number, &action, nullptr);
  }
}

void Stop::setNow(Time& time) {
  Clock::rep never = kNever;
  time.compare_exchange_strong(never, Clock::now().time_since_epoch().count());
}

void Stop::sleepFor(std::chrono::milliseconds time) const {
  const auto end = std::chrono::steady_clock::now() + time;
  for (auto now = std::chrono::steady_clock::now(); now < end && !isAsked(); now = std::chrono::steady_clock::now())
    std::this_thread::sleep_for(std::min<std::chrono::steady_clock::duration>(kLook, end - now));
}

}  // namespace oxr::mq
