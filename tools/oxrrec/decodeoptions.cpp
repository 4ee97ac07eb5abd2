#include "oxrrec/decode.hpp"
#include "records/options/choice.hpp"

namespace oxr::rec {

namespace {

constexpr char kTopic[] = "Output";

void addNestOption(CLI::App& command, DecodeOptions& options) {
  command
      .add_option(
          "--nest", options.nest,
          "CHILD:PARENT: records that --when calls CHILD go into an array of that name in the last PARENT's object; "
          "can be given again")
      ->type_name("CHILD:PARENT")
      ->allow_extra_args(false)
      ->group("Kinds of record");
}

void addLineOptions(CLI::App& command, DecodeOptions& options) {
  addChoice<LineFormat>(command, "--to", options.format, {{"json", LineFormat::json}, {"csv", LineFormat::csv}},
                        "a JSON object a record, or a table with a column for each field, arrays as NAME(1) and on, in "
                        "comma-separated values [json]")
      ->group(kTopic);
  addChoice<bool>(command, "--decimals", options.pointsAsText, {{"number", false}, {"text", true}},
                  "write numbers with a decimal point as JSON numbers or as strings [number]")
      ->group(kTopic);
}

void addErrorOptions(CLI::App& command, DecodeOptions& options) {
  command
      .add_option("--errors", options.errors, "where records with a bad field go, as JSON lines with their raw bytes")
      ->type_name("FILE")
      ->group("Errors");
  command
      .add_flag("--check", options.check,
                "hold the events of each record to the order that handlers expect; a fault of this program ends it")
      ->group("Errors");
}

}  // namespace

void addReadingOptions(CLI::App& command, DecodeOptions& options) {
  addInputOptions(command, options.input);
  addRecordOptions(command, options.record);
  addNestOption(command, options);
  command
      .add_flag("--flat", options.record.plan.flat,
                "a group that does not repeat gives its fields to the object around it")
      ->group(kTopic);
  addChoice<OnError>(command, "--on-error", options.onError,
                     {{"stop", OnError::stop}, {"null", OnError::null}, {"skip", OnError::skip}},
                     "at a field that cannot be read: stop, write null for it, or leave its record out [stop]")
      ->group("Errors");
}

void addDecodeOptions(CLI::App& command, DecodeOptions& options) {
  addReadingOptions(command, options);
  addOutputOption(command, options.output);
  addLineOptions(command, options);
  addErrorOptions(command, options);
  command.add_option("--jobs", options.jobs, "make lines on so many threads [1]")
      ->check(wholeNumber(1, 256))
      ->type_name("N")
      ->group(kTopic);
  command
      .add_flag("--progress,!--no-progress", options.progress,
                "show progress on a terminal at once, or never; after a second if not given")
      ->group(kTopic);
  command.footer(
      "Example:\n  oxrrec decode --copybook customers.cob --ccsid 37 --records rdw customers.bin "
      "-o customers.jsonl");
}

}  // namespace oxr::rec
