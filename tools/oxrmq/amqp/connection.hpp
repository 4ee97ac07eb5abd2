#pragma once

#include <amqp.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "oxrmq/amqp/address.hpp"
#include "oxrmq/amqp/errors.hpp"
#include "oxrmq/amqp/message.hpp"
#include "oxrmq/amqp/properties.hpp"
#include "oxrmq/amqp/stallguard.hpp"

namespace oxr::mq {

// How a connection is made, beside the address.
struct ConnectionSettings {
  std::string name;  // by which the broker's lists show it
  std::chrono::seconds heartbeat{30};
  std::chrono::seconds timeout{15};  // for the connection, and for each answer of the broker
  // Of amqps: the certificates to trust, and this side's own with its key; paths of PEM files.
  std::string trusted{};
  std::string certificate{};
  std::string key{};
  bool isVerified = true;  // the broker's certificate and the name in it
  // Whether all is to be given up, whatever is under way; asked on another thread. Empty: never.
  std::function<bool()> isOver{};
};

// What the broker tells.

// It has taken the message, or all messages up to it; or it has not, and they are to be published again.
struct Answer {
  std::uint64_t number = 0;  // as nextNumber() gave it
  bool isForAllBefore = false;
  bool isTaken = true;
};
// A message went to no queue. Its answer follows.
struct Returned {
  std::string text;
};
// It takes no messages until further notice, or takes them again: then there is no reason.
struct Blocked {
  std::optional<std::string> reason;
};
using Event = std::variant<Delivery, Answer, Returned, Blocked>;

// A connection to a broker with one channel on it, on which messages come in and are published with confirmation.
//
// Serves one thread. Each operation throws BrokerGone if the connection is lost and BrokerRefused if the broker closes
// it because of what was asked; the object is of no more use then. What was taken and not acknowledged goes back to
// its queue when the object goes.
class Connection {
 public:
  // Connects and logs in. Throws ToolError for files of certificates that cannot be used.
  Connection(const Address& address, const ConnectionSettings& settings);
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection();

  // Throws BrokerRefused if there is no queue, or exchange, of the name.
  void requireQueue(const std::string& name);
  void requireExchange(const std::string& name);
  // Makes a durable queue, unless there is one, of whatever kind. REQUIRES: nothing was published or consumed before.
  // `type` is "classic" or "quorum"; of a full queue with `mostMessages`
  // new messages are not taken (0: it is never full).
  void declareQueue(const std::string& name, const std::string& type, std::int64_t mostMessages = 0);

  // From now on the queue's messages come in, `prefetch` unacknowledged ones of each queue at most.
  void consume(const std::string& queue, std::uint16_t prefetch);
  // The next event, nothing after `wait` without one. A message whose body memory does not hold comes without it.
  // Throws std::bad_alloc if there is not even memory for that; the object is then of no more use either.
  std::optional<Event> next(std::chrono::milliseconds wait);
  // Acknowledges the delivery, and all before it if one says so.
  void acknowledge(std::uint64_t tag, bool isForAllBefore);
  // Gives a delivery back to its queue.
  void giveBack(std::uint64_t tag);

  // The number that the next message will have.
  std::uint64_t nextNumber() const { return published_ + 1; }
  // Whether a message can have these: all of it but its body goes in one frame.
  bool hasRoomFor(Properties& properties);
  // Publishes a message, for which an Answer comes. Body and properties may go afterwards.
  void publish(const Target& target, Properties& properties, std::string_view body);

  // Leaves in good order, as far as that can be done in a short time. True if the broker has answered: it has done all
  // that it was told before. Nothing else can be done afterwards.
  bool close() noexcept;

 private:
  struct Release {
    void operator()(amqp_connection_state_t state) const { amqp_destroy_connection(state); }
  };
  using State = std::unique_ptr<std::remove_pointer_t<amqp_connection_state_t>, Release>;

  void openChannel();
  bool hasQueue(const std::string& name);
  void open(const Address& address, const ConnectionSettings& settings);
  void login(const Address& address, const ConnectionSettings& settings);
  void check(const amqp_rpc_reply_t& reply, const std::string& doing) const;
  void check(int status, const char* doing) const;
  std::optional<Event> eventOf(const amqp_frame_t& frame);
  Message readMessage();
  amqp_frame_t nextOf(std::uint8_t type);
  [[noreturn]] void closed(const amqp_method_t& method, const std::string& doing) const;
  [[noreturn]] void failed(int status, const std::string& doing) const;

  const std::string shown_;  // the address
  State state_;
  std::optional<StallGuard> guard_;  // of the open socket
  std::deque<Event> early_;          // that came in the middle of a message
  std::uint64_t published_ = 0;
  bool isClosed_ = false;
  std::vector<char> frame_;  // room for what properties may take
};

}  // namespace oxr::mq
