#include <sstream>

#include "records/program/help/model.hpp"

namespace oxr::rec {

namespace {

constexpr std::size_t kWidth = 80;

// The text in lines of the width, each indented; a line that is indented itself stays as it is.
std::string wrapped(const std::string& text, std::size_t indent) {
  std::string result;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(' ')) {
      result += std::string(indent, ' ') + line + '\n';
      continue;
    }
    std::istringstream words(line);
    std::string row(indent, ' ');
    for (std::string word; words >> word;) {
      if (row.size() > indent && row.size() + 1 + word.size() > kWidth) {
        result += row + '\n';
        row.assign(indent, ' ');
      }
      row += (row.size() > indent ? " " : "") + word;
    }
    result += row + '\n';
  }
  return result;
}

std::string entry(const OptionText& option) {
  std::string names;
  for (const std::string& name : option.names)
    names += (names.empty() ? "" : ", ") + name;
  if (!option.value.empty()) names += ' ' + option.value;
  if (option.isRequired && !option.isArgument) names += "   (required)";
  return "  " + names + '\n' + wrapped(option.help, 6);
}

std::string listed(const std::string& name, const std::string& brief) {
  return "  " + name + std::string(name.size() < 12 ? 12 - name.size() : 1, ' ') + brief + '\n';
}

}  // namespace

std::string sentence(std::string text) {
  text.front() = static_cast<char>(text.front() - 'a' + 'A');
  return text + '.';
}

std::string overviewHelp(const Program& program, const std::vector<CommandText>& commands) {
  const std::string name = program.name;
  std::string text = sentence(program.brief) + "\n\nUsage: " + name + " COMMAND [options] ...\n       " + name +
                     " help COMMAND|TOPIC\n       " + name + " --version\n\nCommands:\n";
  for (const CommandText& command : commands)
    text += listed(command.name, command.brief);
  text += "\nTopics:\n";
  for (const Topic& topic : program.topics)
    text += listed(topic.name, topic.brief);
  return text;
}

std::string commandHelp(const Program& program, const CommandText& command) {
  std::string usage = std::string("Usage: ") + program.name + ' ' + command.name + " [options]";
  std::string arguments, general;
  for (const OptionText& option : command.options) {
    if (option.isArgument) usage += ' ' + option.names.front();
    if (option.topic.empty()) (option.isArgument ? arguments : general) += entry(option);
  }
  std::string text = usage + "\n\n" + wrapped(sentence(command.brief), 0) + '\n' + arguments;
  for (const Topic& topic : program.topics) {
    const std::vector<OptionText> options = optionsOf(topic, {command});
    if (!options.empty()) text += std::string("\n") + topic.title + ":\n";
    for (const OptionText& option : options)
      text += entry(option);
  }
  text += "\nGeneral:\n" + general;
  return command.example.empty() ? text : text + '\n' + command.example + '\n';
}

std::string topicHelp(const Topic& topic, const std::vector<CommandText>& commands) {
  std::string text = wrapped(topic.text, 0);
  for (const OptionText& option : optionsOf(topic, commands))
    text += '\n' + entry(option);
  return text;
}

}  // namespace oxr::rec
