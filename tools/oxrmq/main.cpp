#include <unistd.h>

#include <iostream>

#include "oxrmq/program.hpp"
#include "oxrmq/stop.hpp"
#include "records/program/signals.hpp"

int main(int count, char** arguments) {
  oxr::rec::setSignals();
  oxr::mq::Stop::listenToSignals();
  const oxr::rec::Console console{STDIN_FILENO, STDOUT_FILENO, std::cerr, isatty(STDERR_FILENO) == 1};
  return oxr::rec::runCommand(oxr::mq::kOxrmq, {arguments + (count > 0 ? 1 : 0), arguments + count}, console);
}
