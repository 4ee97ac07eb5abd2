#include "oxrrec/encode/encode.hpp"
#include "records/options/choice.hpp"

namespace oxr::rec {

void addEncodeOptions(CLI::App& command, EncodeOptions& options) {
  command.add_option("INPUT", options.input, "the JSON lines, - for standard input")->required();
  addRecordOptions(command, options.record);
  addFramingOptions(command, options.records.form);
  addFillerOption(command, options.records.filler);
  addOutputOption(command, options.output);
  command
      .add_flag("--flat", options.record.plan.flat,
                "groups that do not repeat have their fields in the object around them")
      ->group("Output");
  addChoice<OnError>(command, "--on-error", options.onError, {{"stop", OnError::stop}, {"skip", OnError::skip}},
                     "at a line that does not fit: stop, or leave its record out [stop]")
      ->group("Errors");
  command.footer(
      "Example:\n  oxrrec encode --copybook customers.cob --ccsid 37 --records rdw customers.jsonl "
      "-o customers.bin");
}

}  // namespace oxr::rec
