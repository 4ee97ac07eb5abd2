#include "core/overpunch.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string_view>

namespace oxr::core {
namespace {

// Every byte in every code, against the letters and zones as they are written down.
TEST(Overpunch, ReadsEveryByte) {
  constexpr std::string_view kPositive = "{ABCDEFGHI", kNegative = "}JKLMNOPQR";
  for (unsigned value = 0; value < 256; ++value) {
    SCOPED_TRACE(value);
    const auto byte = static_cast<std::uint8_t>(value);
    const char zone = "0123456789ABCDEF"[value / 16];

    const SignByte ebcdic = readOverpunch(Overpunch::ebcdic, byte);
    EXPECT_EQ(ebcdic.valid, std::strchr("CDF", zone) != nullptr);
    EXPECT_EQ(ebcdic.negative, zone == 'D');
    if (ebcdic.valid) {
      EXPECT_EQ(ebcdic.digit, 0xF0 + value % 16);
    }

    const SignByte ascii = readOverpunch(Overpunch::ascii, byte);
    EXPECT_TRUE(ascii.valid);
    EXPECT_EQ(ascii.negative, zone == '7');
    EXPECT_EQ(ascii.digit, zone == '7' ? 0x30 + value % 16 : value);

    const SignByte letters = readOverpunch(Overpunch::letters, byte);
    const std::size_t positive = kPositive.find(static_cast<char>(byte));
    const std::size_t negative = kNegative.find(static_cast<char>(byte));
    EXPECT_EQ(letters.valid, positive != kPositive.npos || negative != kNegative.npos);
    EXPECT_EQ(letters.negative, negative != kNegative.npos);
    if (letters.valid) {
      EXPECT_EQ(letters.digit, '0' + (letters.negative ? negative : positive));
    }
  }
}

}  // namespace
}  // namespace oxr::core
