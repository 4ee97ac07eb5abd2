#include "records/program/signals.hpp"

#include <csignal>

#include "records/framing/temporaryfile.hpp"

namespace oxr::rec {

namespace {

constexpr int kIgnored[] = {SIGPIPE, SIGXFSZ};
constexpr int kEnding[] = {SIGHUP, SIGINT, SIGTERM};

// The signal comes again once this is left, and then does what it does by itself.
void end(int signal) {
  removeTemporaryFiles();
  ::raise(signal);
}

}  // namespace

void setSignals() {
  for (const int signal : kIgnored)
    std::signal(signal, SIG_IGN);
  for (const int signal : kEnding) {
    struct sigaction action {};
    if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;
    action = {};
    action.sa_handler = end;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    ::sigaction(signal, &action, nullptr);
  }
}

}  // namespace oxr::rec
