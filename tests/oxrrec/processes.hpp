#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "oxrrec/runs.hpp"

// Programs that run beside the test, and end with it.

namespace oxr::rec::test {

using std::chrono::milliseconds;
using std::chrono::seconds;

inline std::vector<std::string> wordsOf(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

// Descriptors go with the object.
struct Closer {
  using pointer = std::FILE*;
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Closer>;

// Its two ends: what is written to the second one can be read from the first.
inline std::pair<File, File> pipe() {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  return {File(::fdopen(ends[0], "r")), File(::fdopen(ends[1], "w"))};
}

// Waits until something holds; false if it does not in time.
inline bool comes(const std::function<bool()>& something, milliseconds within = seconds(30)) {
  const auto end = std::chrono::steady_clock::now() + within;
  while (!something()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(milliseconds(5));
  }
  return true;
}

// A child process; killed with the object if it still runs.
class Process {
 public:
  // `input` and `output` are its standard streams, -1 for none; what it tells on standard error goes to a file.
  Process(const std::vector<std::string>& words, int input = -1, int output = -1) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words)
      arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const std::string messages = folder_.path("messages");
    id_ = ::fork();
    if (id_ < 0) throw std::runtime_error("fork failed");
    if (id_ != 0) return;
    const int nothing = ::open("/dev/null", O_RDWR);
    ::dup2(input < 0 ? nothing : input, 0);
    ::dup2(output < 0 ? nothing : output, 1);
    ::dup2(::open(messages.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), 2);
    ::execvp(arguments[0], arguments.data());
    ::_exit(127);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process() {
    if (id_ > 0) end(SIGKILL);
  }

  bool isRunning() {
    if (id_ > 0 && ::waitpid(id_, &status_, WNOHANG) == id_) id_ = 0;
    return id_ > 0;
  }
  // Its exit code, or the number of the signal that ended it, negative.
  int wait() {
    if (id_ > 0) ::waitpid(id_, &status_, 0);
    id_ = 0;
    return WIFEXITED(status_) ? WEXITSTATUS(status_) : -WTERMSIG(status_);
  }
  void send(int signal) const {
    if (id_ > 0) ::kill(id_, signal);
  }
  int end(int signal) {
    send(signal);
    return wait();
  }
  std::string messages() const { return rec::test::contentOf(folder_.path("messages")); }
  bool tells(const std::string& text) {
    return comes([&] { return messages().find(text) != std::string::npos; });
  }

 private:
  const Folder folder_;
  pid_t id_ = 0;
  int status_ = 0;
};

}  // namespace oxr::rec::test
