#pragma once

#include <algorithm>
#include <chrono>
#include <functional>

#include "oxrmq/amqp/backoff.hpp"
#include "oxrmq/counters.hpp"
#include "oxrmq/log.hpp"
#include "oxrmq/options.hpp"
#include "oxrmq/stop.hpp"

namespace oxr::mq {

// What all that works at one broker shares.
struct Surroundings {
  const BrokerOptions& options;
  const Address address;
  Log& log;
  Stop& stop;
  Counters& counters;
};

// Works with a connection until it is done. May throw BrokerGone: it is then called again with another connection. It
// calls reset() of the pauses as soon as something went well.
using SessionWork = std::function<void(Connection& connection, Backoff& pauses)>;

// Connects, works, and does so again with growing pauses as long as the broker goes away, or memory runs out. Throws
// BrokerRefused, and BrokerGone if the first connection is not made in the time that the options give; returns when the
// work is done, or when an end is asked for between two connections.
void keepConnected(const Surroundings& around, const std::string& name, const SessionWork& work);

// For how long no message is to come before nobody waits any more, as --idle tells: a broker takes its time to send
// what it has, and 0 is for that.
inline std::chrono::milliseconds pauseOf(unsigned idleSeconds) {
  constexpr std::chrono::milliseconds kLeast{500};
  return std::max<std::chrono::milliseconds>(std::chrono::seconds(idleSeconds), kLeast);
}

// Makes sure that what the options name is there: the queue, or the exchange of a target and the queue of the broker's
// own exchange. Queues that are missing are made if the options say so.
void prepareQueue(const BrokerOptions& options, Connection& connection, const std::string& queue);
void prepareTarget(const BrokerOptions& options, Connection& connection, const Target& target);

}  // namespace oxr::mq
