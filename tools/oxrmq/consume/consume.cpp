#include "oxrmq/consume/consume.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <mutex>
#include <thread>

#include "oxrmq/metrics.hpp"
#include "records/options/choice.hpp"

namespace oxr::mq {

namespace {

// A queue's name tells the broker which consumer of a connection is meant.
void refuseTwice(std::vector<std::string> queues) {
  std::sort(queues.begin(), queues.end());
  const auto twice = std::adjacent_find(queues.begin(), queues.end());
  if (twice != queues.end()) throw rec::ToolError("--from " + *twice + " is given twice; --consumers makes more");
}

std::string sumOf(const Counters& counters, const Route& route) {
  std::string text = std::to_string(counters.messagesOut) + " messages with " + std::to_string(counters.records) +
                     " records converted, " + std::to_string(counters.messagesFailed) + " sent to " +
                     shown(route.errors);
  if (counters.recordsLeftOut != 0) text += ", " + std::to_string(counters.recordsLeftOut) + " records left out";
  if (counters.messagesLeftOut != 0)
    text += ", among them all those of " + std::to_string(counters.messagesLeftOut) + " messages";
  return text;
}

// The consumers of a run, a thread each. What ends one of them ends all; the first such thing counts.
class Consumers {
 public:
  Consumers(const ConsumeOptions& options, const std::string& name, const Surroundings& around)
      : options_(options), name_(name), around_(around) {}

  void run(const std::vector<std::unique_ptr<Conversion>>& conversions) {
    {
      std::vector<std::jthread> threads;
      threads.reserve(conversions.size());
      try {
        for (const std::unique_ptr<Conversion>& conversion : conversions)
          threads.emplace_back([this, &conversion] { consume(*conversion); });
      } catch (...) {
        around_.stop.ask();  // else those that have begun would go on
        throw;
      }
    }
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  void consume(Conversion& conversion) {
    try {
      keepConnected(around_, name_, [&](Connection& connection, Backoff& pauses) {
        ConsumerSession(around_, options_.route, conversion, connection, pauses).run();
      });
    } catch (...) {
      const std::lock_guard lock(mutex_);
      if (!failure_) failure_ = std::current_exception();
      around_.stop.ask();
    }
  }

  const ConsumeOptions& options_;
  const std::string& name_;
  const Surroundings& around_;
  std::mutex mutex_;
  std::exception_ptr failure_;
};

}  // namespace

void addConsumeOptions(CLI::App& command, ConsumeOptions& options) {
  constexpr char kTopic[] = "Messages";
  checkNames(*command.add_option("--from", options.route.queues, "a queue to take messages from; may be repeated")
                  ->required()
                  ->type_name("QUEUE")
                  ->allow_extra_args(false)
                  ->group(kTopic));
  addTargetOption(command, "--to", options.route.output,
                  "where the results go: an exchange and a key, or /QUEUE for a queue by its name");
  addTargetOption(command, "--errors", options.route.errors,
                  "where messages go, whole and unchanged, that cannot be converted; headers tell why");
  command.add_option("--prefetch", options.route.prefetch, "messages of a queue that a consumer has in hand [16]")
      ->check(rec::wholeNumber(1, 65535))
      ->type_name("N")
      ->group(kTopic);
  command.add_option("--consumers", options.consumers, "so many consumers, each on a thread and a connection [1]")
      ->check(rec::wholeNumber(1, 256))
      ->type_name("N")
      ->group(kTopic);
  command
      .add_option("--idle", options.route.idle,
                  "end when no message came for so long; 0 takes what is there [wait for ever]")
      ->check(rec::wholeNumber(0, kMostSeconds))
      ->type_name("SECONDS")
      ->group(kTopic);
  command
      .add_option("--max-message", options.longestOutput,
                  "a result of more bytes is an error; the broker has a limit of its own [134217728]")
      ->check(rec::wholeNumber(1))
      ->type_name("BYTES")
      ->group(kTopic);
  addBrokerOptions(command, options.broker);
  addMetricsOption(command, options.broker);
}

int consume(const ConsumeOptions& options, const std::string& name, const ConversionMaker& make,
            const rec::Console& console) {
  refuseTwice(options.route.queues);
  Log log(console);
  Stop stop(std::chrono::seconds(options.broker.grace));
  Counters counters;
  const Surroundings around{options.broker, addressOf(options.broker), log, stop, counters};
  std::vector<std::unique_ptr<Conversion>> conversions;
  for (unsigned i = 0; i < options.consumers; ++i)
    conversions.push_back(make());
  const MetricsFile metrics(options.broker.metrics, counters, log);
  Consumers(options, name, around).run(conversions);
  log.tell(sumOf(counters, options.route));
  return counters.messagesFailed == 0 && counters.badFields == 0 ? rec::kDone : rec::kBadField;
}

}  // namespace oxr::mq
