#include "oxrrec/encode/encode.hpp"
#include "records/options/choice.hpp"

namespace oxr::rec {

namespace {

constexpr std::uint64_t kLongestLine = std::uint64_t{1} << 30;

}  // namespace

void addWritingOptions(CLI::App& command, RecordForm& form) {
  command
      .add_option_function<std::uint32_t>(
          "--block-size", [&form](std::uint32_t size) { form.blockSize = size; },
          "bdw, spanned: a block that is written has at most so many bytes, its own header of 4 and those of its "
          "records among them [32760]")
      ->check(wholeNumber(RecordFramer::kSmallestBlock, RecordFramer::kLargestBlock))
      ->type_name("BYTES")
      ->group("Records");
  choose<LineEnd>(command.add_option_function<LineEnd>(
                      "--line-end", [&form](LineEnd end) { form.lineEnd = end; }, "lines: what ends one [lf]"),
                  {{"lf", LineEnd::lineFeed}, {"crlf", LineEnd::returnAndFeed}, {"nel", LineEnd::nextLine}})
      ->group("Records");
  command.add_flag("--trim-lines", form.trimsLines, "lines: leave out the blanks at their end")->group("Records");
}

void addRecordWritingOptions(CLI::App& command, EncodeOptions& options) {
  addRecordOptions(command, options.record);
  addFramingOptions(command, options.records.form, FormIs::said);
  addWritingOptions(command, options.records.form);
  addFillerOption(command, options.records.filler);
  addUnknownLineOption(command, options.records.onUnknown);
  command
      .add_option("--nest", options.nest,
                  "CHILD:PARENT: what stands in the array CHILD of a record become records of their own after it, as "
                  "decode put them there; can be given again")
      ->type_name("CHILD:PARENT")
      ->allow_extra_args(false)
      ->group("Kinds of record");
  command
      .add_flag("--flat", options.record.plan.flat,
                "groups that do not repeat have their fields in the object around them")
      ->group("Output");
  addChoice<OnError>(command, "--on-error", options.onError, {{"stop", OnError::stop}, {"skip", OnError::skip}},
                     "at a line that does not fit: stop, or leave its record out [stop]")
      ->group("Errors");
}

void addEncodeOptions(CLI::App& command, EncodeOptions& options) {
  command.add_option("INPUT", options.input, "the JSON lines, - for standard input")->required();
  addRecordWritingOptions(command, options);
  command.add_option("--max-line", options.longestLine, "the longest line that is read, 1GiB at most [64MiB]")
      ->transform(sizeInBytes(kLongestLine))
      ->type_name("BYTES")
      ->group("Records");
  addOutputOption(command, options.output);
  command.footer(
      "Example:\n  oxrrec encode --copybook customers.cob --ccsid 37 --records rdw customers.jsonl "
      "-o customers.bin");
}

}  // namespace oxr::rec
