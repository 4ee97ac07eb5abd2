#pragma once

#include <unistd.h>

#include <utility>

namespace oxr::rec {

// Owns an open file, or borrows one of the process's standard streams.
class FileDescriptor {
 public:
  static FileDescriptor owned(int fd) { return FileDescriptor(fd, true); }
  static FileDescriptor borrowed(int fd) { return FileDescriptor(fd, false); }
  FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)), isOwned_(other.isOwned_) {}
  FileDescriptor& operator=(FileDescriptor&&) = delete;
  ~FileDescriptor() { close(); }

  int get() const { return fd_; }
  bool isOwned() const { return isOwned_; }
  // What ::close says; 0 for a borrowed one. Nothing is open afterwards.
  int close() {
    const int fd = std::exchange(fd_, -1);
    return isOwned_ && fd >= 0 ? ::close(fd) : 0;
  }

 private:
  FileDescriptor(int fd, bool isOwned) : fd_(fd), isOwned_(isOwned) {}
  int fd_;
  bool isOwned_;
};

}  // namespace oxr::rec
