#include <unistd.h>

#include <iostream>

#include "oxrrec/program.hpp"
#include "records/program/signals.hpp"

int main(int count, char** arguments) {
  oxr::rec::setSignals();
  const oxr::rec::Console console{STDIN_FILENO, STDOUT_FILENO, std::cerr, isatty(STDERR_FILENO) == 1};
  return oxr::rec::run({arguments + (count > 0 ? 1 : 0), arguments + count}, console);
}
