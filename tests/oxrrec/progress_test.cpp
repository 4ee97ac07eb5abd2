#include "oxrrec/progress.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <tuple>

namespace oxr::rec::test {
namespace {

TEST(Progress, TellsRateAndTimeLeft) {
  const std::tuple<std::uint64_t, std::optional<std::uint64_t>, double, const char*> cases[] = {
      // bytes done, of a total, seconds
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
    std::optional<Progress> progress(std::in_place, terminal, isOn, 1000, std::chrono::milliseconds{0});
    for (int i = 0; i < 256; ++i)
      progress->update(500);
    progress.reset();
    const std::string text = terminal.str();
    EXPECT_EQ(text.starts_with("\r\x1b[K50 %"), isOn) << text;
    EXPECT_EQ(text.ends_with("left\r\x1b[K"), isOn) << text;
  }
}

}  // namespace
}  // namespace oxr::rec::test
