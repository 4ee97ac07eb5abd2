#include "fuzz/allocation/trial.hpp"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <new>

#include "harness/outcome.hpp"
#include "pwfexception.hpp"

namespace oxr::test {
namespace {

constexpr unsigned kSecondsOfATrial = 30;

Trial* current = nullptr;

// A crash may have been one of the stack, and leaves no memory to rely on.
void tellCrash(int signal) {
  current->count = stopFailing();
  current->signal = signal;
  current->crash.take();
  _exit(2);
}

void catchCrashes() {
  alignas(16) static std::array<char, 1 << 16> stack;
  stack_t alternate{};
  alternate.ss_sp = stack.data();
  alternate.ss_size = stack.size();
  sigaltstack(&alternate, nullptr);
  struct sigaction action {};
  action.sa_handler = tellCrash;
  action.sa_flags = SA_ONSTACK | SA_NODEFER | static_cast<int>(SA_RESETHAND);
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGALRM})
    sigaction(signal, &action, nullptr);
}

std::string nameOfPresentException() {
  try {
    return "raised " + shown(raisedBy([] { throw; }));
  } catch (const std::bad_alloc&) {
    return "bad_alloc";
  } catch (const PWFException&) {
    return "PWFException";
  } catch (const std::exception& failure) {
    return std::string("std::exception ") + failure.what();
  } catch (...) {
    return "something unknown";
  }
}

void tellOutcome(const Call& call, std::array<char, 1000>& target) {
  std::string outcome;
  try {
    std::string text = call();
    const Unfailing unfailing;
    outcome = "= " + text;
  } catch (...) {
    stopFailing();
    outcome = nameOfPresentException();
  }
  const std::size_t length = std::min(outcome.size(), target.size() - 1);
  std::copy_n(outcome.data(), length, target.data());
  target[length] = 0;
}

void runInChild(const Operation& operation, const FailurePlan& plan, Trial& trial) {
  catchCrashes();
  close(STDERR_FILENO);  // where the C++ library tells of what ends the process
  alarm(kSecondsOfATrial);
  const LivingBlocks before = livingBlocks();
  {
    const Call call = operation.prepare();
    startFailing(plan);
    tellOutcome(call, trial.outcome);
    trial.count = stopFailing();
    tellOutcome(call, trial.repeated);
  }
  trial.left = {livingBlocks().icu - before.icu, livingBlocks().others - before.others};
}

}  // namespace

void runTrial(const Operation& operation, const FailurePlan& plan, Trial& trial) {
  trial = {};
  current = &trial;
  const pid_t child = fork();
  if (child == 0) {
    runInChild(operation, plan, trial);
    _exit(0);
  }
  int status = 0;
  while (child < 0 || waitpid(child, &status, 0) < 0)
    if (child < 0 || errno != EINTR) std::abort();
  if (trial.signal == 0 && !(WIFEXITED(status) && WEXITSTATUS(status) == 0)) trial.signal = SIGKILL;
}

Trial& sharedTrial() {
  void* const memory = mmap(nullptr, sizeof(Trial), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) std::abort();
  return *new (memory) Trial{};
}

}  // namespace oxr::test
