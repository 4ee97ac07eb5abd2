#include "oxrrec/options.hpp"

#include <CLI/CLI.hpp>
#include <map>
#include <sstream>

namespace oxr::rec {

namespace {

constexpr char kExamples[] = R"(Example:
  oxrrec decode --copybook customers.cob --ccsid 37 --records rdw customers.bin -o customers.jsonl

Exit codes: 0 done; 1 a field cannot be read; 2 anything else, such as a record that is cut off.)";

// An option whose value is one of a few words.
template <class Value>
CLI::Option* addChoice(CLI::App& command, const std::string& name, Value& value,
                       const std::map<std::string, Value>& words, const std::string& help) {
  std::string list;
  for (const auto& [word, meaning] : words)
    list += (list.empty() ? "" : "|") + word;
  return command.add_option(name, value, help)
      ->transform(CLI::CheckedTransformer(words, CLI::ignore_case).description(""))
      ->type_name(list);
}

void addFileOptions(CLI::App& command, DecodeOptions& options) {
  command.add_option("INPUT", options.input, "the record file, - for standard input")->required();
  command.add_option("-o,--output", options.output, "where the lines go, - (as if not given) for standard output")
      ->type_name("FILE");
  command.add_option("--copybook", options.copybook, "the copybook that describes the records")
      ->type_name("FILE")
      ->required();
  command
      .add_option("--record", options.copybookOptions.record, "the level 01 entry to go by; the first one if not given")
      ->type_name("NAME");
  addChoice<SourceFormat>(
      command, "--format", options.copybookOptions.format,
      {{"detect", SourceFormat::detect}, {"fixed", SourceFormat::fixed}, {"free", SourceFormat::free}},
      "how the copybook's lines are built [detect]");
}

void addRecordOptions(CLI::App& command, DecodeOptions& options) {
  RecordForm& form = options.records.form;
  addChoice<Framing>(command, "--records", form.framing,
                     {{"fixed", Framing::fixed}, {"rdw", Framing::rdw}, {"rdw-le", Framing::rdwLittle}},
                     "what stands around the records: nothing (fixed); 4 bytes in front with the length in bytes 1 and "
                     "2, most significant first (rdw), or in bytes 3 and 4, least significant first (rdw-le) [fixed]");
  command
      .add_option_function<bool>(
          "--length-includes-header", [&form](bool counts) { form.countsHeader = counts; },
          "whether a length in front counts its own bytes [yes in rdw and rdw-le]")
      ->transform(CLI::CheckedTransformer(std::map<std::string, bool>{{"yes", true}, {"no", false}}).description(""))
      ->type_name("yes|no");
  addChoice<bool>(command, "--odo", options.plan.arraysAtFullSize, {{"fixed", true}, {"variable", false}},
                  "arrays with DEPENDING ON take the room of their largest size (fixed) or of their count [variable]");
  command.add_flag("--allow-extra", options.records.allowExtra, "records may be longer than the copybook says");
}

void addFieldOptions(CLI::App& command, DecodeOptions& options) {
  command.add_option("--ccsid", options.form.ccsid, "the code page of the text, such as 37, 273, 500, 819 or 1208")
      ->type_name("N")
      ->check(CLI::PositiveNumber)
      ->required();
  addChoice<EEndian>(command, "--integers", options.form.integerEndian,
                     {{"big", eEndianBig}, {"little", eEndianLittle}}, "byte order of binary numbers [big]");
  addChoice<bool>(command, "--ascii-signs", options.form.hasLetterSigns, {{"letters", true}, {"plain", false}},
                  "signs within digits where the code page is not EBCDIC: the letters that EBCDIC signs turn into, or "
                  "p to y for the digits of a negative number [plain]");
}

void addJsonOptions(CLI::App& command, DecodeOptions& options) {
  addChoice<bool>(command, "--decimals", options.pointsAsText, {{"number", false}, {"text", true}},
                  "write numbers with a decimal point as JSON numbers or as strings [number]");
  addChoice<OnError>(command, "--on-error", options.onError,
                     {{"stop", OnError::stop}, {"null", OnError::null}, {"skip", OnError::skip}},
                     "at a field that cannot be read: stop, write null for it, or leave its record out [stop]");
  command.add_flag("--flat", options.plan.flat,
                   "a group that does not repeat gives its fields to the object around it");
  command.add_flag("--check", options.check,
                   "hold the events of each record to the order that handlers expect; a fault of this program ends it");
  command.add_flag("--progress,!--no-progress", options.progress,
                   "show progress on a terminal at once, or never; after a second if not given");
}

}  // namespace

std::variant<DecodeOptions, Notice> readOptions(std::span<const char* const> arguments) {
  DecodeOptions options;
  CLI::App app("Turns record files that a COBOL copybook describes into JSON lines.", "oxrrec");
  app.require_subcommand(1);
  app.footer(kExamples);
  CLI::App& decoding = *app.add_subcommand("decode", "write a JSON object for each record, one a line");
  addFileOptions(decoding, options);
  addRecordOptions(decoding, options);
  addFieldOptions(decoding, options);
  addJsonOptions(decoding, options);
  decoding.footer(kExamples);
  try {
    // The parser takes the arguments in reverse order.
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::ParseError& error) {
    std::ostringstream help;
    std::ostringstream fault;
    const bool isError = app.exit(error, help, fault) != 0;
    return Notice{isError, isError ? fault.str() : help.str()};
  }
  return options;
}

}  // namespace oxr::rec
