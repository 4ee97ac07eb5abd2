#include "oxrmq/take/take.hpp"

#include <CLI/CLI.hpp>
#include <new>
#include <unordered_set>

#include "oxrmq/metrics.hpp"
#include "oxrmq/reconnecting.hpp"
#include "records/options/choice.hpp"
#include "records/options/options.hpp"

namespace oxr::mq {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint16_t kAnyNumber = 0;  // of messages in hand: none is acknowledged before the end
constexpr std::chrono::milliseconds kLook{200};

// What a receiver does about messages that come more than once: it keeps the ids of those that it has.
class Taking {
 public:
  Taking(const TakeOptions& options, const Surroundings& around, const rec::Console& console)
      : options_(options), around_(around), output_(rec::openOutput(options.output, console)) {}

  // One connection's work. After a lost one all messages come again.
  void run(Connection& connection, Backoff& pauses) {
    prepareQueue(options_.broker, connection, options_.queue);
    connection.consume(options_.queue, kAnyNumber);
    std::optional<std::uint64_t> last;
    auto end = Clock::now() + pauseOf(options_.idle);
    while (Clock::now() < end && !around_.stop.isAsked()) {
      const std::optional<Event> event = connection.next(kLook);
      const auto* const delivery = event ? std::get_if<Delivery>(&*event) : nullptr;
      if (delivery == nullptr) continue;
      if (delivery->message.missing() != 0) throw std::bad_alloc();
      pauses.reset();
      keep(delivery->message);
      last = delivery->tag;
      end = Clock::now() + pauseOf(options_.idle);
    }
    output_.close();
    isComplete_ = true;
    if (last) acknowledge(connection, *last);
  }

  // The code of the program's end. Throws ToolError if the work was ended while there was no connection.
  int end() const {
    if (!isComplete_)
      throw rec::ToolError("stopped before the broker was there again; the messages are still in queue " +
                           options_.queue);
    tellSum();
    return isAcknowledged_ ? rec::kDone : rec::kBadField;
  }

 private:
  // Nothing can be added to the output any more, so there is no other attempt.
  void acknowledge(Connection& connection, std::uint64_t last) {
    try {
      connection.acknowledge(last, true);
    } catch (const BrokerGone& gone) {
      isAcknowledged_ = false;
      around_.log.tell(std::string(gone.what()) + "; the output is complete, but the messages are in the queue again");
    }
  }

  void tellSum() const {
    around_.log.tell(std::to_string(messages_) + " messages taken from queue " + options_.queue + ", " +
                     std::to_string(doubles_) + " doubles dropped");
  }

  void keep(const Message& message) {
    const std::string_view id = messageIdOf(message.properties());
    if (!id.empty() && !ids_.emplace(id).second) {
      ++doubles_;
      return;
    }
    ++messages_;
    output_.write({reinterpret_cast<const char*>(message.body().data()), message.body().size()});
  }

  const TakeOptions& options_;
  const Surroundings& around_;
  rec::FileOutput output_;
  std::unordered_set<std::string> ids_;
  std::uint64_t messages_ = 0;
  std::uint64_t doubles_ = 0;
  bool isComplete_ = false;
  bool isAcknowledged_ = true;
};

}  // namespace

void addTakeOptions(CLI::App& command, TakeOptions& options) {
  checkNames(*command.add_option("--from", options.queue, "the queue to take messages from")
                  ->required()
                  ->type_name("QUEUE")
                  ->group("Messages"));
  command.add_option("--idle", options.idle, "end when no message came for so long; 0 takes what is there [2]")
      ->check(rec::wholeNumber(0, kMostSeconds))
      ->type_name("SECONDS")
      ->group("Messages");
  rec::addOutputOption(command, options.output);
  addBrokerOptions(command, options.broker);
  command.footer("Example:\n  oxrmq take --from lines -o customers.jsonl");
}

int take(const TakeOptions& options, const rec::Console& console) {
  Log log(console);
  Stop stop(std::chrono::seconds(options.broker.grace));
  Counters counters;
  const Surroundings around{options.broker, addressOf(options.broker), log, stop, counters};
  Taking taking(options, around, console);
  keepConnected(around, "oxrmq take", [&](Connection& connection, Backoff& pauses) { taking.run(connection, pauses); });
  return taking.end();
}

}  // namespace oxr::mq
