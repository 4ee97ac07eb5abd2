#include "oxrmq/program.hpp"
#include "oxrmq/stop.hpp"
#include "records/program/process.hpp"
#include "records/program/signals.hpp"

int main(int count, char** arguments) {
  oxr::rec::setSignals();
  oxr::mq::Stop::listenToSignals();
  return oxr::rec::runProcess(oxr::mq::kOxrmq, count, arguments);
}
