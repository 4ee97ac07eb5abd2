#include "descriptorsink.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <string_view>
#include <system_error>

namespace oxr {

namespace {

// Opening a pipe that nobody reads waits for a reader, unless one says not to: it then fails.
int open(const std::string& path) {
  const int file = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0666);
  if (file < 0) throw std::system_error(errno, std::generic_category(), path);
  return file;
}

// Keeps SIGPIPE, which would end the process, from the thread. One that waited before stays.
class NoBrokenPipe {
 public:
  NoBrokenPipe() {
    ::sigemptyset(&signal_);
    ::sigaddset(&signal_, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &signal_, &before_);
    wasWaiting_ = isWaiting();
  }
  ~NoBrokenPipe() {
    const int error = errno;
    constexpr timespec kAtOnce{};
    if (!wasWaiting_ && isWaiting()) ::sigtimedwait(&signal_, nullptr, &kAtOnce);
    ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    errno = error;
  }
  NoBrokenPipe(const NoBrokenPipe&) = delete;
  NoBrokenPipe& operator=(const NoBrokenPipe&) = delete;

 private:
  static bool isWaiting() {
    sigset_t waiting;
    return ::sigpending(&waiting) == 0 && ::sigismember(&waiting, SIGPIPE) == 1;
  }

  sigset_t signal_{};
  sigset_t before_{};
  bool wasWaiting_ = false;
};

// 0, or the number of the error.
int writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(file, bytes.data(), bytes.size());
    if (count < 0 && errno != EINTR) return errno;
    if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return 0;
}

}  // namespace

DescriptorSink::DescriptorSink(const std::string& path) : descriptor_(open(path)), isOwned_(true) {}

DescriptorSink::~DescriptorSink() {
  if (isOwned_) ::close(descriptor_);
}

void DescriptorSink::sink_it_(const spdlog::details::log_msg& message) {
  spdlog::memory_buf_t line;
  formatter_->format(message, line);
  const NoBrokenPipe quiet;
  const int error = writeAll(descriptor_, {line.data(), line.size()});
  if (error != 0 && error != EAGAIN) tellOnce(error);
}

void DescriptorSink::tellOnce(int error) {
  if (hasFailed_ || !isOwned_) return;
  hasFailed_ = true;
  const std::string text = std::string("the log of KELHOST_LOG cannot be written: ") + std::strerror(error) + '\n';
  writeAll(STDERR_FILENO, text);
}

}  // namespace oxr
