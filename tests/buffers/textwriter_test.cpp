#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>

#include "buffers/script.hpp"
#include "harness/headers.hpp"
#include "harness/hex.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"
#include "host/process.hpp"

namespace oxr::test {
namespace {

// A writer with its message that takes its operations as text.
struct Writer : Message, TextBufferWriter {
  explicit Writer(int codePage, EEndian byteOrder = eEndianBig)
      : TextBufferWriter(static_cast<Message*>(this), codePage, byteOrder) {}
  using TextBufferWriter::bomlessConverter, TextBufferWriter::ccsid, TextBufferWriter::converter,
      TextBufferWriter::endian, TextBufferWriter::pending;

  // An operation is a letter and a text: "a:x" appendStr, "A:x" appendStrAfterFlushed, "w:x" writeStr at 0, "q:x"
  // queueStr, "f" flush. Instead of the text a number gives as many dots, a negative one a length alone, and "?" a
  // length without a text. The result is the calls of the message, and "!" with the last insert of a failure, and then
  // the bytes.
  std::string run(const std::string& script) {
    std::istringstream operations(script);
    for (std::string operation; operations >> operation;) {
      const int number = std::atoi(operation.c_str() + 1);
      const KelWstring text = k(operation[1] == ':' ? operation.substr(2) : std::string(std::max(number, 0), '.'));
      const int length = std::min(number, 0) + static_cast<int>(text.length());
      const auto* const units = operation.back() == '?' ? nullptr : text.characters();
      const Raised raised = raisedBy([&] { runOne(operation[0], units, length); });
      if (!raised.kind.empty()) note('!' + raised.inserts.back());
    }
    return calls + toHex(bytes());
  }
  void runOne(char operation, const unsigned short* units, int length) {
    operation == 'a'   ? appendStr(units, length)
    : operation == 'A' ? appendStrAfterFlushed(units, length)
    : operation == 'w' ? writeStr(units, length, 0)
    : operation == 'q' ? queueStr(units, length)
                       : flush();
  }
};

TEST(TextBufferWriter, TakesWhatItIsGiven) {
  Writer writer(0, eEndianUnset);
  writer.appendStr(u"a\u20AC\U0001D11E"_k.characters());
  writer.appendStr(nullptr);
  EXPECT_EQ(writer.bytes(), "a\u20AC\U0001D11E");
  EXPECT_TRUE(writer.getCodepage() == 1208 && writer.endian == eEndianLittle && Writer(-1).ccsid == 1208);
  char bytes[2] = {};
  int size = -1;
  EXPECT_EQ(raisedBy([&] { writer.fromUnicode(bytes, &size, u"A"_k.characters(), 1, true); }),
            conversionFailure(5502, {"error converting from unicode", "1"}));
  EXPECT_EQ(size, -1);
}

TEST(TextBufferWriter, WritesStraightIntoTheMessageAndOverIt) {
  const struct {
    int ccsid;
    std::string script, expected;
  } cases[] = {
      {37, "a-1 A-9 w-1 q-1", "r2 !1 r2 !1 !1 !1 "},
      {37, "a1? A1? w1? q1? a0? A0? w0? q0?", "r3 !1 r3 !1 !1 !1 r2 r2 "},  // null is an empty text only
      {37, "a:ABCDE q:FG w:Z", "r7 r4 E9C2C3C4C5C6C7"},
      // No room for shifts and marks; the queue then stays.
      {930, "a:ABCD q:G w:漢 w:漢字", "r14 !15 r5 0E4F5848F20F"},
      {1204, "w:ABC", "!15 "},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Writer(c.ccsid).run(c.script), c.expected) << c.script;
}

TEST(TextBufferWriter, QueuesAPairThatCrossesItsCapacity) {
  Writer writer(1208);
  const KelWstring pair = u"\U0001F600"_k;
  writer.run("q1000 q23");
  writer.queueStr(pair.characters(), 1);
  EXPECT_EQ(writer.calls, "");
  writer.queueStr(pair.characters() + 1, 1);
  writer.flush();
  EXPECT_EQ(writer.calls + std::string(writer.bytes().substr(1023)), "r3071 r8 \U0001F600");
}

class TextBufferWriterMarks : public OwnProcess {};

TEST_F(TextBufferWriterMarks, AreLeftOutInsideAMessageOnRequest) {
  const ScopedEnvironment off("NVRA_INSTREAM_BOMS_OFF", "");
  // Ways into a code page with marks: twice after flushing, appended, queued; written over, which finds no room for a
  // mark and so never leaves one out. "*" where there is a second converter.
  const auto expectMarks = [] {
    for (const Row& c :
         rows("1200 1 6500620063006400; 1232 2 00000065000000620000006300000064; 37 2 85828384; "
              "1204 2 FEFF00610062FEFF00630064*; 1205 2 FEFF00610062FEFF00630064*; "
              "1204 1 FFFE61006200FFFE63006400*; 1236 1 FFFE00006100000062000000FFFE00006300000064000000*; "
              // The mark's order is the machine's, the order of what has none the caller's.
              "1236 2 FFFE00006100000000000062FFFE00006300000000000064*")) {
      Writer writer(std::stoi(c[0]), EEndian{std::stoi(c[1])});
      writer.run("A:a A:b a:c q:d f w:e");
      EXPECT_EQ(toHex(writer.bytes()) + (writer.bomlessConverter != nullptr ? "*" : ""), c[2]) << shown(c);
    }
    std::exit(HasFailure() ? 1 : 0);
  };
  EXPECT_EXIT(expectMarks(), testing::ExitedWithCode(0), "");
}

TEST(TextBufferWriter, CopiesStretchesOfAReader) {
  // CCSID and byte order of the reader and of the writer, bytes, the stretch, the bytes that come of it; or the first
  // word of a failure.
  for (const Row& c : rows(
           "37 2 37 1 C1FF3FC4 1 3 FF3F; 1204 2 1204 1 FEFF0041 0 3 FEFF00; "  // as they are
           "1200 2 1200 2 00410042 0 3 004100; 1200 2 13488 2 410042004300440045 0 8 0041; "
           "1200 2 1200 1 0041014203 0 4 41414242; 1200 1 1200 2 410042014300 1 4 424201; "  // of two the second, twice
           // An eighth, in this machine's byte order.
           "1200 2 1208 2 410042004300440045004600470048004900 0 17 4142; "
           "1200 2 37 2 004100420043004400450046004700480049 1 17 C1C2; "
           "1208 2 930 2 E6BCA2E5AD97FF 0 6 0E4F5848F20F; 930 2 1208 2 C10E4F580FC2 0 5 41E6BCA2; "
           "37 2 1200 2 C1C2C3 0 2 00410042; 1208 2 37 2 41E282AC 0 2 11; 37 2 37 2 C1C2 1 1 ''; "
           "37 2 37 2 C1C2 0 2 Cannot; 37 2 1208 2 C1C2 2 2 Cannot; 37 2 37 2 C1C2 1 0 Cannot; "
           "37 2 37 2 C1C2 -1 1 Cannot; 37 2 37 2 C1C2 -2147483648 2147483647 Cannot")) {
    SCOPED_TRACE(shown(c));
    const Message source(fromHex(c[4]));
    TextBufferReader reader(&source, std::stoi(c[0]), EEndian{std::stoi(c[1])}, nullptr);
    Writer writer(std::stoi(c[2]), EEndian{std::stoi(c[3])});
    const Raised raised = raisedBy([&] { writer.appendBuf(&reader, std::stoi(c[5]), std::stoi(c[6])); });
    EXPECT_EQ(raised.kind.empty() ? toHex(writer.bytes()) : raised.inserts.back().substr(0, 6), c[7]);
    EXPECT_TRUE(!c[7].empty() || writer.calls.empty());
  }
}

// In blocks of 1024 bytes, asking for the bytes anew each time, as they move while the message grows.
TEST(TextBufferWriter, CopiesLongStretchesOfItsOwnMessage) {
  Writer writer(1200, eEndianLittle);
  std::string bytes, pairs;
  for (int i = 0; i < 2500; ++i)
    bytes += static_cast<char>(i * i / 7);
  for (std::size_t i = 1; i < 2400; i += 2)
    pairs += {bytes[i], bytes[i]};
  writer.GrowingByteBuffer::appendBytes(bytes.data(), 2500);
  TextBufferReader own(static_cast<Message*>(&writer), 1200, eEndianBig, nullptr);
  writer.run("q:A");
  writer.appendBuf(&own, 0, 2400);
  EXPECT_EQ(writer.calls, "r4 a1024 a1024 a352 ");
  EXPECT_EQ(writer.bytes(), bytes + std::string("A\0", 2) + pairs);
  // The queue is written even where the copy is refused.
  writer.run("q:B");
  EXPECT_EQ(raisedBy([&] { writer.appendBuf(&own, 0, 2500); }),
            conversionFailure(5502, {"Cannot write past the end of buffer"}));
  EXPECT_EQ(writer.getLength(), 4904);
}

TEST(TextBufferWriter, FailsWithoutAConverter) {
  Writer writer(37);
  const Message source("abc");
  TextBufferReader reader(&source, 37, eEndianBig, nullptr);
  writer.converter.reset();
  const Raised none = conversionFailure(5502, {"no valid converter"});
  int size = 0;
  EXPECT_EQ(raisedBy([&] { writer.appendBuf(&reader, 0, 1); }), none);
  EXPECT_EQ(raisedBy([&] { writer.fromUnicode(nullptr, &size, nullptr, 0, true); }), none);
  const std::string four = "!no valid converter !no valid converter !no valid converter !no valid converter ";
  EXPECT_EQ(writer.run("a:A A:A w:A q:A f"), four);
  EXPECT_EQ(writer.pending, u"A"_k);
}

TEST(TextBufferWriter, TracesItsOperations) {
  EXPECT_EQ(headerOfA<Writer>("QDVW", 37), "QDVW 8 120 / 0OXR QDVW 8 120");
  Writer writer(37);
  EXPECT_EQ(tracedAt(3, [&] { writer.run("a:A"); }), "");
  EXPECT_EQ(tracedAt(4, [&] { writer.run("a:A"); }),
            "> TextBufferWriter::appendStr\n> TextBufferWriter::fromUnicode\n> CPUnicodeConverter::fromUnicode\n"
            "< CPUnicodeConverter::fromUnicode\n< TextBufferWriter::fromUnicode\n< TextBufferWriter::appendStr\n");
  const std::string failure = tracedAt(3, [&] { writer.run("a-1"); });
  EXPECT_TRUE(failure.starts_with("TextBufferWriter::fromUnicode: Throwing exception|src/cpi/bsutils/textbffr|") &&
              failure.ends_with("|CP_INTERNAL_ERROR|error converting from unicode|1\n"))
      << failure;
}

}  // namespace
}  // namespace oxr::test
