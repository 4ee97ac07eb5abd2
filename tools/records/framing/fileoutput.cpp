#include "records/framing/fileoutput.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "records/framing/errors.hpp"

namespace oxr::rec {

namespace {

[[noreturn]] void fail(const std::string& name, int error) {
  throw OutputError("cannot write " + name + ": " + std::strerror(error));
}

bool isSameFile(int fd, int other) {
  struct stat a;
  struct stat b;
  return ::fstat(fd, &a) == 0 && ::fstat(other, &b) == 0 && S_ISREG(a.st_mode) && a.st_dev == b.st_dev &&
         a.st_ino == b.st_ino;
}

}  // namespace

FileOutput FileOutput::open(const std::string& path, int input) {
  // The file is emptied only when it is known not to be the input.
  FileDescriptor file = FileDescriptor::owned(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
  if (file.get() < 0) fail(path, errno);
  if (isSameFile(file.get(), input)) throw OutputError("cannot write " + path + ": it is the input");
  // What cannot be cut, a terminal or a pipe, has nothing to lose.
  if (::ftruncate(file.get(), 0) != 0 && errno != EINVAL) fail(path, errno);
  return FileOutput(std::move(file), path);
}

void FileOutput::write(std::string_view lines) {
  std::string_view left = lines;
  while (!left.empty()) {
    const ssize_t count = ::write(file_.get(), left.data(), left.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      const int error = errno;
      cutAfterLine(lines.substr(0, lines.size() - left.size()));
      fail(name_, error);
    }
    left.remove_prefix(static_cast<std::size_t>(count));
  }
  size_ += lines.size();
}

void FileOutput::cutAfterLine(std::string_view written) {
  if (!file_.isOwned()) return;
  const std::size_t lineEnd = written.rfind('\n');
  size_ += lineEnd == std::string_view::npos ? 0 : lineEnd + 1;
  // The failure that is about to be told is the one that counts.
  static_cast<void>(::ftruncate(file_.get(), static_cast<off_t>(size_)) == 0);
}

void FileOutput::close() {
  if (file_.close() != 0) fail(name_, errno);
}

}  // namespace oxr::rec
