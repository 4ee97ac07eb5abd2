#include <unistd.h>

#include <csignal>
#include <iostream>

#include "oxrrec/program.hpp"

int main(int count, char** arguments) {
  // A reader that goes away shows as a failed write, which is told like any other.
  std::signal(SIGPIPE, SIG_IGN);
  const oxr::rec::Console console{STDIN_FILENO, STDOUT_FILENO, std::cerr, isatty(STDERR_FILENO) == 1};
  return oxr::rec::run({arguments + (count > 0 ? 1 : 0), arguments + count}, console);
}
