#pragma once

#include <optional>
#include <string>

#include "oxrmq/options.hpp"
#include "records/options/options.hpp"

namespace oxr::mq {

struct FeedOptions {
  BrokerOptions broker;
  rec::RecordOptions record;  // the copybook may be missing where the form alone tells where records end
  rec::InputOptions input;
  Target output;
  std::string source;             // what messages call the file; its name if empty, which a stream does not have
  std::string type;               // the content type of the messages; that of records if empty
  std::size_t bytes = 0;          // of a message, or a little more; 0: a default, unless mostRecords is there
  std::uint64_t mostRecords = 0;  // in one; 0 for any number
  std::uint32_t window = 64;      // messages on their way at most
  std::string state;              // path of the file for --resume; empty for none
};

void addFeedOptions(CLI::App& command, FeedOptions& options);

// Cuts a record file into messages. The result is the exit code: kBadField if it was asked to end before the file was
// through. Throws ToolError where nothing can be done.
int feed(const FeedOptions& options, const rec::Console& console);

}  // namespace oxr::mq
