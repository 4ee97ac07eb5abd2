#include <gtest/gtest.h>

#include <string>

#include "buffers/script.hpp"
#include "harness/tracing.hpp"

namespace oxr::test {
namespace {

constexpr char kLetters[] = "C1C2C3C4C5C6C7C8C9D1";

TEST(SpawnableTextBufferReader, ReadsUpToTheLimitAndGoesOnAfterIt) {
  const struct {
    int ccsid;
    const char *hex, *script, *result;
  } cases[] = {
      {37, kLetters, "o2 (5 s6 r2,8 R5,7 s5 s1 c ) s3",
       "true@2 7@2 false@2 false@2 FG@2 CDEFG@7 false@7 false/0@7 10@7 HIJ@10"},
      {37, kLetters, "o3 (4 (4 s3 (1 (0 c ) c ) ) ) s2",
       "true@3 7@3 7@3 DEF@6 7@6 6@6 false/0@6 7@6 G/1@7 7@7 7@7 10@7 HI@9"},
      // A spawn beyond what is there, or beyond an outer spawn, is refused: the end of its text.
      {37, kLetters, "o1 (10 (-1 (-2147483648 (2147483647 s2",
       "true@1 5502:it.@1 5502:it.@1 5502:it.@1 5502:it.@1 BC@3"},
      {37, kLetters, "o2 (5 m2 (4 (3 (4 ) s9 s3", "true@2 7@2 true@4 5502:it.@4 7@4 5502:it.@4 7@4 false@4 EFG@7"},
      // What the limit cuts off is cut off, however much follows.
      {1208, "61 F09D849E 62", "(4 C@1 v2 s2 s4 ) s3", "4@0 false/3@0 5502:11@0 false@0 5502:11@0 6@0 a𝄞@5"},
      {930, "0E4541 4542 0F", "s1 (1 c ) c", "一@3 4@3 false/1@4 6@4 \uFF62/1@5"},
  };
  for (const auto& [ccsid, hex, script, result] : cases)
    EXPECT_EQ(ran(ccsid, hex, script), result) << script << " on " << hex;
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
    reader.run("o1 (3 (3 o3 (1 m1");  // reading moves the window, not the lock
    EXPECT_EQ(locks(), ".x.x");
    reader.run(")");
    EXPECT_EQ(locks(), ".x..");
    reader.run(")");
    EXPECT_EQ(locks(), ".x..");
    reader.run(") )");
    EXPECT_EQ(locks(), "....");
    reader.run("o2 (2 (1");
  }
  EXPECT_EQ(locks(), "..x.");  // with windows suspended, the locks stay with the host
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

}  // namespace
}  // namespace oxr::test
