#pragma once

#include <functional>
#include <memory>
#include <span>

#include "records/program/console.hpp"

// A program as data: its commands, and the topics that their options belong to. Command line, help, man page and
// completion are made of that.

namespace CLI {
class App;
}

namespace oxr::rec {

// What a command does once its options are read; the result is the exit code. Whatever it throws is told and counts as
// kFailed.
using Work = std::function<int(const Console&)>;

struct Command {
  const char* name;
  const char* brief;  // what it does, in a line of the help
  // Adds the command's options to its part of the command line. The work that it gives back has them.
  Work (*prepare)(CLI::App& command);
};

// A command is a struct of options, a function that adds them, and one that works by them.
template <class Options, void (*kAdd)(CLI::App&, Options&), int (*kRun)(const Options&, const Console&)>
Work prepare(CLI::App& command) {
  const auto options = std::make_shared<Options>();
  kAdd(command, *options);
  return [options](const Console& console) { return kRun(*options, console); };
}

// A theme that options have in common.
struct Topic {
  const char* name;   // as "oxrrec help" takes it
  const char* title;  // as the options' groups are called
  const char* brief;
  const char* text;
};

struct Program {
  const char* name;                   // as it is called, and as its messages begin
  const char* brief;                  // what it does, in a sentence without its capital and its full stop
  const char* version;                // "1.0.0"
  std::span<const Command> commands;  // in the order of the help
  std::span<const Topic> topics;
};

// Runs the program. `arguments` are those without its name; the result is the exit code.
int runCommand(const Program& program, std::span<const char* const> arguments, const Console& console);

}  // namespace oxr::rec
