#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "oxrrec/commands.hpp"

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

// A theme that options have in common.
struct Topic {
  const char* name;   // as "oxrrec help" takes it
  const char* title;  // as the options' groups are called
  const char* brief;
  const char* text;
};
std::span<const Topic> topics();

CommandText textOf(const CLI::App& command);
std::vector<CommandText> textOfAll();
// The options of a topic, of all commands, each once.
std::vector<OptionText> optionsOf(const Topic& topic, const std::vector<CommandText>& commands);

// For people: what `oxrrec --help`, `oxrrec COMMAND --help` and `oxrrec help TOPIC` write.
std::string overviewHelp(const std::vector<CommandText>& commands);
std::string commandHelp(const CommandText& command);
std::string topicHelp(const Topic& topic, const std::vector<CommandText>& commands);
// The man page oxrrec(1), and what bash is to load for completion.
std::string manPage(const std::vector<CommandText>& commands);
std::string bashCompletion(const std::vector<CommandText>& commands);

}  // namespace oxr::rec
