#include "oxrmq/amqp/stallguard.hpp"

#include <fcntl.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <utility>

namespace oxr::mq {

namespace {

constexpr std::chrono::milliseconds kLook{100};

}  // namespace

StallGuard::StallGuard(int socket, std::function<bool()> isOver)
    : socket_(rec::FileDescriptor::owned(::fcntl(socket, F_DUPFD_CLOEXEC, 0))),
      isOver_(std::move(isOver)),
      thread_([this](const std::stop_token& isEnding) { keepLooking(isEnding); }) {}

void StallGuard::keepLooking(const std::stop_token& isEnding) {
  std::unique_lock lock(mutex_);
  while (why_ == nullptr) {
    never_.wait_for(lock, isEnding, kLook, [] { return false; });
    if (isEnding.stop_requested()) return;
    why_ = whyNow();
  }
  ::shutdown(socket_.get(), SHUT_RDWR);
}

const char* StallGuard::whyNow() {
  const std::uint64_t moved = bytesMoved();
  const Clock::time_point now = Clock::now();
  const bool isBusy = isBusy_;
  if (!isBusy || std::exchange(moved_, moved) != moved) since_ = now;
  if (!isBusy) return nullptr;
  if (isOver_ && isOver_()) return "given up at the end";
  const std::chrono::seconds longest = longestSilence_;
  return longest.count() != 0 && now - since_ >= longest ? "the broker is silent" : nullptr;
}

// Both ways: what came in, and what the other machine has acknowledged.
std::uint64_t StallGuard::bytesMoved() const {
  tcp_info info{};
  socklen_t size = sizeof info;
  ::getsockopt(socket_.get(), IPPROTO_TCP, TCP_INFO, &info, &size);
  return info.tcpi_bytes_received + info.tcpi_bytes_acked;
}

}  // namespace oxr::mq
