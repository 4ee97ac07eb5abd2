#include <cctype>

#include "records/program/help/model.hpp"

namespace oxr::rec {

namespace {

// Text as the formatter of man pages takes it.
std::string roff(const std::string& text) {
  std::string safe;
  for (const char c : text) {
    if (c == '\\')
      safe += "\\e";
    else if (c == '-')
      safe += "\\-";
    else if ((c == '.' || c == '\'') && (safe.empty() || safe.back() == '\n'))
      safe += std::string("\\&") + c;
    else
      safe += c;
  }
  return safe;
}

std::string entry(const OptionText& option) {
  std::string names;
  for (const std::string& name : option.names)
    names += (names.empty() ? "" : ", ") + ("\\fB" + roff(name) + "\\fR");
  if (!option.value.empty()) names += " \\fI" + roff(option.value) + "\\fR";
  return ".TP\n" + names + '\n' + roff(option.help) + (option.isRequired ? ". Required." : "") + '\n';
}

}  // namespace

std::string manPage(const Program& program, const std::vector<CommandText>& commands) {
  const std::string name = program.name;
  std::string title = name;
  for (char& c : title)
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  std::string page = ".TH " + title + " 1\n.SH NAME\n" + name + " \\- " + roff(program.brief) + "\n.SH SYNOPSIS\n.B " +
                     name + "\n.I COMMAND\n.RI [ options ]\n.I ...\n.br\n.B " + name +
                     " help\n.I COMMAND\n|\n.I TOPIC\n.SH COMMANDS\n";
  for (const CommandText& command : commands) {
    std::string arguments;
    for (const OptionText& option : command.options)
      if (option.isArgument) arguments += ' ' + option.names.front();
    page += ".TP\n\\fB" + command.name + "\\fR\\fI" + roff(arguments) + "\\fR\n" + roff(command.brief) + '\n';
  }
  page += ".SH OPTIONS\nA command takes those that its\n.B \\-\\-help\nlists.\n";
  for (const Topic& topic : program.topics) {
    const std::vector<OptionText> options = optionsOf(topic, commands);
    if (options.empty()) continue;
    page += std::string(".SS ") + topic.title + '\n' + roff(topic.text) + '\n';
    for (const OptionText& option : options)
      page += entry(option);
  }
  for (const Topic& topic : program.topics)
    if (topic.title[0] == '\0') page += ".SH EXIT STATUS\n" + roff(topic.text) + '\n';
  return page;
}

}  // namespace oxr::rec
