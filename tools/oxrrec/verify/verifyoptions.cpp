#include "oxrrec/encode/encode.hpp"
#include "oxrrec/verify/verify.hpp"
#include "records/options/choice.hpp"

namespace oxr::rec {

void addVerifyOptions(CLI::App& command, VerifyOptions& options) {
  addInputOptions(command, options.input);
  addRecordOptions(command, options.record);
  addWritingOptions(command, options.input.records.form);
  command.get_option("--trim-lines")->needs("--line-end");  // without it what stands around lines is not compared
  addFillerOption(command, options.input.records.filler);
  command
      .add_flag("--keep-filler", options.keepsFiller,
                "bytes without a value come from the original: fillers, unused occurrences, which half byte stands for "
                "plus, the bytes of bad fields")
      ->group("Output");
  addChoice<bool>(command, "--decimals", options.pointsAsText, {{"number", false}, {"text", true}},
                  "have numbers with a decimal point as JSON numbers or as strings on the way [number]")
      ->group("Output");
  command
      .add_flag("--flat", options.record.plan.flat,
                "a group that does not repeat gives its fields to the object around it")
      ->group("Output");
  command.footer("Example:\n  oxrrec verify --copybook customers.cob --ccsid 37 --records rdw customers.bin");
}

}  // namespace oxr::rec
