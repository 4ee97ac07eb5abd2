#pragma once

#include <string>
#include <vector>

#include "oxrmq/amqp/connection.hpp"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace oxr::mq {

// Topic "broker": where it is, who logs in, and how.
struct BrokerOptions {
  std::string url = "amqp://localhost";
  std::string credentials;  // path of a file; empty for none
  ConnectionSettings connection;
  unsigned wait = 0;    // seconds for which the first connection is tried again
  unsigned grace = 30;  // seconds for what is in hand when an end is asked for
  std::string declare;  // "classic" or "quorum": queues that are missing are made; empty: they have to be there
  std::string metrics;  // path; empty for none
};

// Of times that options give: ten years.
inline constexpr std::uint64_t kMostSeconds = 315'360'000;

void addBrokerOptions(CLI::App& command, BrokerOptions& options);
// Topic "output": what is counted.
void addMetricsOption(CLI::App& command, BrokerOptions& options);
// EXCHANGE/KEY into `target`; the option `name` has to be given.
void addTargetOption(CLI::App& command, const std::string& name, Target& target, const std::string& help);

// The files of the options that are read: who logs in, and certificates.
std::vector<std::string> filesOf(const BrokerOptions& options);
// Throws ToolError if the file that is to be written is one of those that are read. An empty path is none.
void refuseInputs(const std::string& output, const std::vector<std::string>& inputs);

// Refuses the names that a broker cannot know.
void checkNames(CLI::Option& option);

// The address with the credentials that hold: those of the file, else those of the environment (OXRMQ_USER and
// OXRMQ_PASSWORD), else those of the URL, else guest. Throws ToolError, for half of the environment's too.
Address addressOf(const BrokerOptions& options);

}  // namespace oxr::mq
