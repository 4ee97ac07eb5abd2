#include "oxrrec/options/choice.hpp"
#include "oxrrec/options/options.hpp"

namespace oxr::rec {

namespace {

constexpr char kTopic[] = "Records";

}  // namespace

void addLengthOptions(CLI::App& command, RecordOptions& record) {
  addChoice<bool>(command, "--odo", record.plan.arraysAtFullSize, {{"fixed", true}, {"variable", false}},
                  "arrays with DEPENDING ON take the room of their largest size (fixed) or of their count [variable]")
      ->group(kTopic);
}

void addFramingOptions(CLI::App& command, RecordForm& form) {
  addChoice<Framing>(command, "--records", form.framing,
                     {{"fixed", Framing::fixed},
                      {"rdw", Framing::rdw},
                      {"rdw-le", Framing::rdwLittle},
                      {"bdw", Framing::bdw},
                      {"spanned", Framing::spanned},
                      {"length2", Framing::length2},
                      {"length2-le", Framing::length2Little},
                      {"length4", Framing::length4},
                      {"length4-le", Framing::length4Little},
                      {"lines", Framing::lines}},
                     "what stands around the records: nothing (fixed); 4 bytes in front with the length in bytes 1 and "
                     "2, most significant first (rdw), or in bytes 3 and 4, least significant first (rdw-le); blocks "
                     "of such records (bdw), which may go on in the next block (spanned); a length alone (length2, "
                     "length4); line ends (lines) [fixed]")
      ->group(kTopic);
  choose<bool>(command.add_option_function<bool>(
                   "--length-includes-header", [&form](bool counts) { form.countsHeader = counts; },
                   "whether a length in front counts its own bytes [yes, but not in length2 and length4]"),
               {{"yes", true}, {"no", false}})
      ->group(kTopic);
}

void addInputOptions(CLI::App& command, InputOptions& input) {
  command.add_option("INPUT", input.path, "the record file, - for standard input")->required();
  addFramingOptions(command, input.records.form);
  command.add_flag("--allow-extra", input.records.allowExtra, "records may be longer than the copybook says")
      ->group(kTopic);
}

}  // namespace oxr::rec
