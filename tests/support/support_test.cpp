#include <gtest/gtest.h>

#include <locale>

#include "cpassert.hpp"
#include "cputils.hpp"
#include "harness/tracing.hpp"

namespace oxr::test {
namespace {

TEST(CpAssert, ReportsByLevelAndReturns) {
  char expression[] = "count >= 0", file[] = "worker.cpp";
  const std::string caller = "count >= 0|worker.cpp|4000000000\n";
  const std::string event = "cpAssert: CPAssertion failed|" + caller;
  const std::string call = "> cpAssert: " + caller + event + "< cpAssert\n";
  for (const int level : {-1, 0, 2, 3, 4})
    EXPECT_EQ(tracedAt(level, [&] { cpAssert(expression, file, 4'000'000'000u); }), level < 0    ? ""
                                                                                    : level <= 2 ? event
                                                                                                 : call);

  const auto sink = std::make_shared<RecordingLogSink>();
  const ScopedLogSink scope(sink);
  cpAssert(nullptr, nullptr, 0);
  const LogRecord& record = sink->records().at(0);
  EXPECT_EQ(record.inserts, (std::vector<std::string>{"CPAssertion failed", "", "", "0"}));
  EXPECT_EQ(record.file + ':' + std::to_string(record.line), "src/cpi/bsutils/cpassert:46");
  EXPECT_EQ(static_cast<unsigned>(record.messageNumber), 0xC000157Du);
}

TEST(CpUtils, DumpsBytesAndDateTimes) {
  const unsigned char bytes[] = {0x00, 0xAB, 0x7F, 0xF0};
  EXPECT_EQ(CPUtils::binaryDump(bytes, 4) + ' ' + CPUtils::binaryDump(nullptr, -1), "0x00ab7ff0 0x");
  struct Grouping : std::numpunct<char> {
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
  EXPECT_EQ(CPUtils::pwfDateTimeDump({2024, 2, 29, 23, 59, 58, 123456, 6, nullptr, 1, -2147483647 - 1}),
            "year = 2024, month = 2, day = 29, hour = 23, minute = 59, second = 58, subsecond = 123456, scale = 6, "
            "timezone = 0, localTimeZone = 1, timezone format control = -2147483648");
  std::locale::global(before);
}

}  // namespace
}  // namespace oxr::test
