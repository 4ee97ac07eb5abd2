#include <gtest/gtest.h>

#include <string>

#include "buffers/script.hpp"
#include "core/resumablerun.hpp"
#include "harness/headers.hpp"
#include "harness/rows.hpp"
#include "harness/tracing.hpp"

namespace oxr::test {
namespace {

constexpr int kShifted = 930;  // EBCDIC, double bytes between 0E and 0F

struct Message : ReadOnlyByteBuffer {
  explicit Message(std::string text) : bytes(std::move(text)) { create(bytes.data(), static_cast<int>(bytes.size())); }
  std::string bytes;
};

TEST(TextBufferReader, ReadsAndMovesAsScripted) {
  const struct {
    int ccsid;
    const char *hex, *script, *result;
  } cases[] = {
      // Characters. They move the current offset by their size, wherever they are read.
      {37, "C1C2", "c@1 c c c", "B/1@1 B/1@2 false/0@2 false/0@2"},
      {37, "C1C2C3C4", "v2 V1 s1 v2 c", "AB@2 C@2 C@3 false@3 D/1@4"},
      {1208, "", "c s1 r0,0 g0,0 m1", "false/0@0 false@0 @0 @0 false@0"},
      {1208, "C3A9 626364 E282", "C c@4 c@0 c@5 c c", "é/2@0 d/1@1 é/2@3 false/2@5 false/2@7 false/0@7"},
      {kShifted, "0E0F0E0F0E0F0E0F0E0F0E0F0E0F0E0F0E0F0E0F0E0F0E0F 0E4541 0F", "C c s1", "一/27@0 一/27@27 false@27"},
      // Steps over characters, from where the reader stands or from the start.
      {1208, "786162", "o1 m0 m-3 m2 m1", "true@1 false@1 false@1 true@3 false@3"},
      // Sections: what is missing, and what is cut off.
      {1208, "61", "s0@99 v0@99 S1@0 s1@1 v1@1 v1@-7", "@0 old@0 a@0 false@0 5502:1@0 5502:1@0"},
      {1208, "6162", "s3 v3 v2147483647 s2147483647 s2", "false@0 false@0 false@0 false@0 ab@2"},
      {kShifted, "0E45410F 0E45420F", "v2 s2", "5502:11@0 一二@7"},  // longer than twice the longest
      {1208, "62 00 C3", "s-1 c", "b@2 false/1@3"},                  // after the zero, not after what is cut off
      // Half a character, the other half first in what comes next, unless that is a character.
      {1200, "0061 D834 DD1E 0062 0063", "v2 s2 S1 s2 o2 c", "5502:11@0 a{d834}@6 {dd1e}@6 {dd1e}b@8 true@6 b/2@8"},
      // The state of the current offset stays with it, whatever is read elsewhere, looked at or refused in between.
      {kShifted, "C1 0E4541 4542 4543 0F C2 0E45", "s2 C V1@9 S1 C@9 S1 R9,10 S1 s9 v2@10 s-1 s2 c",
       "A一@4 二/2@4 B@4 二@4 B/1@4 二@4 B@4 二@4 false@4 5502:11@4 5502:11@4 二三@8 B/2@10"},
      // Ranges.
      {1208, "6162 C3A9 63", "r1,4 g1,2 r99,99 r4,3 r4,6 r-1,3 r-2147483648,2147483647 g5,5",
       "bé@4 b@2 @2 false@2 false@2 false@2 false@2 @5"},
  };
  for (const auto& [ccsid, hex, script, result] : cases)
    EXPECT_EQ(ran(ccsid, hex, script), result) << ccsid << ": " << script << " on " << hex;
}

TEST(TextBufferReader, FailuresTellWhatWasParsed) {
  const char kShort[] = "CPI Text Buffer Input Data Too Short";
  const struct {
    const char* script;
    Raised raised;
  } cases[] = {
      {"g3,2", conversionFailure(5502, {"Start offset greater than end offset. Start offset = 3 End offset = 2"})},
      {"g1,4", conversionFailure(5503, {kShort, "0xab62c3", "1", "4"})},
      {"g4,4", conversionFailure(5503, {kShort, "0xab62c3", "4", "4"})},
      {"g2,3", conversionFailure(5502, {"error convering to unicode", "11"})},
      {"s-1@3", conversionFailure(5503, {kShort, "0xab62c3", "3", ">= 1"})},
      {"v-1@3", conversionFailure(5502, {"Invalid offset: 3 for buffer length: 3"})},
      {"s-1@2", conversionFailure(5502, {"Conversion to unicode error. Error code: 11"})},
      {"v2@1", conversionFailure(5502, {"Conversion to unicode error. Error code: 11"})},
  };
  const Message message("\xAB\x62\xC3");
  for (const auto& [script, raised] : cases)
    EXPECT_EQ(raisedBy([&, text = script] { ScriptedReader(message, 1208).runOne(text); }), raised) << script;
  const Raised noEnd = conversionFailure(5504, {"CPI Text Buffer Null Terminator Not Found", "0xab62c3", "1"});
  for (const char* const script : {"s-1@1", "v-1@1"})
    EXPECT_EQ(raisedBy([&] { ScriptedReader(message, 37).runOne(script); }), noEnd);
}

TEST(TextBufferReader, Character32WritesTheLowHalfOnly) {
  const Message message("\xF0\x9D\x84\x9E\xF0");
  ScriptedReader reader(message, 1208);
  int unit = 0x12345678;
  EXPECT_FALSE(reader.getCharacter32(&unit, true, nullptr, 9));
  EXPECT_EQ(unit, 0x12345678);
  EXPECT_TRUE(reader.getCharacter32(&unit, true, nullptr, -1));
  EXPECT_EQ(unit, 0x1234D834);
  EXPECT_FALSE(reader.getCharacter32(&unit, true, nullptr, -1));
  EXPECT_EQ(unit, 0x12340000);  // cut off
}

TEST(TextBufferReader, ConvertsBytesFromAnywhere) {
  const ReadOnlyByteBuffer empty;
  for (const int ccsid : {37, 1208}) {
    ScriptedReader reader(empty, ccsid);
    unsigned short units[4] = {};
    const auto converted = [&](int room, const std::string& bytes, int size) {
      const Raised raised = raisedBy([&] { reader.toUnicode(units, &room, bytes.data(), size); });
      return raised.kind.empty() ? std::to_string(room) : raised.inserts.back();
    };
    EXPECT_EQ(converted(4, ccsid == 37 ? "\xC1\xC2" : "AB", 2), "2");
    EXPECT_TRUE(units[0] == 'A' && units[1] == 'B' && units[2] == 0);
    EXPECT_EQ(converted(2, "123", 3), "15");
    EXPECT_EQ(converted(2, "", -1), "1");
    EXPECT_EQ(converted(0, "", 0), "0");
    reader.converter = nullptr;
    EXPECT_EQ(converted(4, "", 0), "no valid converter");
  }
}

TEST(TextBufferReader, TakesWhatItIsGiven) {
  const Message shifted("\x0E\x45\x41\x45\x42\x0F"), letters("\xC1\xC2");
  CPUnicodeConverter shared(kShifted, eEndianBig);
  ScriptedReader first(shifted, 37, eEndianBig, &shared), second(letters, 37, eEndianBig, &shared);
  EXPECT_EQ(first.run("s1"), "一@3");
  EXPECT_EQ(second.run("s2"), "AB@2");  // whatever the converter went through before
  ScriptedReader reader(letters, 0, eEndianUnset);
  EXPECT_TRUE(reader.ccsid == 1208 && reader.endian == eEndianLittle && reader.TextBufferReader::getLength() == 2);
  EXPECT_TRUE(reader.offsetAvailable(1) && !reader.offsetAvailable(2) && !reader.offsetAvailable(-1));
  EXPECT_TRUE(reader.offsetAvailable(0, 1) && !reader.offsetAvailable(0, 2));
  EXPECT_TRUE(reader.setOffsetChars(1));
  reader.lockCurrentOffset();
  EXPECT_TRUE(reader.pointer->buffer()->isLocked(1));
  reader.unlockCurrentOffset();
  EXPECT_FALSE(reader.pointer->buffer()->isLocked(1));
  EXPECT_EQ((headerOfA<TextBufferReader>("QVDR", &letters, 37, eEndianBig, nullptr)), "QVDR 8 192 / 0OXR QVDR 8 192");
  EXPECT_EQ(tracedAt(4, [&] { reader.run("s0"); }),
            "> TextBufferReader::getPWFStringSection\n"
            "< TextBufferReader::getPWFStringSection: Zero target length, no work to do! Return: |true\n");
}

// A run whose bytes come two at a time, as from a host that is still receiving them.
struct ArrivingRun {
  std::string text;
  std::size_t shown, arrived = shown;

  std::span<const char> bytes() const { return {text.data(), shown}; }
  bool extend(int more, bool acceptShorter) {
    arrived = std::min(text.size(), arrived + 2);
    const std::size_t taken = std::min(static_cast<std::size_t>(more), arrived - shown);
    if (taken == 0 || (taken < static_cast<std::size_t>(more) && !acceptShorter)) return false;
    shown += taken;
    return true;
  }
};

TEST(ResumableRun, ReadsFromTheStartAgainAfterWhatItHas) {
  // A page in which "<" and what follows are one character and "!" is an error. The text, the bytes that are shown, the
  // units, the bytes of the last conversion, the status.
  for (const Row& c : rows("abc 3 abc 3 0; ab 2 ab 2 0; ab< 3 ab 3 11; ab<> 3 aba 1 0; a<> 2 a 2 11; a!bc 2 a! 2 12")) {
    ArrivingRun run{c[0], std::stoul(c[1])};
    int restarts = 0;
    const auto decode = [](std::span<const char> bytes, std::span<unsigned short> room) {
      core::Decoded pass;
      for (; pass.bytes < std::ssize(bytes) && pass.units < std::ssize(room); ++pass.bytes)
        if (const char byte = bytes[static_cast<std::size_t>(pass.bytes)]; byte != '<')
          room[static_cast<std::size_t>(pass.units++)] = static_cast<unsigned char>(byte);
      if (bytes.back() == '<') pass.status = U_TRUNCATED_CHAR_FOUND;
      if (bytes.back() == '!') pass.status = U_ILLEGAL_CHAR_FOUND;
      return pass;
    };
    unsigned short units[3];
    const core::Decoded done = core::readResumableRun(run, units, 1, 3, decode, [&] { ++restarts; });
    EXPECT_EQ(shown(KelWstring(units, static_cast<unsigned>(done.units))), c[2]);
    EXPECT_TRUE(std::to_string(done.bytes) == c[3] && std::to_string(done.status) == c[4]) << shown(c);
    EXPECT_EQ(restarts, c[0].find('<') != std::string::npos);
  }
}

}  // namespace
}  // namespace oxr::test
