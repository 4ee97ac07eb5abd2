#include "core/overpunch.hpp"

#include <gtest/gtest.h>

#include <string_view>

namespace oxr::core {
namespace {

constexpr int kRefused = 999;

// The byte of the plain digit, below 0 for a minus.
int digitOf(Overpunch code, int byte) {
  const SignByte read = readOverpunch(code, static_cast<std::uint8_t>(byte));
  return read.valid ? (read.negative ? -read.digit : read.digit) : kRefused;
}

// Every byte in every code, against the zones and letters as they are written down.
TEST(Overpunch, ReadsEveryByte) {
  constexpr std::string_view kPlus = "{ABCDEFGHI", kMinus = "}JKLMNOPQR";
  for (int byte = 0; byte < 256; ++byte) {
    const char zone = "0123456789ABCDEF"[byte / 16];
    const int low = byte % 16;
    EXPECT_EQ(digitOf(Overpunch::ebcdic, byte),
              zone == 'D' ? -0xF0 - low : (zone == 'C' || zone == 'F' ? 0xF0 + low : kRefused));
    EXPECT_EQ(digitOf(Overpunch::ascii, byte), zone == '7' ? -0x30 - low : byte);
    const auto plus = static_cast<int>(kPlus.find(static_cast<char>(byte)));  // -1 for none
    const auto minus = static_cast<int>(kMinus.find(static_cast<char>(byte)));
    EXPECT_EQ(digitOf(Overpunch::letters, byte), plus >= 0 ? '0' + plus : (minus >= 0 ? -'0' - minus : kRefused));
  }
}

}  // namespace
}  // namespace oxr::core
