#include "oxrrec/program.hpp"
#include "records/program/process.hpp"
#include "records/program/signals.hpp"

int main(int count, char** arguments) {
  oxr::rec::setSignals();
  return oxr::rec::runProcess(oxr::rec::kOxrrec, count, arguments);
}
