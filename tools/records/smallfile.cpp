#include "records/smallfile.hpp"

#include <fcntl.h>
#include <linux/magic.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "records/framing/filedescriptor.hpp"

// Nothing here waits for the other end of a pipe but poll(), which can be told for how long: the file is opened without
// blocking. The end of a pipe is then not always what it looks like. A pipe in the file system that nobody has opened
// for writing yet reads as one that is at its end, so that its first byte, or its writer's leaving, is waited for.

namespace oxr::rec {

namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void fail(int error) {
  throw SmallFileError(std::generic_category().message(error));
}

std::string sizeText(std::size_t bytes) {
  return bytes % (1U << 20) == 0 ? std::to_string(bytes >> 20) + " MiB" : std::to_string(bytes >> 10) + " KiB";
}

// A pipe with a name of its own, unlike those that a shell makes, whose writers are there before their readers.
bool mayLackItsWriter(int file, const struct stat& status) {
  struct statfs system {};
  return S_ISFIFO(status.st_mode) && ::fstatfs(file, &system) == 0 && system.f_type != PIPEFS_MAGIC;
}

void waitFor(int file, Clock::time_point end, std::chrono::milliseconds patience) {
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    pollfd look{file, POLLIN, 0};
    const int ready = ::poll(&look, 1, static_cast<int>(std::max<std::int64_t>(left.count(), 0)));
    if (ready > 0) return;
    if (ready < 0 && errno != EINTR) fail(errno);
    if (left.count() <= 0)
      throw SmallFileError("its end did not come within " + std::to_string(patience.count() / 1000) + " s");
  }
}

}  // namespace

std::string readSmallFile(const std::string& path, std::size_t most, std::chrono::milliseconds patience) {
  constexpr std::size_t kFirstRead = 4096;
  const auto file = FileDescriptor::owned(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status {};
  if (file.get() < 0 || ::fstat(file.get(), &status) != 0) fail(errno);
  if (S_ISDIR(status.st_mode)) throw SmallFileError("it is a folder");
  bool isEndCertain = !mayLackItsWriter(file.get(), status);
  const Clock::time_point end = Clock::now() + patience;
  std::string text;
  for (;;) {
    const std::size_t had = text.size();
    text.resize(std::min(std::max(2 * had, kFirstRead), most + 1));
    const ssize_t count = ::read(file.get(), text.data() + had, text.size() - had);
    const int error = errno;
    text.resize(had + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (text.size() > most) throw SmallFileError("it has more than " + sizeText(most));
    if (count == 0 && isEndCertain) return text;
    if (count < 0 && error != EAGAIN && error != EINTR) fail(error);
    if (count <= 0) waitFor(file.get(), end, patience);
    isEndCertain = true;
  }
}

}  // namespace oxr::rec
