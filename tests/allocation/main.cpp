// Lets the nth allocation of an operation fail, for n = 1, 2, 3 ... until the operation gets through, and counts what
// comes of it. A point is well where the operation raised std::bad_alloc, or a failure that says as much, or did
// without the memory and gave the right result; where nothing leaked; and where the same object gave the right result
// afterwards.
//
//   oxr_allocation_tests [--all] [--only TEXT] [--show]
//
// Without --all a sample of the points is tried, the same each time.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

#include "allocation/icufaults.hpp"
#include "fuzz/allocation/callsites.hpp"
#include "fuzz/allocation/operations.hpp"
#include "kelabend.hpp"

namespace oxr::test {
namespace {

struct Mode {
  const char* name;
  unsigned ways;
  bool lasting;
};
constexpr Mode kModes[] = {
    {"new", kNew, false},
    {"malloc", kMalloc | kIcu, false},
    {"ICU", kIcu, false},
    {"all from here on", kNew | kMalloc | kIcu, true},
};

struct Options {
  bool all = false;
  bool show = false;  // the calls that led to a failed point
  std::string only;
};

enum Verdict {
  kRaised,
  kDidWithout,
  kIcuCrash,
  kIcuMemory,
  kIcuLoss,
  kIcuLeak,
  kCrash,  // from here on it is ours
  kWrong,
  kBroken,
  kLeak,
  kVerdicts
};
constexpr const char* kVerdictNames[] = {"raised",       "did without",   "crashed in ICU", "remembered by ICU",
                                         "lost by ICU",  "leaked by ICU", "CRASHED",        "WRONG RESULT",
                                         "BROKEN AFTER", "LEAKED"};

// The failures that tell of no memory: the formatter or a converter could not be made, and what stands for any failure.
bool tellsOfMemory(const Operation& operation, std::string_view outcome) {
  if (outcome == "bad_alloc") return true;
  const auto begin = outcome.find("OXR");
  if (begin == outcome.npos) return false;
  return ("2112 2130 " + operation.stated).find(outcome.substr(begin + 3, 4)) != std::string::npos;
}

// What ICU did, if its own code is where that happened, and it is known to do so there.
Verdict verdictOf(IcuFault::Kind kind, const CallStack& stack, Verdict ifKnown, Verdict ifNot) {
  return isKnown(kind, siteOf(stack)) ? ifKnown : ifNot;
}

Verdict verdictOf(const Operation& operation, const Trial& trial, const Trial& expected) {
  const std::string_view outcome = trial.outcome.data(), repeated = trial.repeated.data();
  if (trial.signal != 0) return verdictOf(IcuFault::crashes, trial.crash, kIcuCrash, kCrash);
  const bool isRight = outcome == expected.outcome.data();
  if (!isRight && !tellsOfMemory(operation, outcome))
    return verdictOf(IcuFault::loses, trial.count.where, kIcuLoss, kWrong);
  if (repeated != expected.repeated.data()) {
    if (tellsOfMemory(operation, repeated))
      return verdictOf(IcuFault::remembers, trial.count.where, kIcuMemory, kBroken);
    return verdictOf(IcuFault::loses, trial.count.where, kIcuLoss, kBroken);
  }
  if (trial.left.others > expected.left.others)
    return verdictOf(IcuFault::loses, trial.count.where, kIcuLoss, kLeak);  // an object that is kept beside another
  if (trial.left.icu > expected.left.icu) return verdictOf(IcuFault::leaks, trial.count.where, kIcuLeak, kLeak);
  return isRight ? kDidWithout : kRaised;
}

class Report {
 public:
  explicit Report(const Options& options) : options_(options) {}

  void add(const Operation& operation, const Mode& mode, long point, const Trial& trial, const Trial& expected) {
    const Verdict verdict = verdictOf(operation, trial, expected);
    ++counts_[verdict];
    if (verdict >= kIcuCrash && verdict < kCrash)
      ++icuFaults_[std::string(kVerdictNames[verdict]) + ": " +
                   siteOf(verdict == kIcuCrash ? trial.crash : trial.count.where).entry];
    if (verdict >= kCrash) show(kVerdictNames[verdict], operation, mode, point, trial, expected);
  }

  int finish(std::size_t operations) const {
    long points = 0;
    for (const long count : counts_)
      points += count;
    std::printf("%zu operations, %ld points:", operations, points);
    for (std::size_t i = 0; i < kVerdicts; ++i)
      std::printf("%s %ld %s", i == 0 ? "" : ",", counts_[i], kVerdictNames[i]);
    std::printf("\n");
    for (const auto& [name, count] : icuFaults_)
      std::printf("  %5ld %s\n", count, name.c_str());
    return std::all_of(counts_ + kCrash, counts_ + kVerdicts, [](long count) { return count == 0; }) ? 0 : 1;
  }

 private:
  void show(const char* verdict, const Operation& operation, const Mode& mode, long point, const Trial& trial,
            const Trial& expected) const {
    std::printf("%s: %s, allocation %ld (%s)\n    first:    %s\n    then:     %s\n    expected: %s\n", verdict,
                operation.name.c_str(), point, mode.name, trial.outcome.data(), trial.repeated.data(),
                expected.outcome.data());
    std::printf("    left: %ld blocks of ICU and %ld others, expected %ld and %ld\n", trial.left.icu, trial.left.others,
                expected.left.icu, expected.left.others);
    show("the allocation", trial.count.where);
    if (trial.signal != 0) show(("signal " + std::to_string(trial.signal)).c_str(), trial.crash);
  }
  void show(const char* what, const CallStack& stack) const {
    const CallSite site = siteOf(stack);
    std::printf("    %s in %s, called as %s\n", what, site.innermost.c_str(), site.entry.c_str());
    if (options_.show) std::fputs(linesOf(stack).c_str(), stdout);
  }

  const Options& options_;
  long counts_[kVerdicts] = {};
  std::map<std::string, long> icuFaults_;
};

// Whether a point belongs to the sample: the first ones, and then fewer and fewer, at places that differ from operation
// to operation.
bool isInSample(std::size_t operation, long point) {
  constexpr long kStep = 41;
  return point == 1 || (point + static_cast<long>(operation)) % kStep == 0;
}

void tryAll(const Operations& operations, const Options& options, Report& report, Trial& trial, Trial& expected) {
  for (std::size_t i = 0; i < operations.size(); ++i)
    for (const Mode& mode : kModes) {
      runTrial(operations[i], {mode.ways, 0, false}, expected);
      if (expected.signal != 0 || std::strcmp(expected.outcome.data(), expected.repeated.data()) != 0) {
        report.add(operations[i], mode, 0, expected, expected);
        std::printf("BROKEN WITHOUT A FAILURE: %s\n", operations[i].name.c_str());
        continue;
      }
      if (!options.all && mode.ways == kIcu) continue;  // the same blocks are malloc's
      for (long point = 1; point <= expected.count.allocations; ++point) {
        if (!options.all && !isInSample(i, point)) continue;
        runTrial(operations[i], {mode.ways, point, mode.lasting}, trial);
        report.add(operations[i], mode, point, trial, expected);
      }
    }
}

Options optionsOf(int count, char** arguments) {
  Options options;
  for (int i = 1; i < count; ++i) {
    const std::string_view argument = arguments[i];
    if (argument == "--all")
      options.all = true;
    else if (argument == "--show")
      options.show = true;
    else if (argument == "--only" && i + 1 < count)
      options.only = arguments[++i];
    else
      std::exit((std::fputs("usage: oxr_allocation_tests [--all] [--only TEXT] [--show]\n", stderr), 2));
  }
  return options;
}

int run(int count, char** arguments) {
  const Options options = optionsOf(count, arguments);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);  // all points take minutes: what failed shows at once, in a file as well
  setenv("KELHOST_LOG", "/dev/null", 1);     // the host's own sink, with nobody to read it
  giveIcuItsMemory();
  CallStack().take();      // its first use needs memory
  KelAbend::newHandler();  // and so does the log's, and that of the failures' usual texts
  usualTexts();
  Operations operations;
  for (Operations (*family)() : {hostOperations, valueOperations, conversionOperations, dateTimeOperations,
                                 codePageOperations, bufferOperations, workerOperations})
    for (Operation& operation : family())
      if (operation.name.find(options.only) != std::string::npos) operations.push_back(std::move(operation));
  Report report(options);
  tryAll(operations, options, report, sharedTrial(), sharedTrial());
  return report.finish(operations.size());
}

}  // namespace
}  // namespace oxr::test

int main(int count, char** arguments) {
  return oxr::test::run(count, arguments);
}
