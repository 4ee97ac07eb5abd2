#include "records/framing/temporaryfile.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <utility>

// A handler of signals may neither take a lock nor allocate, so the names lie in a table of fixed size. A name that
// finds no room there, of which a run has two at most, or that is longer than the system takes, is just not in it.

namespace oxr::rec {

namespace {

enum class State : int { isFree, isChanging, isInUse };

struct Entry {
  std::atomic<State> state = State::isFree;
  std::array<char, PATH_MAX> path{};
};

std::array<Entry, 8> entries;

void remember(const std::string& path) {
  if (path.size() >= PATH_MAX) return;
  for (Entry& entry : entries) {
    State expected = State::isFree;
    if (!entry.state.compare_exchange_strong(expected, State::isChanging)) continue;
    std::memcpy(entry.path.data(), path.c_str(), path.size() + 1);
    entry.state = State::isInUse;
    return;
  }
}

void forget(const std::string& path) {
  for (Entry& entry : entries)
    if (entry.state == State::isInUse && path == entry.path.data()) entry.state = State::isFree;
}

// Holds back the signals of the thread, so that no file is there whose name is not in the table.
class SignalsHeld {
 public:
  SignalsHeld() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, &before_);
  }
  ~SignalsHeld() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t before_{};
};

}  // namespace

TemporaryFile::TemporaryFile(std::string target) : target_(std::move(target)) {
  const std::string start = target_ + '.' + std::to_string(::getpid());
  const SignalsHeld held;
  for (int i = 0;; ++i) {
    path_ = start + (i == 0 ? std::string() : '-' + std::to_string(i)) + ".part";
    fd_ = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd_ >= 0 || errno != EEXIST) break;
  }
  if (fd_ >= 0)
    remember(path_);
  else
    path_.clear();
}

TemporaryFile::TemporaryFile(TemporaryFile&& other) noexcept
    : target_(std::move(other.target_)), path_(std::exchange(other.path_, {})), fd_(std::exchange(other.fd_, -1)) {}

TemporaryFile& TemporaryFile::operator=(TemporaryFile&& other) noexcept {
  std::swap(target_, other.target_);
  std::swap(path_, other.path_);
  std::swap(fd_, other.fd_);
  return *this;
}

bool TemporaryFile::keep() {
  if (path_.empty()) return true;
  if (::rename(path_.c_str(), target_.c_str()) != 0) return false;
  forget(path_);
  path_.clear();
  return true;
}

void TemporaryFile::discard() {
  if (path_.empty()) return;
  ::unlink(path_.c_str());
  forget(path_);
  path_.clear();
}

void removeTemporaryFiles() noexcept {
  for (const Entry& entry : entries)
    if (entry.state == State::isInUse) ::unlink(entry.path.data());
}

}  // namespace oxr::rec
