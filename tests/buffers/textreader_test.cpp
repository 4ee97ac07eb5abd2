#include <gtest/gtest.h>

#include <string>

#include "buffers/script.hpp"
#include "core/resumablerun.hpp"
#include "harness/failures.hpp"
#include "harness/headers.hpp"
#include "harness/hex.hpp"
#include "harness/rows.hpp"
#include "harness/tracing.hpp"

namespace oxr::test {
namespace {

constexpr int kShifted = 930;  // EBCDIC, double bytes between 0E and 0F

constexpr char kLetters[] = "C1C2C3C4C5C6C7C8C9D1";

// The rest is the check's business, which runs every operation beside a naive reader.
TEST(TextBufferReader, ReadsAndMovesAsScripted) {
  const struct {
    int ccsid;
    const char *hex, *script, *result;
  } cases[] = {
      {37, "C1C2C3C4", "c@1 c c@-7", "B@1 B@2 false@2"},  // wherever it reads, from the current offset by its size
      {37, "C1C2C3C4", "v2 V1 s1 v2 c", "AB@2 C@2 C@3 false@3 D@4"},
      {1208, "C3A9 626364", "C c@4 c@0 o2 m-3", "é@0 d@1 é@3 true@3 false@3"},
      // Nothing is done and nothing is set; an end that no number holds; an end that is cut off.
      {1208, "6162", "s0@99 v0@99 v2147483647 s2147483647 v-2147483648@-7", "@0 old@0 false@0 false@0 5502@0"},
      {1208, "62 00 C3", "s-1 c r-2147483648,2147483647", "b@2 false@3 false@3"},
      // The state of the current offset stays with it, whatever is read elsewhere, looked at or refused in between.
      {kShifted, "C1 0E4541 4542 4543 0F C2 0E45", "s2 C V1@9 S1 C@9 S1 R9,10 S1 s9 v2@10 s-1 s2 c",
       "A一@4 二@4 B@4 二@4 B@4 二@4 B@4 二@4 false@4 5502@4 5502@4 二三@8 B@10"},
      // A spawn beyond what is there, or beyond an outer one, is refused; the lengths are those of the text.
      {37, kLetters, "o1 (-2147483648 (2147483647 (10 (5 (6 s2 ) ) c )",
       "true@1 5502@1 5502@1 5502@1 6@1 5502@1 BC@3 10@3 10@3 D@4 10@4"},
      {kShifted, "0E4541 4542 0F", "s1 (1 c ) c", "一@3 4@3 false@4 6@4 \uFF62@5"},  // cut off, whatever follows
  };
  for (const auto& [ccsid, hex, script, result] : cases)
    EXPECT_EQ(ScriptedReader(BytesToRead(fromHex(hex)), ccsid).run(script), result) << script << " on " << hex;
}

TEST(TextBufferReader, FailuresTellWhatWasParsed) {
  const BytesToRead message("\xAB\x62\xC3");
  // CCSID, operation, number, inserts.
  for (const Row& c : rows("1208 g3,2 5502 Start_offset_greater_than_end_offset._Start_offset_=_3_End_offset_=_2;"
                           "1208 g1,4 5503 CPI_Text_Buffer_Input_Data_Too_Short 0xab62c3 1 4;"
                           "1208 g4,4 5503 CPI_Text_Buffer_Input_Data_Too_Short 0xab62c3 4 4;"
                           "1208 s-1@3 5503 CPI_Text_Buffer_Input_Data_Too_Short 0xab62c3 3 >=_1;"
                           "1208 v-1@3 5502 Invalid_offset:_3_for_buffer_length:_3;"
                           "1208 s-1@2 5502 Conversion_to_unicode_error._Error_code:_11;"
                           "1208 v2@1 5502 Conversion_to_unicode_error._Error_code:_11;"
                           "1208 g2,3 5502 error_convering_to_unicode 11;"
                           "37 s-1@1 5504 CPI_Text_Buffer_Null_Terminator_Not_Found 0xab62c3 1;"
                           "37 v-1@1 5504 CPI_Text_Buffer_Null_Terminator_Not_Found 0xab62c3 1"))
    EXPECT_EQ(raisedBy([&] { ScriptedReader(message, std::stoi(c[0])).runOne(c[1]); }),
              conversionFailure(std::stoi(c[2]), {c.begin() + 3, c.end()}))
        << c[1];
}

TEST(TextBufferReader, Character32WritesTheLowHalfOnly) {
  const BytesToRead message("\xF0\x9D\x84\x9E\xF0");
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
      return raised.kind.empty() ? std::to_string(room) + toUtf8(UnitView(units, static_cast<std::size_t>(room)))
                                 : raised.inserts.back();
    };
    EXPECT_EQ(converted(4, ccsid == 37 ? "\xC1\xC2" : "AB", 2), "2AB");
    EXPECT_EQ(converted(2, "123", 3) + ' ' + converted(2, "", -1), "15 1");
    EXPECT_EQ(converted(0, "", 0), "0");
    reader.converter = nullptr;
    EXPECT_EQ(converted(4, "", 0), "no valid converter");
  }
}

TEST(TextBufferReader, TakesWhatItIsGiven) {
  const BytesToRead shifted("\x0E\x45\x41\x45\x42\x0F"), letters("\xC1\xC2");
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
    ScriptedReader reader(bytes, 37);
    // Reading moves the window, not the lock. The last is left with windows suspended: the locks stay with the host.
    for (const auto& [script, held] :
         {std::pair("o1 (3 (3 o3 (1 m1", ".x.x"), std::pair(")", ".x.."), std::pair(")", ".x.."),
          std::pair(") )", "...."), std::pair("o2 (2 (1", "..x.")}) {
      reader.run(script);
      EXPECT_EQ(locks(), held) << script;
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
  if (bytes.back() == '<') pass.status = U_TRUNCATED_CHAR_FOUND;
  if (bytes.back() == '!') pass.status = U_ILLEGAL_CHAR_FOUND;
  return pass;
}

TEST(ResumableRun, ReadsFromTheStartAgainAfterWhatItHas) {
  // The text, the bytes that are shown, the units, the bytes of the last conversion, the status, the restarts.
  for (const Row& c : rows("abc 3 abc 3 0 0; ab 2 ab 2 0 0; ab< 3 ab 3 11 1; ab<> 3 aba 1 0 1; a<> 2 a 2 11 1; "
                           "a!bc 2 a! 2 12 0")) {
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
