#pragma once

#include <chrono>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "oxrmq/amqp/acknowledgements.hpp"
#include "oxrmq/amqp/backoff.hpp"
#include "oxrmq/amqp/confirms.hpp"
#include "oxrmq/convert/conversion.hpp"
#include "oxrmq/reconnecting.hpp"

namespace oxr::mq {

// What a consumer takes, and where it puts what it makes of it.
struct Route {
  std::vector<std::string> queues;
  Target output;
  Target errors;
  std::uint16_t prefetch = 16;     // messages of each queue in hand at most
  std::optional<unsigned> idle{};  // seconds without a message after which a consumer ends, see pauseOf
};

// The work of a consumer on one connection: each message is converted, its output is published under the same id, and
// the message is acknowledged once the broker has confirmed the output. Whatever ends it before, the message comes
// again.
//
// Nothing is kept of an output: if the broker does not take it, the message is converted again after a pause. Where the
// broker asks for a pause, messages wait here, no more than the prefetch. A message that there is no memory for goes
// back to its queue, after a pause in which the others are worked on: it would come again at once, before them.
class ConsumerSession {
 public:
  ConsumerSession(const Surroundings& around, const Route& route, Conversion& conversion, Connection& connection,
                  Backoff& pauses);

  // Returns when no message came for the time that the route tells, or when an end is asked for and what was in hand is
  // done, or cannot be done in time. Throws BrokerGone and
  // BrokerRefused.
  void run();

 private:
  using Clock = std::chrono::steady_clock;

  // A message whose output is on its way, and what counts once the broker has confirmed it.
  struct InHand {
    Delivery delivery;
    std::uint64_t records = 0;
    std::uint64_t leftOut = 0;
    std::uint64_t badFields = 0;
    std::uint64_t bytes = 0;
    bool isFault = false;
  };

  void work();
  void prepare();
  bool isDone();
  bool mayConvert() const;
  void drain(std::chrono::milliseconds wait);
  void take(Delivery delivery);
  void take(const Answer& answer);
  void take(const Returned& returned);
  void take(const Blocked& blocked);
  void acknowledge();
  void setApart(std::uint64_t tag, std::uint64_t bytes);
  void returnApart();
  void workOn(Delivery delivery);
  Converted converted(const Delivery& delivery);
  void leaveOut(std::uint64_t tag, const Converted& made);
  void publishOutput(Delivery delivery, const Converted& converted);
  void publishFault(Delivery delivery, const Fault& fault, std::uint64_t badFields);
  std::string largest();
  void publish(InHand&& inHand, const Target& target, Properties& properties, std::string_view body);

  const Surroundings& around_;
  const Route& route_;
  Conversion& conversion_;
  Connection& connection_;
  Backoff& pauses_;
  Backoff notTakenPauses_;
  std::deque<Delivery> waiting_;  // not converted yet, or to be converted again
  ConfirmWindow<InHand> published_;
  Acknowledgements acknowledgements_;
  struct Apart {
    Clock::time_point until;
    std::uint64_t tag;
  };
  std::deque<Apart> apart_;  // to be returned to their queues
  Backoff apartPauses_;
  bool isBlocked_ = false;
  Clock::time_point notBefore_{};  // no conversion before that
  Clock::time_point last_{};       // when a message came in, or made room for others
};

}  // namespace oxr::mq
