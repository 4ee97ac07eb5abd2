#include <gtest/gtest.h>

#include <string>

#include "buffers/script.hpp"
#include "core/resumablerun.hpp"
#include "harness/headers.hpp"
#include "harness/hex.hpp"
#include "harness/rows.hpp"
#include "harness/tracing.hpp"

namespace oxr::test {
namespace {

// What the naive reader of the checks does not see: texts of failures, numbers at the ends, what is left as it was.
TEST(TextBufferReader, ReadsAndMovesAsScripted) {
  // CCSID, bytes, each operation and what came of it.
  for (
      const Row& c : rows(
          // Wherever a character is read, the step goes from the current offset, by its size.
          "37 C1C2C3C4 c@1 B@1 c B@2 c@-7 false@2 c@0 A@3; 1208 C3A9626364 C é@0 c@4 d@1 c@0 é@3 o2 true@3 m-3 false@3;"
          "37 C1C2C3C4 v2 AB@2 V1 C@2 s1 C@3 v2 false@3 c D@4; "
          // Nothing is done and nothing is set; ends that no number holds.
          "1208 6162 s0@99 @0 v0@99 old@0 v2147483647 false@0 s2147483647 false@0 r-2147483648,2147483647 false@0;"
          // The state of the current offset stays with it, whatever is read elsewhere, looked at or refused in between.
          "930 C10E4541454245430FC20E45 s2 A一@4 C 二@4 V1@9 B@4 S1 二@4 C@9 B@4 S1 二@4 R9,10 B@4 S1 二@4 s9 false@4 "
          "v2@10 5502[Conversion_to_unicode_error._Error_code:_11]@4 s2 二三@8 c B@10;"
          // What the limit of a spawn cuts off is cut off, whatever follows.
          "930 0E454145420F s1 一@3 (1 4@3 c false@4 ) 6@4 c \uFF62@5;"
          "37 C1C2C3C4 o1 true@1 (2 3@1 "
          "(-2147483648 5502[Trying_to_spawn_buffer_that_extends_beyond_the_length_available_to_it.]@1 "
          "(2147483647 5502[Trying_to_spawn_buffer_that_extends_beyond_the_length_available_to_it.]@1 ) 4@1;"
          "1208 AB62C3 G3,2 5502[Start_offset_greater_than_end_offset._Start_offset_=_3_End_offset_=_2]@0 "
          "G1,4 5503[CPI_Text_Buffer_Input_Data_Too_Short][0xab62c3][1][4]@0 "
          "G4,4 5503[CPI_Text_Buffer_Input_Data_Too_Short][0xab62c3][4][4]@0 "
          "S-1@3 5503[CPI_Text_Buffer_Input_Data_Too_Short][0xab62c3][3][>=_1]@0 "
          "V-1@3 5502[Invalid_offset:_3_for_buffer_length:_3]@0 G2,3 5502[error_convering_to_unicode][11]@0 "
          "S-1@2 5502[Conversion_to_unicode_error._Error_code:_11]@0;"
          "37 AB62C3 s-1@1 5504[CPI_Text_Buffer_Null_Terminator_Not_Found][0xab62c3][1]@0 "
          "v-1@1 5504[CPI_Text_Buffer_Null_Terminator_Not_Found][0xab62c3][1]@0")) {
    const Message message(fromHex(c[1]));
    ScriptedReader reader(message, std::stoi(c[0]));
    for (std::size_t i = 2; i < c.size(); i += 2)
      EXPECT_EQ(reader.run(c[i]), c[i + 1]) << c[i] << " on " << c[1];
  }
}

TEST(TextBufferReader, Character32WritesTheLowHalfOnly) {
  const Message message("\xF0\x9D\x84\x9E\xF0");
  ScriptedReader reader(message, 1208);
  int unit = 0x12345678;
  EXPECT_TRUE(!reader.getCharacter32(&unit, true, nullptr, 9) && unit == 0x12345678) << unit;
  EXPECT_TRUE(reader.getCharacter32(&unit, true, nullptr, -1) && unit == 0x1234D834) << unit;
  EXPECT_TRUE(!reader.getCharacter32(&unit, true, nullptr, -1) && unit == 0x12340000) << unit;  // cut off
}

TEST(TextBufferReader, ConvertsBytesFromAnywhere) {
  const Message empty;
  ScriptedReader reader(empty, 37);
  unsigned short units[4] = {};
  const auto converted = [&](int room, const std::string& bytes, int size) {
    const Raised raised = raisedBy([&] { reader.toUnicode(units, &room, bytes.data(), size); });
    return raised.kind.empty() ? toUtf8(UnitView(units, static_cast<std::size_t>(room))) : raised.inserts.back();
  };
  EXPECT_EQ(converted(4, "\xC1\xC2", 2) + converted(2, "123", 3) + converted(2, "", -1) + converted(0, "", 0), "AB151");
  reader.converter = nullptr;
  EXPECT_EQ(converted(4, "", 0), "no valid converter");
}

TEST(TextBufferReader, TakesWhatItIsGiven) {
  const Message shifted("\x0E\x45\x41\x45\x42\x0F"), letters("\xC1\xC2");
  CPUnicodeConverter shared(930, eEndianBig);
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

TEST(SpawnableTextBufferReader, HoldsALockForEachSpawn) {
  KelBuffer host("\xC1\xC2\xC3\xC4", 4);
  const BitstreamBufferReader bytes(&host);
  const auto locks = [&] {
    std::string held;
    for (int offset = 0; offset < 4; ++offset)
      held += host.isLocked(offset) ? 'x' : '.';
    return held;
  };
  {
    // Reading moves the window, not the lock. The last is left with windows suspended: the locks stay with the host.
    const Row steps =
        rows("o1 .... (3 .x.. (3 .x.. o3 .x.. (1 .x.x m1 .x.x ) .x.. ) .x.. ) .... ) .... o2 .... (2 ..x. (1 ..x.")[0];
    ScriptedReader reader(bytes, 37);
    for (std::size_t i = 0; i < steps.size(); i += 2) {
      reader.run(steps[i]);
      EXPECT_EQ(locks(), steps[i + 1]) << i;
    }
  }
  EXPECT_EQ(locks(), "..x.");
}

TEST(SpawnableTextBufferReader, TracesItsLifeAboveTheDebugLevel) {
  const ReadOnlyByteBuffer bytes;
  const std::string name = "SpawnableTextBufferReader::";
  EXPECT_EQ(tracedAt(3, [&] { SpawnableTextBufferReader(&bytes, 37, eEndianBig, nullptr).spawnTextBufferReader(0); }),
            "> " + name + "SpawnableTextBufferReader\n< " + name + "SpawnableTextBufferReader\n> " + name +
                "~SpawnableTextBufferReader\n< " + name + "~SpawnableTextBufferReader\n");
  ScriptedReader reader(bytes, 37);
  EXPECT_EQ(tracedAt(4, [&] { reader.unspawnTextBufferReader(); }),
            "> " + name + "clearTextBufferReader\n< " + name + "clearTextBufferReader\n");
}

// A run whose bytes come two at a time, as from a host that is still receiving them.
struct ArrivingRun {
  std::string text;
  std::size_t shown, arrived = shown;

  std::span<const char> bytes() const { return {text.data(), shown}; }
  bool extend(int more, bool acceptShorter) {
    arrived = std::min(text.size(), arrived + 2);
    const std::size_t wanted = static_cast<std::size_t>(more), taken = std::min(wanted, arrived - shown);
    if (taken == 0 || (taken < wanted && !acceptShorter)) return false;
    return shown += taken, true;
  }
};

// A page in which "<" and what follows are one character and "!" is an error.
core::Decoded decodeArrived(std::span<const char> bytes, std::span<unsigned short> room) {
  core::Decoded pass;
  for (; pass.bytes < std::ssize(bytes) && pass.units < std::ssize(room); ++pass.bytes)
    if (const char byte = bytes[static_cast<std::size_t>(pass.bytes)]; byte != '<')
      room[static_cast<std::size_t>(pass.units++)] = static_cast<unsigned char>(byte);
  if (pass.bytes < std::ssize(bytes)) pass.status = U_BUFFER_OVERFLOW_ERROR;
  if (bytes.back() == '<') pass.status = U_TRUNCATED_CHAR_FOUND;
  if (bytes.back() == '!') pass.status = U_ILLEGAL_CHAR_FOUND;
  return pass;
}

TEST(ResumableRun, ReadsFromTheStartAgainAfterWhatItHas) {
  // The text, the bytes that are shown, the units, the bytes of the last conversion, the status, the restarts.
  for (const Row& c : rows("abc 3 abc 3 0 0; ab 2 ab 2 0 0; ab< 3 ab 3 11 1; ab<> 3 aba 1 0 1; a<> 2 a 2 11 1; "
                           "a!bc 2 a! 2 12 0; abcd 4 abc 3 0 0; abc< 4 abc 3 11 1; a<<<<<<<<<bc 10 aab 11 0 1")) {
    ArrivingRun run{c[0], std::stoul(c[1])};
    int restarts = 0;
    unsigned short units[3];
    const core::Decoded done = core::readResumableRun(run, units, 1, 3, decodeArrived, [&] { ++restarts; });
    EXPECT_EQ((Row{toUtf8(UnitView(units, static_cast<std::size_t>(done.units))), std::to_string(done.bytes),
                   std::to_string(done.status), std::to_string(restarts)}),
              Row(c.begin() + 2, c.end()))
        << c[0];
  }
}

}  // namespace
}  // namespace oxr::test
