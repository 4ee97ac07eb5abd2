#include "records/program/help/model.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

namespace oxr::rec {

namespace {

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

CommandText textOf(const CLI::App& command) {
  CommandText text{command.get_name(), command.get_description(), command.get_footer(), {}};
  for (const CLI::Option* const option : command.get_options())
    text.options.push_back(textOf(*option));
  return text;
}

std::vector<CommandText> textOfAll(const Program& program) {
  std::vector<CommandText> texts;
  for (const Command& command : program.commands) {
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
