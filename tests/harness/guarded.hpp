#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

#include "harness/failures.hpp"
#include "harness/hex.hpp"

namespace oxr::test {

// The `size` bytes that `write(unsigned char*)` leaves in a target, as hex digits; or, where it raises, the message and
// its inserts, "5507|Overflow|...". The target lies between guard bytes: one that changes fails the test, and so does a
// byte of the target after a failure.
template <class Write>
std::string bytesWritten(int size, Write write) {
  constexpr std::size_t kGuard = 16;
  std::array<unsigned char, 2 * kGuard + 64> area;
  area.fill(0xA5);
  const Raised raised = raisedBy([&] { write(area.data() + kGuard); });
  const std::size_t length = raised.inserts.empty() ? static_cast<std::size_t>(size) : 0;
  const auto isGuard = [](unsigned char byte) { return byte == 0xA5; };
  EXPECT_TRUE(std::all_of(area.begin(), area.begin() + kGuard, isGuard)) << "written in front of the target";
  EXPECT_TRUE(std::all_of(area.begin() + kGuard + length, area.end(), isGuard)) << "written behind the target";
  if (length != 0) return toHex({reinterpret_cast<const char*>(area.data()) + kGuard, length});
  std::string text = std::to_string(raised.number & 0xFFFF);
  for (const std::string& insert : raised.inserts)
    text += '|' + insert;
  return text;
}

}  // namespace oxr::test
