#include <CLI/CLI.hpp>

#include "oxrmq/feed/feed.hpp"
#include "records/options/choice.hpp"

namespace oxr::mq {

namespace {

constexpr char kTopic[] = "Messages";

void addMessageOptions(CLI::App& command, FeedOptions& options) {
  command
      .add_option("--message-bytes", options.bytes,
                  "a message ends with the record that reaches so many bytes [65536, or any number with "
                  "--message-records]")
      ->check(rec::wholeNumber(1, 1U << 30))
      ->type_name("BYTES")
      ->group(kTopic);
  command
      .add_option("--message-records", options.mostRecords, "a message has no more than so many records [any number]")
      ->check(rec::wholeNumber(1))
      ->type_name("N")
      ->group(kTopic);
  command.add_option("--source", options.source, "what the messages call the file; standard input needs it [its name]")
      ->type_name("NAME")
      ->group(kTopic);
  checkNames(*command.add_option("--type", options.type, "the content type of the messages [application/octet-stream]")
                  ->type_name("TYPE")
                  ->group(kTopic));
  command.add_option("--window", options.window, "messages that wait for the broker's confirmation at most [64]")
      ->check(rec::wholeNumber(1, 65535))
      ->type_name("N")
      ->group(kTopic);
  command
      .add_option("--resume", options.state,
                  "a file that keeps how far the work is; if it is there, the work goes on from there")
      ->type_name("STATE")
      ->group(kTopic);
}

}  // namespace

void addFeedOptions(CLI::App& command, FeedOptions& options) {
  rec::addInputOptions(command, options.input);
  rec::addRecordOptions(command, options.record);
  // They are needed only where the form of the records does not tell where they end.
  for (const char* const name : {"--copybook", "--ccsid"})
    command.get_option(name)->required(false);
  for (const char* const name : {"--on-unknown", "--allow-extra"})
    command.remove_option(command.get_option(name));
  addTargetOption(command, "--to", options.output,
                  "where the messages go: an exchange and a key, or /QUEUE for a queue by its name");
  addMessageOptions(command, options);
  addBrokerOptions(command, options.broker);
  addMetricsOption(command, options.broker);
  command.footer("Example:\n  oxrmq feed customers.bin --records rdw --to /records --resume customers.state");
}

}  // namespace oxr::mq
