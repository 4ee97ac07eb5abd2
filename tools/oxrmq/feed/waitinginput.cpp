#include "oxrmq/feed/waitinginput.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

namespace oxr::mq {

namespace {

constexpr int kLookMilliseconds = 100;  // so soon it is seen that an end is asked for

// A pipe whose other end nobody has opened is waited for like one without bytes.
constexpr int kOpening = O_RDONLY | O_CLOEXEC | O_NONBLOCK;

// The bytes that are there on a descriptor.
class Waiting {
 public:
  Waiting(rec::FileDescriptor file, std::string name, const Stop& stop)
      : file_(std::move(file)), name_(std::move(name)), stop_(stop) {}

  std::size_t read(char* to, std::size_t most) const {
    for (;;) {
      pollfd look{file_.get(), POLLIN, 0};
      const int ready = ::poll(&look, 1, kLookMilliseconds);
      if (stop_.isAsked()) throw InputLeft("stopped where " + name_ + " has no more bytes yet");
      if (ready <= 0) continue;
      const ssize_t count = ::read(file_.get(), to, most);
      if (count >= 0) return static_cast<std::size_t>(count);
      if (errno != EINTR && errno != EAGAIN) throw rec::ToolError("cannot read " + name_ + ": " + std::strerror(errno));
    }
  }

 private:
  const rec::FileDescriptor file_;
  const std::string name_;
  const Stop& stop_;
};

}  // namespace

rec::FileInput openWaiting(const std::string& path, const rec::InputWindow& window, const rec::Console& console,
                           const Stop& stop) {
  const bool isStandard = path == rec::kStandardStream;
  rec::FileDescriptor file = isStandard ? rec::FileDescriptor::borrowed(console.input)
                                        : rec::FileDescriptor::owned(::open(path.c_str(), kOpening));
  struct stat status {};
  const bool isThere = file.get() >= 0 && ::fstat(file.get(), &status) == 0;
  if (!isThere || S_ISREG(status.st_mode) || S_ISDIR(status.st_mode)) return rec::openInput(path, window, console);
  const std::string name = isStandard ? "standard input" : path;
  const auto waiting = std::make_shared<Waiting>(std::move(file), name, stop);
  return {[waiting](char* to, std::size_t most) { return waiting->read(to, most); }, name, window};
}

}  // namespace oxr::mq
