#pragma once

#include <string>

#include "oxrmq/options.hpp"
#include "records/program/console.hpp"

namespace oxr::mq {

struct TakeOptions {
  BrokerOptions broker;
  std::string queue;
  std::string output = rec::kStandardStream;  // path, or kStandardStream
  unsigned idle = 2;                          // seconds without a message after which the work is done
};

void addTakeOptions(CLI::App& command, TakeOptions& options);

// Writes the bodies of a queue's messages in the order in which they come, those of a message id once, and acknowledges
// them when the output is complete. The result is the exit code. Throws ToolError where nothing can be done.
int take(const TakeOptions& options, const rec::Console& console);

}  // namespace oxr::mq
