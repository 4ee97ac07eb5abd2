// Which conversions are served without ICU. That both ways give the same is the business of the checks in fuzz/.

#include <gtest/gtest.h>

#include <string>

#include "buffers/script.hpp"
#include "growingbytebuffer.hpp"
#include "harness/hex.hpp"
#include "harness/rows.hpp"
#include "harness/tracing.hpp"
#include "harness/ways.hpp"
#include "textbffrwriter.hpp"

namespace oxr::test {
namespace {

// How often each member went the general way: toUnicode, into `room` units, and fromUnicode, into `room` bytes.
std::uint64_t decodings(CPUnicodeConverter& page, const std::string& bytes, std::size_t room) {
  unsigned short units[16], *target = units;
  const char* source = bytes.data();
  UErrorCode status = U_ZERO_ERROR;
  return generalWays(
      [&] { page.toUnicode(target, units + room, source, source + bytes.size(), nullptr, true, status); });
}
std::uint64_t encodings(CPUnicodeConverter& page, const KelWstring& text, std::size_t room) {
  char bytes[16], *target = bytes;
  const unsigned short* source = text.characters();
  UErrorCode status = U_ZERO_ERROR;
  return generalWays(
      [&] { page.fromUnicode(target, bytes + room, source, source + text.length(), nullptr, true, status); });
}

TEST(CodePageWays, FormsServeAllButWhatTheyDoNotKnow) {
  // CCSID, byte order, bytes, room in units and the general ways into it; their text, room in bytes, the general ways.
  for (const Row& c : rows("37 2 C1C2 2 0 AB 2 0; 37 2 C1C2 1 0 AB 1 0; 37 2 C1C2 0 1 AB 0 1; 37 2 '' 2 1 '' 2 1; "
                           "37 2 C13F 2 0 A\u4E2D 9 1; 1208 2 41C3A9 2 0 A\u00E9 3 0; 1208 2 41C3A9 1 0 A\u00E9 2 1; "
                           "1208 2 41C3 2 1 < 9 1; 1208 2 E09F80 2 1 \u0800 3 0; 1208 2 EDA080 2 1 \uFFFF 3 0; "
                           "1208 2 F08F8080 2 1 < 9 1; 1208 2 F4908080 2 1 < 9 1;  1208 2 F09D849E 2 0 \U0001D11E 4 0; "
                           "1208 2 F09D849E 1 1 \U0001D11E 3 1; 1200 2 0041D834DD1E 3 0 A\U0001D11E 6 0; "
                           "1200 2 0041D834DD1E 2 1 A\U0001D11E 4 1; 1200 1 410034D81EDD 3 0 A\U0001D11E 6 0; "
                           "1200 1 41001EDD 3 1 < 6 1; 1200 2 004100 2 1 A 1 1; 930 2 C1 1 1 A 1 1")) {
    SCOPED_TRACE(shown(c));
    CPUnicodeConverter page(std::stoi(c[0]), EEndian{std::stoi(c[1])});
    EXPECT_EQ(decodings(page, fromHex(c[2]), std::stoul(c[3])), std::stoul(c[4]));
    EXPECT_EQ(encodings(page, c[5] == "<" ? KelWstring(u"\xD83D"_k) : k(c[5]), std::stoul(c[6])), std::stoul(c[7]));
  }
}

TEST(CodePageWays, WhatIsHeldBackComesByTheGeneralWay) {
  CPUnicodeConverter page(1208, eEndianBig);
  EXPECT_EQ(decodings(page, "\U0001D11E", 1), 1);  // no room for the other half
  EXPECT_EQ(decodings(page, "A", 9) + decodings(page, "A", 9), 1);
  EXPECT_EQ(encodings(page, u"\u20AC"_k, 2), 1);
  EXPECT_EQ(encodings(page, u"A"_k, 9) + encodings(page, u"A"_k, 9), 1);
}

TEST(CodePageWays, ReadersAndWritersAreServed) {
  // CCSID, what is written, the general ways of writing it and of each operation of a reader. A first character moves
  // the window; without a form each guard on the way to ICU counts.
  for (const Row& c :
       rows("37 ABCDEF 0 c 1 C 0 s2 0 v2 0 r0,3 0 g0,3 0 s-1@0 0; 1208 ABCDEF 0 c 1 C 0 s2 0 v2 0 g0,3 0; "
            "1208 ABCD\u00E9F 0 c 1 C 0 s2 0 r0,3 0 g0,3 0 m2 0 s-1@0 0; 1200 ABCDEF 0 s2 0 v2 0 r0,4 0 g0,4 0; "
            "930 ABCDEF 2 c 3 s2 3 v2 2 r0,3 2")) {
    SCOPED_TRACE(shown(c));
    GrowingByteBuffer message;
    TextBufferWriter writer(&message, std::stoi(c[0]), eEndianBig);
    const KelWstring text = k(c[1]);
    const int length = static_cast<int>(text.length());
    EXPECT_EQ(generalWays([&] { writer.appendStr(text.characters(), length); }), std::stoul(c[2]));
    message.appendBytes("\0\0", 2);
    ScriptedReader reader(message, std::stoi(c[0]));
    for (std::size_t i = 3; i < c.size(); i += 2)
      EXPECT_EQ(generalWays([&] { reader.run(c[i]); }), std::stoul(c[i + 1])) << c[i];
    tracedAt(4, [&] {
      EXPECT_NE(generalWays([&] { writer.appendStr(text.characters(), length); }), 0);
      for (std::size_t i = 3; i < c.size(); i += 2)
        EXPECT_NE(generalWays([&] { ScriptedReader(message, std::stoi(c[0])).run(c[i]); }), 0) << c[i];
    });
  }
}

}  // namespace
}  // namespace oxr::test
