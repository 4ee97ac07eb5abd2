#pragma once

#include <functional>
#include <span>

#include "oxrrec/console.hpp"

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

// All commands, in the order of the help.
std::span<const Command> commands();

}  // namespace oxr::rec
