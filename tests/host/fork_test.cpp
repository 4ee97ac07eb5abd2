#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <thread>
#include <vector>

#include "harness/converter.hpp"
#include "harness/newprocess.hpp"
#include "harness/text.hpp"
#include "host/process.hpp"
#include "kelconverter.hpp"
#include "keltimestampformatter.hpp"
#include "keltimezone.hpp"

namespace oxr::test {
namespace {

constexpr unsigned kPages[] = {37,  273, 437,  500,  819,  850,  852,  857,  866,  870,  930,  932,  935,  937,
                               939, 943, 1026, 1047, 1140, 1141, 1208, 1250, 1252, 1364, 1388, 1390, 1399, 5035};
constexpr const char* kZones[] = {"Europe/Berlin", "America/New_York", "Asia/Tokyo", "Asia/Kolkata", "Africa/Cairo"};

// Whatever takes a lock of the host's: what is not known yet, and what is. False if something comes out wrong.
bool useTheHost(std::size_t round) {
  const KelConverter* const page = KelConverter::createConverter(kPages[round % std::size(kPages)], 0, nullptr);
  const KelTimeZone* const zone = KelTimeZone::createTimeZone(k(kZones[round % std::size(kZones)]), nullptr);
  KelLog::writeExit("useTheHost", 1);
  return page->converter() != nullptr && zone != nullptr;
}

// Numbers and a date-time that a converter reads and writes for the first time, by ICU.
bool useTheLibrary() {
  DataCnv converter = converterFor(930);
  KelWstring infinite, small;
  converter.doubleToUString(HUGE_VAL, infinite, false);
  converter.doubleToUString(0.1, small, true);
  const double read = converter.PWFStringTodouble(u"-1.25E2"_k);
  const KelWstring pattern = u"EEEE, d MMMM yyyy HH:mm ww zzzz"_k,
                   text = u"Saturday, 3 February 2001 04:05 05 GMT+01:00"_k;
  const PWFDateTime time = converter.StrToDateTime(text.characters(), pattern.characters(), -1);
  const PWFData written = converter.StrFromDateTime(time, pattern.characters(), nullptr);
  return infinite == u"INF"_k && small == u"1.E-1"_k && read == -125 && text == KelWstring(written.getStringValue());
}

// A child of a process whose other threads are in the middle of something: 0 if it could do the same, else the number
// of the signal that ended it, or 1.
int fork(std::size_t round) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::alarm(20);  // ends one that waits for a lock that nobody holds
    bool isRight = true;
    for (std::size_t i = 0; i < std::size(kPages); ++i)
      isRight = useTheHost(round + i) && useTheLibrary() && isRight;
    ::_exit(isRight ? 0 : 1);
  }
  int status = 0;
  if (::waitpid(child, &status, 0) != child) return -1;
  return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

using Forks = OwnProcess;

// A process that has done little so far is the worst case: what is made on first use is made while it forks.
TEST_F(Forks, LeaveChildrenThatWorkWhileOtherThreadsAreAtWork) {
  const char* const asked = std::getenv("OXR_FORKS");
  const int processes = asked != nullptr ? std::atoi(asked) : 4;
  const ScopedEnvironment log("KELHOST_LOG", "none");
  for (int i = 0; i < processes; ++i)
    inANewProcess([] {
      std::atomic<bool> isOver = false;
      std::vector<std::thread> threads;
      for (std::size_t t = 0; t < 6; ++t)
        threads.emplace_back([&isOver, t] {
          for (std::size_t round = 5 * t; !isOver; ++round)
            EXPECT_TRUE(useTheHost(round) && useTheLibrary());
        });
      for (std::size_t round = 0; round < 20; ++round)
        EXPECT_EQ(fork(round), 0);
      isOver = true;
      for (std::thread& thread : threads)
        thread.join();
      EXPECT_EQ(fork(0), 0);
    });
}

}  // namespace
}  // namespace oxr::test
