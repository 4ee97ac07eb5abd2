#include <gtest/gtest.h>

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
  for (const auto& [level, expected] : {std::pair<int, std::string>(-1, ""), {0, event}, {2, event}, {3, call}})
    EXPECT_EQ(tracedAt(level, [&] { cpAssert(expression, file, 4'000'000'000u); }), expected);

  const auto sink = std::make_shared<RecordingLogSink>();
  const ScopedLogSink scope(sink);
  cpAssert(nullptr, nullptr, 0);
  const LogRecord& record = sink->records().at(0);
  EXPECT_EQ(record.inserts, (std::vector<std::string>{"CPAssertion failed", "", "", "0"}));
  EXPECT_TRUE(record.file == "src/cpi/bsutils/cpassert" && record.line == 46);
  EXPECT_EQ(record.messageNumber, static_cast<int>(0xC000157D));
}

TEST(CpUtils, DumpsBytesAndDateTimes) {
  const unsigned char bytes[] = {0x0A, 0xB0};
  EXPECT_EQ(CPUtils::binaryDump(bytes, 2) + ' ' + CPUtils::binaryDump(nullptr, -1), "0x0ab0 0x");
  EXPECT_EQ(CPUtils::pwfDateTimeDump({2024, 2, 29, 23, 59, 58, 123456, 6, nullptr, 1, -2147483647 - 1}),
            "year = 2024, month = 2, day = 29, hour = 23, minute = 59, second = 58, subsecond = 123456, scale = 6, "
            "timezone = 0, localTimeZone = 1, timezone format control = -2147483648");
}

}  // namespace
}  // namespace oxr::test
