#include <charconv>
#include <system_error>

#include "records/options/choice.hpp"
#include "records/options/options.hpp"

namespace oxr::rec {

namespace {

constexpr char kTopic[] = "Records";

// "1000-2000" into the two bytes.
std::string readRange(const std::string& text, InputWindow& window) {
  InputWindow::Range range;
  const char* const end = text.data() + text.size();
  const auto first = std::from_chars(text.data(), end, range.begin);
  const bool hasHyphen = first.ec == std::errc() && first.ptr != end && *first.ptr == '-';
  const auto second = std::from_chars(hasHyphen ? first.ptr + 1 : end, end, range.end);
  if (second.ec != std::errc() || second.ptr != end || range.begin > range.end)
    return "'" + text + "' is no range of bytes such as 1000-2000";
  window.range = range;
  return {};
}

}  // namespace

void addWindowOptions(CLI::App& command, InputWindow& window) {
  command.add_option("--skip-header", window.skipHeader, "so many bytes at the file's start are no record [0]")
      ->check(wholeNumber(0))
      ->type_name("BYTES")
      ->group(kTopic);
  command.add_option("--skip-trailer", window.skipTrailer, "so many bytes at the file's end are no record [0]")
      ->check(wholeNumber(0))
      ->type_name("BYTES")
      ->group(kTopic);
  command
      .add_option_function<std::string>(
          "--range",
          [&window](const std::string& text) {
            if (const std::string fault = readRange(text, window); !fault.empty())
              throw CLI::ValidationError("--range", fault);
          },
          "only the records from byte A up to byte B of the file; both are where one begins, as index tells them")
      ->type_name("A-B")
      ->group(kTopic);
  command
      .add_option_function<std::uint64_t>(
          "--first-record", [&window](std::uint64_t number) { window.recordsBefore = number - 1; },
          "the number of the first record that is read, for messages [1]")
      ->check(wholeNumber(1))
      ->type_name("N")
      ->group(kTopic);
}

void addLengthOptions(CLI::App& command, RecordOptions& record) {
  addChoice<bool>(command, "--odo", record.plan.arraysAtFullSize, {{"fixed", true}, {"variable", false}},
                  "arrays with DEPENDING ON take the room of their largest size (fixed) or of their count [variable]")
      ->group(kTopic);
}

namespace {

// Options that say something about some forms only.
struct FormOption {
  const char* name;
  bool (*isFor)(Framing framing);
  const char* forms;
};
constexpr FormOption kFormOptions[] = {
    {"--length-includes-header", [](Framing f) { return f != Framing::fixed && f != Framing::lines; },
     "forms with a length in front of records"},
    {"--block-size", isBlocked, "--records bdw and spanned"},
    {"--line-end", [](Framing f) { return f == Framing::lines; }, "--records lines"},
    {"--trim-lines", [](Framing f) { return f == Framing::lines; }, "--records lines"},
};

bool isGiven(const CLI::App& command, const char* option) {
  const CLI::Option* const known = command.get_option_no_throw(option);
  return known != nullptr && known->count() != 0;
}

// What would change nothing is a mistake of who said it.
void requireEffect(const CLI::App& command, const RecordForm& form) {
  for (const FormOption& option : kFormOptions)
    if (form.framing != Framing::automatic && isGiven(command, option.name) && !option.isFor(form.framing))
      throw CLI::ValidationError(option.name, std::string("this is for ") + option.forms + " only");
  if (isGiven(command, "--on-unknown") && !isGiven(command, "--when"))
    throw CLI::ValidationError("--on-unknown", "without --when no record is of an unknown kind");
}

}  // namespace

void addFramingOptions(CLI::App& command, RecordForm& form, FormIs known) {
  command.callback([&command, &form] { requireEffect(command, form); });
  Words<Framing> forms = {{"fixed", Framing::fixed},
                          {"rdw", Framing::rdw},
                          {"rdw-le", Framing::rdwLittle},
                          {"bdw", Framing::bdw},
                          {"spanned", Framing::spanned},
                          {"length2", Framing::length2},
                          {"length2-le", Framing::length2Little},
                          {"length4", Framing::length4},
                          {"length4-le", Framing::length4Little},
                          {"lines", Framing::lines}};
  std::string help =
      "what stands around the records: nothing (fixed); 4 bytes in front with the length in bytes 1 and 2, most "
      "significant first (rdw), or in bytes 3 and 4, least significant first (rdw-le); blocks of such records (bdw), "
      "which may go on in the next block (spanned); a length alone (length2, length4); line ends (lines)";
  if (known == FormIs::saidOrFound) {
    forms.emplace("auto", Framing::automatic);
    help += "; whatever the first 64 KiB show (auto)";
  }
  addChoice<Framing>(command, "--records", form.framing, forms, help + " [fixed]")->group(kTopic);
  choose<bool>(command.add_option_function<bool>(
                   "--length-includes-header", [&form](bool counts) { form.countsHeader = counts; },
                   "whether a length in front counts its own bytes [yes, but not in length2 and length4]"),
               {{"yes", true}, {"no", false}})
      ->group(kTopic);
}

void addInputOptions(CLI::App& command, InputOptions& input) {
  command.add_option("INPUT", input.path, "the record file, - for standard input")->required();
  addFramingOptions(command, input.records.form);
  addWindowOptions(command, input.window);
  addUnknownOption(command, input.records.onUnknown);
  command.add_flag("--allow-extra", input.records.allowExtra, "records may be longer than the copybook says")
      ->group(kTopic);
}

}  // namespace oxr::rec
