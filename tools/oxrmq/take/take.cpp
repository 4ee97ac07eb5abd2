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
    try {
      takeAll(connection, pauses);
    } catch (const std::bad_alloc&) {
      refuse("out of memory");
    } catch (const BrokerGone& gone) {
      // It would come to that again.
      if (isTooLate(gone.what()))
        refuse(std::string(gone.what()) + "; the broker's consumer_timeout has to be longer than what this takes");
      if (hasNameless_)
        refuse(std::string(gone.what()) + "; messages without an id come again, and would be written twice");
      throw;
    }
  }

  // The code of the program's end. Throws ToolError if the work was ended while there was no connection.
  int end() const {
    if (!isComplete_) refuse("stopped before the broker was there again");
    tellSum();
    return isAcknowledged_ ? rec::kDone : rec::kBadField;
  }

 private:
  [[noreturn]] void refuse(const std::string& why) const {
    throw rec::ToolError(why + "; the messages are still in queue " + options_.queue);
  }

  void takeAll(Connection& connection, Backoff& pauses) {
    prepareQueue(options_.broker, connection, options_.queue);
    connection.consume(options_.queue, kAnyNumber);
    std::optional<std::uint64_t> last;
    auto end = Clock::now() + pauseOf(options_.idle);
    while (Clock::now() < end && !around_.stop.isAsked()) {
      const std::optional<Event> event = connection.next(kLook);
      const auto* const delivery = event ? std::get_if<Delivery>(&*event) : nullptr;
      if (delivery == nullptr) continue;
      if (const std::uint64_t bytes = delivery->message.missing(); bytes != 0)
        refuse("out of memory for a message of " + std::to_string(bytes) + " bytes");
      pauses.reset();
      keep(delivery->message);
      last = delivery->tag;
      end = Clock::now() + pauseOf(options_.idle);
    }
    output_.close();
    isComplete_ = true;
    if (last) acknowledge(connection, *last);
  }

  // Nothing can be added to the output any more, so there is no other attempt.
  void acknowledge(Connection& connection, std::uint64_t last) {
    std::string why = "the broker has not answered at the end";
    try {
      connection.acknowledge(last, true);
      isAcknowledged_ = connection.close();
    } catch (const BrokerGone& gone) {
      why = gone.what();
      isAcknowledged_ = false;
    }
    if (!isAcknowledged_)
      around_.log.tell(why + "; the output is complete, but the messages may be in the queue again");
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
    hasNameless_ = hasNameless_ || id.empty();
    ++messages_;
    output_.write({reinterpret_cast<const char*>(message.body().data()), message.body().size()});
  }

  const TakeOptions& options_;
  const Surroundings& around_;
  rec::FileOutput output_;
  std::unordered_set<std::string> ids_;
  std::uint64_t messages_ = 0;
  std::uint64_t doubles_ = 0;
  bool hasNameless_ = false;  // messages without an id were written
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
