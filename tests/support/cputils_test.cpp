#include "cputils.hpp"

#include <gtest/gtest.h>

#include <locale>

namespace oxr::test {
namespace {

TEST(CpUtils, DumpsBytesAsLowerCaseDigits) {
  const unsigned char bytes[] = {0x00, 0xAB, 0x7F, 0xFF};
  EXPECT_EQ(CPUtils::binaryDump(bytes, 4) + ' ' + CPUtils::binaryDump(bytes, 1), "0x00ab7fff 0x00");
  EXPECT_EQ(CPUtils::binaryDump(nullptr, -1), "0x");
}

TEST(CpUtils, DumpsDateTimesFieldByField) {
  struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
  const PWFInt32 unset = static_cast<PWFInt32>(0x80000000u);
  EXPECT_EQ(CPUtils::pwfDateTimeDump({2024, 2, 29, 23, 59, 58, 123456, 6, nullptr, 1, 2}),
            "year = 2024, month = 2, day = 29, hour = 23, minute = 59, second = 58, subsecond = 123456, scale = 6, "
            "timezone = 0, localTimeZone = 1, timezone format control = 2");
  const auto* const zone = reinterpret_cast<const KelTimeZone*>(0x1A0);
  EXPECT_EQ(CPUtils::pwfDateTimeDump({unset, 1, 1, 0, 0, 0, 0, 0, zone, 0, 0}),
            "year = -2147483648, month = 1, day = 1, hour = 0, minute = 0, second = 0, subsecond = 0, scale = 0, "
            "timezone = 0x1a0, localTimeZone = 0, timezone format control = 0");
  std::locale::global(before);
}

}  // namespace
}  // namespace oxr::test
