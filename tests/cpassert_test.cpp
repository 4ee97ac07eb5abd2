#include "cpassert.hpp"

#include <gtest/gtest.h>

#include "support/tracing.hpp"

namespace oxr::test {
namespace {

void assertFails() {
  char expression[] = "count >= 0", file[] = "worker.cpp";
  cpAssert(expression, file, 4'000'000'000u);
}

TEST(CpAssert, ReportsByLevelAndReturns) {
  const std::string caller = "count >= 0|worker.cpp|4000000000\n";
  const std::string event = "cpAssert: CPAssertion failed|" + caller;
  EXPECT_EQ(tracedAt(-1, assertFails), "");
  EXPECT_EQ(tracedAt(0, assertFails), event);
  EXPECT_EQ(tracedAt(2, assertFails), event);
  const std::string call = "> cpAssert: " + caller + event + "< cpAssert\n";
  for (const int level : {3, 4, 9})
    EXPECT_EQ(tracedAt(level, assertFails), call);
  EXPECT_EQ(tracedAt(0, [] { cpAssert(nullptr, nullptr, 0); }), "cpAssert: CPAssertion failed|||0\n");
}

TEST(CpAssert, TheEventNamesItsOwnPlace) {
  const auto sink = std::make_shared<RecordingLogSink>();
  {
    const ScopedLogSink scope(sink);
    assertFails();
  }
  ASSERT_EQ(sink->records().size(), 1u);
  const LogRecord& record = sink->records()[0];
  EXPECT_EQ(record.kind, RecordKind::event);
  EXPECT_EQ(record.file + ':' + std::to_string(record.line), "src/cpi/bsutils/cpassert:46");
  EXPECT_EQ(static_cast<unsigned>(record.messageNumber), 0xC000157Du);
}

}  // namespace
}  // namespace oxr::test
