#include "records/framing/fileinput.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "records/counted.hpp"
#include "records/framing/errors.hpp"

namespace oxr::rec {

namespace {

[[noreturn]] void fail(const std::string& name, const char* doing, int error) {
  throw ToolError(std::string("cannot ") + doing + ' ' + name + ": " + std::strerror(error));
}

}  // namespace

FileInput FileInput::open(const std::string& path, const InputWindow& window) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) fail(path, "open", errno);
  return FileInput(FileDescriptor::owned(fd), path, window);
}

FileInput::FileInput(FileDescriptor file, std::string name, const InputWindow& window, std::size_t blockBytes)
    : file_(std::move(file)), name_(std::move(name)), bytes_(std::max<std::size_t>(blockBytes, 1)) {
  struct stat status;
  if (::fstat(file_.get(), &status) != 0) fail(name_, "read", errno);
  if (S_ISDIR(status.st_mode)) fail(name_, "read", EISDIR);
  beginWindow(window);
  const off_t at = S_ISREG(status.st_mode) ? ::lseek(file_.get(), 0, SEEK_CUR) : -1;
  // A file of the system that makes its content when it is read has no size.
  if (at < 0 || status.st_size == 0) {
    windowOnPipe(window);
    return;
  }
  windowOnFile(window, static_cast<std::uint64_t>(std::max<off_t>(status.st_size - at, 0)));
  if (::lseek(file_.get(), static_cast<off_t>(origin_.bytes), SEEK_CUR) < 0) fail(name_, "read", errno);
  static_cast<void>(::posix_fadvise(file_.get(), 0, 0, POSIX_FADV_SEQUENTIAL));  // a hint: no harm if it is not taken
}

FileInput::FileInput(Read read, std::string name, const InputWindow& window)
    : file_(FileDescriptor::borrowed(-1)), other_(std::move(read)), name_(std::move(name)), bytes_(kBlockBytes) {
  beginWindow(window);
  windowOnPipe(window);
}

void FileInput::beginWindow(const InputWindow& window) {
  if (window.range && window.range->begin > window.range->end)
    throw ToolError("the range of " + name_ + " ends before it begins");
  origin_ = {std::max(window.skipHeader, window.range ? window.range->begin : 0), window.recordsBefore};
}

void FileInput::windowOnFile(const InputWindow& window, std::uint64_t fileSize) {
  const auto requireSize = [&](std::uint64_t asked, const char* what) {
    if (asked > fileSize)
      throw ToolError(name_ + " has only " + counted(fileSize, "byte") + ", but " + what + " asks for " +
                      std::to_string(asked));
  };
  requireSize(window.skipHeader, "its header");
  requireSize(window.skipTrailer, "its trailer");
  requireSize(window.skipHeader + window.skipTrailer, "its header with its trailer");
  if (window.range) requireSize(window.range->end, "the range");
  const std::uint64_t end = fileSize - window.skipTrailer;
  const std::uint64_t last = window.range ? std::min(window.range->end, end) : end;
  left_ = last - std::min(last, origin_.bytes);
  size_ = left_;
}

void FileInput::windowOnPipe(const InputWindow& window) {
  passOver(origin_.bytes);
  heldBack_ = window.skipTrailer;
  constexpr std::uint64_t kAll = std::numeric_limits<std::uint64_t>::max();
  const std::uint64_t wanted = window.range ? window.range->end - std::min(window.range->end, origin_.bytes) : kAll;
  left_ = std::min(wanted, kAll - heldBack_) + heldBack_;
}

void FileInput::passOver(std::uint64_t bytes) {
  while (bytes != 0) {
    const std::size_t count = read(bytes_.data(), std::min<std::uint64_t>(bytes, bytes_.size()));
    if (count == 0) throw ToolError(name_ + " ends before the first byte that is to be read");
    bytes -= count;
  }
}

const BitstreamBuffer* FileInput::slide(int consumed, int wanted) {
  begin_ += static_cast<std::size_t>(consumed);
  const auto need = static_cast<std::size_t>(wanted);
  if (usable() < need && !isAtEnd_) {
    std::memmove(bytes_.data(), bytes_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
    fill(need);
  }
  view_.emplace().create(bytes_.data() + begin_, static_cast<int>(usable()));
  return &*view_;
}

// The buffer grows as the bytes come in: a length that the input does not hold costs no memory. One of twice the
// stretch asked for keeps the bytes that are moved to its front below those that are read.
void FileInput::fill(std::size_t wanted) {
  const std::size_t most = std::min<std::size_t>(2 * (wanted + heldBack_), std::numeric_limits<int>::max());
  while (usable() < wanted && !isAtEnd_) {
    if (end_ == bytes_.size()) bytes_.resize(std::max(std::min(2 * bytes_.size(), most), bytes_.size() + 1));
    const std::size_t count =
        left_ == 0 ? 0 : read(bytes_.data() + end_, std::min<std::uint64_t>(left_, bytes_.size() - end_));
    if (count == 0) ended();
    end_ += count;
    left_ -= count;
  }
}

std::size_t FileInput::read(char* to, std::size_t most) {
  if (other_) return other_(to, most);
  for (;;) {
    const ssize_t count = ::read(file_.get(), to, most);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) fail(name_, "read", errno);
  }
}

void FileInput::ended() {
  isAtEnd_ = true;
  if (size_ && left_ != 0)
    throw ToolError(name_ + " became shorter while it was read: " + std::to_string(left_) + " of its bytes are gone");
  if (end_ - begin_ < heldBack_) throw ToolError(name_ + " has fewer bytes than its trailer");
}

}  // namespace oxr::rec
