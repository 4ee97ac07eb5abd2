#pragma once

#include <functional>
#include <memory>

#include "oxrmq/consume/session.hpp"
#include "records/options/options.hpp"

namespace oxr::mq {

// Options of the commands that take messages from queues.
struct ConsumeOptions {
  BrokerOptions broker;
  Route route;
  unsigned consumers = 1;                   // threads, each with a connection of its own
  std::uint64_t longestOutput = 134217728;  // bytes that the broker takes
};

void addConsumeOptions(CLI::App& command, ConsumeOptions& options);

// Makes the conversion of a consumer; called once for each, on the thread that calls consume().
using ConversionMaker = std::function<std::unique_ptr<Conversion>()>;

// Consumes until an end is asked for, or no message comes any more. The result is the exit code: kBadField if a message
// went to the target for errors, or something in it was left out. Throws ToolError where nothing can be done.
int consume(const ConsumeOptions& options, const std::string& name, const ConversionMaker& make,
            const rec::Console& console);

}  // namespace oxr::mq
