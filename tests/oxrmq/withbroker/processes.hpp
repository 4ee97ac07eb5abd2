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

namespace oxr::mq::test {

using rec::test::Folder;
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
  int end(int signal) {
    if (id_ > 0) ::kill(id_, signal);
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

// A broker of its own, see tests/oxrmq/broker. It ends with this process, however that ends: its standard input does.
class Broker {
 public:
  Broker() {
    auto [itsCommands, commands] = pipe();
    auto [answers, itsAnswers] = pipe();
    process_ = std::make_unique<Process>(std::vector<std::string>{OXRMQ_BROKER, "--tls"}, ::fileno(itsCommands.get()),
                                         ::fileno(itsAnswers.get()));
    commands_ = std::move(commands);
    answers_ = std::move(answers);
    std::istringstream ready(answer());
    std::string word;
    if (!(ready >> word >> port_ >> tlsPort_ >> folder_) || word != "ready")
      throw std::runtime_error("the broker does not start: " + process_->messages());
  }
  Broker(const Broker&) = delete;
  Broker& operator=(const Broker&) = delete;
  ~Broker() {
    commands_.reset();
    process_->wait();
  }

  std::string url() const { return "amqp://127.0.0.1:" + std::to_string(port_); }
  std::string encryptedUrl(const std::string& host) const { return "amqps://" + host + ':' + std::to_string(tlsPort_); }
  std::string trusted() const { return folder_ + "/ca.pem"; }
  // Of a client; "client" or "stranger".
  std::string certificate(const std::string& name) const {
    return "--tls-cert " + folder_ + '/' + name + ".pem --tls-key " + folder_ + '/' + name + ".key";
  }
  // Throws if the broker does not do it.
  void command(const std::string& line) {
    std::fputs((line + '\n').c_str(), commands_.get());
    std::fflush(commands_.get());
    if (const std::string said = answer(); !said.starts_with("done")) throw std::runtime_error(line + ": " + said);
  }

 private:
  std::string answer() {
    std::string line(4096, '\0');
    if (std::fgets(line.data(), static_cast<int>(line.size()), answers_.get()) == nullptr) return "nothing";
    return line.substr(0, line.find('\n'));
  }

  std::unique_ptr<Process> process_;
  File commands_, answers_;
  int port_ = 0, tlsPort_ = 0;
  std::string folder_;
};

}  // namespace oxr::mq::test
