#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "records/program/program.hpp"

// What help, man page and completion tell is taken from the options themselves, as the commands add them.

namespace oxr::rec {

struct OptionText {
  std::vector<std::string> names;    // "-o", "--output"; of an argument its name alone
  std::string value;                 // "FILE", "big|little"; empty for a flag
  std::vector<std::string> words{};  // those to choose from
  std::string help;
  std::string topic;  // the title of one; empty for an argument and for --help
  bool isArgument = false;
  bool isRequired = false;
};

struct CommandText {
  std::string name;
  std::string brief;
  std::string example;
  std::vector<OptionText> options;
};

CommandText textOf(const CLI::App& command);
std::vector<CommandText> textOfAll(const Program& program);
// The options of a topic, of all commands, each once.
std::vector<OptionText> optionsOf(const Topic& topic, const std::vector<CommandText>& commands);

// For people: what `--help`, `COMMAND --help` and `help TOPIC` write. `commands` are the texts of all.
std::string overviewHelp(const Program& program, const std::vector<CommandText>& commands);
std::string commandHelp(const Program& program, const CommandText& command);
std::string topicHelp(const Topic& topic, const std::vector<CommandText>& commands);
// The man page, and what bash is to load for completion.
std::string manPage(const Program& program, const std::vector<CommandText>& commands);
std::string bashCompletion(const Program& program, const std::vector<CommandText>& commands);
// "Text." of "text": a brief as a sentence.
std::string sentence(std::string text);

}  // namespace oxr::rec
