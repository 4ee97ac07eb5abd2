#include "oxrrec/encode/encode.hpp"
#include "oxrrec/options/choice.hpp"

namespace oxr::rec {

namespace {

// Two hexadecimal digits.
std::optional<unsigned char> byteIn(const std::string& text) {
  if (text.size() != 2 || text.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) return std::nullopt;
  return static_cast<unsigned char>(std::stoi(text, nullptr, 16));
}

}  // namespace

void addFillerOption(CLI::App& command, std::optional<unsigned char>& filler) {
  command
      .add_option_function<std::string>(
          "--filler", [&filler](const std::string& text) { filler = byteIn(text); },
          "the byte that stands where no field gives one, such as 40 or 00 [blanks in text, 00 elsewhere]")
      ->check([](const std::string& text) { return byteIn(text) ? "" : "two hexadecimal digits are wanted"; })
      ->type_name("HEX")
      ->group("Fields");
}

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
