#include "records/framing/fileoutput.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>
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

// Where the file will lie: links are followed. Its folders, at least, are there, or it cannot be written anyway.
std::string withoutLinks(const std::string& path) {
  std::error_code error;
  const std::filesystem::path real = std::filesystem::weakly_canonical(path, error);
  return error ? path : real.string();
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
  TemporaryFile temporary(withoutLinks(path));
  if (temporary.descriptor() < 0) fail(path, errno);
  FileOutput output(FileDescriptor::owned(temporary.descriptor()), path);
  output.temporary_ = std::move(temporary);
  if (status && ::fchmod(output.file_.get(), status->st_mode & 07777) != 0) fail(path, errno);
  return output;
}

bool FileOutput::isSame(const std::string& path, const std::string& other) {
  const std::optional<Status> a = statusOf(path), b = statusOf(other);
  if (a && b) return rec::isSame(*a, *b);
  return !a && !b && withoutLinks(path) == withoutLinks(other);
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

void FileOutput::closeDurably() {
  // What is no file of a disk cannot be held to it.
  const auto sync = [this](int fd) {
    if (::fsync(fd) != 0 && errno != EINVAL && errno != ENOTSUP) fail(name_, errno);
  };
  sync(file_.get());
  close();
  // Its name is part of its folder.
  const std::string folder = std::filesystem::path(withoutLinks(name_)).parent_path().string();
  const FileDescriptor open = FileDescriptor::owned(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (open.get() >= 0) sync(open.get());
}

void FileOutput::close() {
  if (file_.close() != 0) fail(name_, errno);
  if (!temporary_.keep()) fail(name_, errno);
}

}  // namespace oxr::rec
