#include "records/framing/fileoutput.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

#include "records/framing/errors.hpp"

namespace oxr::rec {

namespace {

using Status = struct stat;

[[noreturn]] void fail(const std::string& name, int error) {
  throw OutputError("cannot write " + name + ": " + std::strerror(error));
}

std::optional<Status> statusOf(const std::string& path) {
  Status status;
  return ::stat(path.c_str(), &status) == 0 ? std::optional(status) : std::nullopt;
}

bool isSame(const Status& a, const Status& b) {
  return S_ISREG(a.st_mode) && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

void refuseInputs(const std::string& path, const Status& target, std::span<const std::string> inputs, int input) {
  Status open;
  if (::fstat(input, &open) == 0 && isSame(target, open))
    throw OutputError("cannot write " + path + ": it is the input");
  for (const std::string& other : inputs) {
    const auto status = statusOf(other);
    if (status && isSame(target, *status)) throw OutputError("cannot write " + path + ": it is an input, too");
  }
}

// The file itself, where the path is a link to it.
std::string withoutLinks(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), std::free);
  return real == nullptr ? path : std::string(real.get());
}

// A new file beside the target; `path` becomes its path.
FileDescriptor openBeside(std::string& path) {
  const std::string start = path + '.' + std::to_string(::getpid());
  for (int i = 0;; ++i) {
    path = start + (i == 0 ? std::string() : '-' + std::to_string(i)) + ".part";
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd >= 0 || errno != EEXIST) return FileDescriptor::owned(fd);
  }
}

}  // namespace

FileOutput FileOutput::open(const std::string& path, std::span<const std::string> inputs, int input) {
  const std::optional<Status> status = statusOf(path);
  if (status) refuseInputs(path, *status, inputs, input);
  if (status && !S_ISREG(status->st_mode)) {
    FileDescriptor file = FileDescriptor::owned(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
    if (file.get() < 0) fail(path, errno);
    return FileOutput(std::move(file), path);
  }
  if (status && ::access(path.c_str(), W_OK) != 0) fail(path, errno);
  const std::string target = withoutLinks(path);
  std::string temporary = target;
  FileDescriptor file = openBeside(temporary);
  if (file.get() < 0) fail(path, errno);
  FileOutput output(std::move(file), path);
  output.target_ = target;
  output.temporary_ = std::move(temporary);
  if (status && ::fchmod(output.file_.get(), status->st_mode & 07777) != 0) fail(path, errno);
  return output;
}

FileOutput::FileOutput(FileOutput&& other) noexcept
    : file_(std::move(other.file_)),
      name_(std::move(other.name_)),
      target_(std::move(other.target_)),
      temporary_(std::exchange(other.temporary_, {})) {}

FileOutput::~FileOutput() {
  discard();
}

void FileOutput::discard() {
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
  temporary_.clear();
}

void FileOutput::write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(file_.get(), bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EPIPE) throw OutputClosed(name_ + " is closed");
    if (count < 0) fail(name_, errno);
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

void FileOutput::close() {
  if (file_.close() != 0) fail(name_, errno);
  if (temporary_.empty()) return;
  if (::rename(temporary_.c_str(), target_.c_str()) != 0) fail(name_, errno);
  temporary_.clear();
}

}  // namespace oxr::rec
