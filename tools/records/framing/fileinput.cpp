#include "records/framing/fileinput.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "records/framing/errors.hpp"

namespace oxr::rec {

namespace {

[[noreturn]] void fail(const std::string& name, const char* doing, int error) {
  throw ToolError(std::string("cannot ") + doing + ' ' + name + ": " + std::strerror(error));
}

}  // namespace

FileInput FileInput::open(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) fail(path, "open", errno);
  return FileInput(FileDescriptor::owned(fd), path);
}

FileInput::FileInput(FileDescriptor file, std::string name, std::size_t blockBytes)
    : file_(std::move(file)), name_(std::move(name)), bytes_(std::max<std::size_t>(blockBytes, 1)) {
  struct stat status;
  if (::fstat(file_.get(), &status) != 0) fail(name_, "read", errno);
  if (S_ISDIR(status.st_mode)) fail(name_, "read", EISDIR);
  if (!S_ISREG(status.st_mode)) return;
  totalSize_ = static_cast<std::uint64_t>(status.st_size);
  static_cast<void>(::posix_fadvise(file_.get(), 0, 0, POSIX_FADV_SEQUENTIAL));  // a hint: no harm if it is not taken
}

const BitstreamBuffer* FileInput::slide(int consumed, int wanted) {
  begin_ += static_cast<std::size_t>(consumed);
  const auto need = static_cast<std::size_t>(wanted);
  if (end_ - begin_ < need && !isAtEnd_) {
    makeRoom(need);
    fill(need);
  }
  view_.emplace().create(bytes_.data() + begin_, static_cast<int>(end_ - begin_));
  return &*view_;
}

// Puts what is left to the front. A buffer of twice the stretch asked for keeps the bytes that are moved below those
// that are read.
void FileInput::makeRoom(std::size_t wanted) {
  std::memmove(bytes_.data(), bytes_.data() + begin_, end_ - begin_);
  end_ -= begin_;
  begin_ = 0;
  if (bytes_.size() < 2 * wanted) bytes_.resize(2 * wanted);
}

void FileInput::fill(std::size_t wanted) {
  while (end_ < wanted && !isAtEnd_) {
    const ssize_t count = ::read(file_.get(), bytes_.data() + end_, bytes_.size() - end_);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail(name_, "read", errno);
    isAtEnd_ = count == 0;
    end_ += static_cast<std::size_t>(count);
  }
}

}  // namespace oxr::rec
