#pragma once

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

#include "oxrrec/processes.hpp"

// The broker that runs beside the test, and ends with it.

namespace oxr::mq::test {

using rec::test::comes;
using rec::test::File;
using rec::test::Folder;
using rec::test::milliseconds;
using rec::test::pipe;
using rec::test::Process;
using rec::test::seconds;
using rec::test::wordsOf;

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
