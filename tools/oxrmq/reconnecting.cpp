#include "oxrmq/reconnecting.hpp"

#include <new>
#include <optional>
#include <random>

namespace oxr::mq {

namespace {

using Clock = std::chrono::steady_clock;

std::string secondsText(Backoff::Pause pause) {
  return std::to_string(pause.count() / 1000) + '.' + std::to_string(pause.count() % 1000 / 100) + " s";
}

// True if the work is done. Else `why` tells what came in between.
bool workOnce(const Surroundings& around, const ConnectionSettings& settings, const SessionWork& work, Backoff& pauses,
              bool& isConnected, std::string& why) {
  try {
    Connection connection(around.address, settings);
    isConnected = true;
    work(connection, pauses);
    connection.close();
    return true;
  } catch (const BrokerGone& gone) {
    why = gone.what();
  } catch (const std::bad_alloc&) {
    why = "out of memory; what was in hand goes back to its queue";
  }
  return false;
}

}  // namespace

void keepConnected(const Surroundings& around, const std::string& name, const SessionWork& work) {
  const Clock::time_point lastFirst = Clock::now() + std::chrono::seconds(around.options.wait);
  ConnectionSettings settings = around.options.connection;
  settings.name = name;
  settings.isOver = [&around] { return around.stop.isOver(); };
  Backoff pauses(std::random_device{}());
  bool wasConnected = false;
  while (true) {
    std::string why;
    bool isConnected = false;
    if (workOnce(around, settings, work, pauses, isConnected, why)) return;
    if (isConnected) ++around.counters.connectionsLost;
    wasConnected = wasConnected || isConnected;
    if (around.stop.isAsked()) return;
    if (!wasConnected && Clock::now() >= lastFirst) throw BrokerGone(why);
    const Backoff::Pause pause = pauses.next();
    around.log.tell(why + "; trying again in " + secondsText(pause));
    around.stop.sleepFor(pause);
    if (around.stop.isAsked()) return;
  }
}

void prepareQueue(const BrokerOptions& options, Connection& connection, const std::string& queue) {
  if (options.declare.empty())
    connection.requireQueue(queue);
  else
    connection.declareQueue(queue, options.declare);
}

void prepareTarget(const BrokerOptions& options, Connection& connection, const Target& target) {
  if (target.exchange.empty())
    prepareQueue(options, connection, target.key);
  else
    connection.requireExchange(target.exchange);
}

}  // namespace oxr::mq
