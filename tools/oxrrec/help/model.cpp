#include "oxrrec/help/model.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

namespace oxr::rec {

namespace {

constexpr Topic kTopics[] = {
    {"copybook", "Copybook", "where the layout comes from",
     "The copybook is a COBOL source text: its level 01 entries, or a whole program whose data division is looked for. "
     "`oxrrec layout` shows where each field is without a record file."},
    {"records", "Records", "how records lie in the file",
     "How records lie in the file. Files from a mainframe keep their headers if they were transferred in binary with "
     "their record descriptors; without, only records of one length, or such whose counts tell their length, can be "
     "told from each other."},
    {"when", "Kinds of record", "several kinds of record in one file",
     "Several kinds of record in one file: each condition names a field, its values, and the level 01 entry, or the "
     "group that redefines others, which the record then is.\n"
     "  --when KIND=1:HEADER --when KIND=2,3:DETAIL --when KIND=*:OTHER"},
    {"fields", "Fields", "how fields are stored",
     "How fields are stored, as far as the copybook does not say: the code page of text and digits, the byte order of "
     "numbers, and what blanks and NULs in the place of a number mean."},
    {"output", "Output", "what is written, and where to", "What is written, and where to."},
    {"errors", "Errors", "what becomes of a field that cannot be read",
     "What becomes of a field that cannot be read. The first 20 are told on standard error, with record, byte, path, "
     "reason and bytes; `oxrrec explain` shows a whole record."},
    {"exit-codes", "", "what the exit code tells",
     "0: all is read. 1: some field or record was bad, whatever --on-error made of it. 2: nothing usable, such as "
     "options or a copybook that are not understood, or a file that cannot be read or written."},
};

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);)
    parts.push_back(part);
  return parts;
}

OptionText textOf(const CLI::Option& option) {
  OptionText text;
  text.isArgument = option.get_positional();
  text.isRequired = option.get_required();
  text.help = option.get_description();
  text.topic = option.get_group() == "Options" ? "" : option.get_group();
  if (text.isArgument) {
    text.names = {option.get_name(true)};
    return text;
  }
  for (const std::string& name : option.get_snames())
    text.names.push_back('-' + name);
  for (const std::string& name : option.get_lnames())
    text.names.push_back("--" + name);
  if (option.get_items_expected_max() == 0) return text;
  text.value = option.get_type_name();
  // What checks a value may add a word of its own.
  if (const std::size_t check = text.value.find(":POSITIVE"); check != std::string::npos) text.value.resize(check);
  if (text.value.find('|') != std::string::npos) text.words = split(text.value, '|');
  return text;
}

}  // namespace

std::span<const Topic> topics() {
  return kTopics;
}

CommandText textOf(const CLI::App& command) {
  CommandText text{command.get_name(), command.get_description(), command.get_footer(), {}};
  for (const CLI::Option* const option : command.get_options())
    text.options.push_back(textOf(*option));
  return text;
}

std::vector<CommandText> textOfAll() {
  std::vector<CommandText> texts;
  for (const Command& command : commands()) {
    CLI::App part(command.brief, command.name);
    const Work work = command.prepare(part);  // holds what the options are bound to
    texts.push_back(textOf(part));
  }
  return texts;
}

std::vector<OptionText> optionsOf(const Topic& topic, const std::vector<CommandText>& commands) {
  std::vector<OptionText> found;
  for (const CommandText& command : commands) {
    for (const OptionText& option : command.options) {
      const auto isSame = [&](const OptionText& other) { return other.names == option.names; };
      if (!option.topic.empty() && option.topic == topic.title && std::none_of(found.begin(), found.end(), isSame))
        found.push_back(option);
    }
  }
  return found;
}

}  // namespace oxr::rec
