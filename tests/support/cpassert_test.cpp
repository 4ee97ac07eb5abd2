#include "cpassert.hpp"

#include <gtest/gtest.h>

#include "harness/tracing.hpp"

namespace oxr::test {
namespace {

void assertFails() {
  char expression[] = "count >= 0", file[] = "worker.cpp";
  cpAssert(expression, file, 4'000'000'000u);
}

TEST(CpAssert, ReportsByLevelAndReturns) {
  const std::string caller = "count >= 0|worker.cpp|4000000000\n";
  const std::string event = "cpAssert: CPAssertion failed|" + caller;
  const std::string call = "> cpAssert: " + caller + event + "< cpAssert\n";
  for (const int level : {-1, 0, 2, 3, 4})
    EXPECT_EQ(tracedAt(level, assertFails), level < 0 ? "" : level <= 2 ? event : call);
  EXPECT_EQ(tracedAt(0, [] { cpAssert(nullptr, nullptr, 0); }), "cpAssert: CPAssertion failed|||0\n");

  const auto sink = std::make_shared<RecordingLogSink>();
  const ScopedLogSink scope(sink);
  assertFails();
  const LogRecord& record = sink->records().at(0);
  EXPECT_EQ(record.file + ':' + std::to_string(record.line), "src/cpi/bsutils/cpassert:46");
  EXPECT_EQ(static_cast<unsigned>(record.messageNumber), 0xC000157Du);
}

}  // namespace
}  // namespace oxr::test
