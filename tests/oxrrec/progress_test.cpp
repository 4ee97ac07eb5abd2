#include "oxrrec/progress.hpp"

#include <gtest/gtest.h>

#include <sstream>

namespace oxr::rec::test {
namespace {

TEST(Progress, TellsRateAndTimeLeft) {
  const struct {
    std::uint64_t done;
    std::optional<std::uint64_t> total;
    double seconds;
    const char* text;
  } cases[] = {
      {530'000'000, 1'180'000'000, 4, "44 %  530 of 1180 MB  132 MB/s  0:05 left"},
      {1'000'000, 900'000'000, 1, "0 %  1 of 900 MB  1 MB/s  14:59 left"},
      {20'000'000, 10'000'000, 1, "100 %  20 of 10 MB  20 MB/s  0:00 left"},  // the file grew
      {0, 10'000'000, 1, "0 %  0 of 10 MB  0 MB/s"},
      {20'000'000, std::nullopt, 2, "20 MB  10 MB/s"},
      {20'000'000, 0, 0, "20 MB  0 MB/s"},
  };
  for (const auto& [done, total, seconds, text] : cases)
    EXPECT_EQ(progressText(done, total, seconds), text);
}

TEST(Progress, IsWipedAndOnlyShownWhereItIsWanted) {
  for (const bool isOn : {false, true}) {
    std::ostringstream terminal;
    {
      Progress progress(terminal, isOn, 1000, std::chrono::milliseconds{0});
      for (int i = 0; i < 256; ++i)
        progress.update(500);
    }
    const std::string text = terminal.str();
    EXPECT_EQ(text.starts_with("\r\x1b[K50 %"), isOn) << text;
    EXPECT_EQ(text.ends_with("left\r\x1b[K"), isOn) << text;
  }
}

}  // namespace
}  // namespace oxr::rec::test
