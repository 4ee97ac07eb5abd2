#include "records/framing/framing.hpp"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <csignal>

#include "oxrrec/runs.hpp"

namespace oxr::rec::test {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

constexpr char kPair[] = "01 R. 05 A PIC X. 05 N PIC 9.";
constexpr char kWide[] = "01 R. 05 A PIC X(4). 05 B PIC X(4).";

const struct {
  const char* copybook;
  const char* records;  // see bytesOf
  const char* arguments;
  const char* result;  // see inShort
  int code = kDone;
} kCases[] = {
    // Lengths alone count what follows them, unless they are said to count themselves.
    {kPair, "<0002>A1<0002>B2", "length2", "{A:A,N:1} {A:B,N:2}"},
    {kPair, "<0400>A1<0400>B2", "length2-le --length-includes-header yes", "{A:A,N:1} {A:B,N:2}"},
    {kPair, "<00000002>A1", "length4", "{A:A,N:1}"},
    {kPair, "<02000000>A1", "length4-le", "{A:A,N:1}"},
    {kPair, "<FFFFFFFF>A1", "length4", "| #1 at byte 0: its header asks for 4294967295 bytes, more than a record has",
     2},
    // Blocks, short and long.
    {kPair, "<00100000><00060000>A1<00060000>B2<000A0000><00060000>C3", "bdw", "{A:A,N:1} {A:B,N:2} {A:C,N:3}"},
    {kPair, "<80000010><00060000>A1<00060000>B2", "bdw", "{A:A,N:1} {A:B,N:2}"},
    {kPair, "<000C0000><00020000>A1<00020000>B2", "bdw --length-includes-header no", "{A:A,N:1} {A:B,N:2}"},
    {kPair, "<00090000><00060000>A1", "bdw",
     "| #1 at byte 4: its header asks for 2 bytes, but its block has only 1 left", 2},
    {kPair, "<00040000>", "bdw", "| #1 at byte 0: its block's header gives a length of 4: it has no record*", 2},
    {kPair, "<0010>", "bdw", "| #1 at byte 0: the input ends within its block's header", 2},
    {kPair, "<000A0001><00060000>A1", "bdw", "| #1 at byte 0: there is no block header: bytes 3 and 4 of one are zero",
     2},
    {kPair, "<00100000><00060000>A1", "bdw", "{A:A,N:1} | #2 at byte 10: the input ends within its record header", 2},
    // Segments. The place of a bad field is that of its own segment.
    {kPair, "<000F0000><00060000>A1<00050100>B<00090000><00050200>2", "spanned", "{A:A,N:1} {A:B,N:2}"},
    {kPair, "<00090000><00050100>B<00090000><00050200>x", "spanned", "| #1, byte 17, N: *; bytes 78", 1},
    {kWide, "<00090000><00050100>A<000A0000><00060300>BC<00110000><00050300>D<00080200>1234", "spanned",
     "{A:ABCD,B:1234}"},
    {kPair, "<00090000><00050100>B", "spanned", "| #1 at byte 4: the input ends before its last segment", 2},
    {kPair, "<0009000000050900>B", "spanned",
     "| #1 at byte 4: there is no record header: byte 3 of one is 0 to 3, byte 4 zero", 2},
    {kPair, "<00090000><00050200>B", "spanned", "| #1 at byte 4: it begins with a later segment of a record", 2},
    {kPair, "<00090000><00050100>B<000A0000><00060000>C3", "spanned",
     "| #1 at byte 4: another one begins before its last segment*", 2},
    // Lines: what a short one lacks is blank, and a long one is told.
    {kWide, "ABCD1234<0A>AB<0D0A><0A>ABCD1<0D>", "lines", "{A:ABCD,B:1234} {A:AB,B:} {A:,B:} {A:ABCD,B:1\r}"},
    {kWide, "ABCD12345<0A>", "lines", "| #1, byte 8: the record has 9 bytes, 1 more than its layout; bytes 35", 1},
    {kPair, "A1<0A>B<0A>", "lines", "{A:A,N:1} | #2, byte 4, N: *", 1},
    {kWide, "<C1C215C325>", "lines --ccsid 37", "{A:AB,B:} {A:C,B:}"},
    {"05 N PIC 9. 05 A PIC X OCCURS 0 TO 3 DEPENDING ON N.", "2ab<0A>0<0A>2a<0A>", "lines",
     "{N:2,A:[a,b]} {N:0,A:[]} {N:2,A:[a,]}"},
    // Records that tell their own length: one of no kind tells none.
    {"05 N PIC 9. 05 A PIC X OCCURS 0 TO 3 DEPENDING ON N.", "1a03abc", "auto",
     "{N:1,A:[a]} {N:0,A:[]} {N:3,A:[a,b,c]} | records without headers, as long as their counts say, 3 of them fit the "
     "input exactly (--records fixed)"},
    {"01 R. 05 N PIC 9. 05 A PIC X OCCURS 0 TO 3 DEPENDING ON N.", "1a03abc", "fixed --when N=1:R",
     "{N:1,A:[a]} | #2 at byte 2: no condition (--when) tells what it is, so the next record cannot be found", 2},
    {kPair, "<4100310A>", "lines --ccsid 1200", "oxrrec: CCSID 1200 has no lines: its characters take several bytes",
     2},
    // Headers, trailers and ranges of the file. Places count from its start.
    {kPair, "HHA1B2TTT", "fixed --skip-header 2 --skip-trailer 3", "{A:A,N:1} {A:B,N:2}"},
    {kPair, "HHA1BxTTT", "fixed --skip-header 2 --skip-trailer 3", "{A:A,N:1} | #2, byte 5, N: *", 1},
    {kPair, "A1B2C3D4", "fixed --range 2-6", "{A:B,N:2} {A:C,N:3}"},
    {kPair, "A1B2CxD4", "fixed --range 2-6 --first-record 2", "{A:B,N:2} | #3, byte 5, N: *", 1},
    {kPair, "HHA1B2T", "fixed --skip-header 2 --skip-trailer 1 --range 4-7", "{A:B,N:2}"},
    {kPair, "A1", "fixed --skip-header 3", "oxrrec: standard input has only 2 bytes, but its header asks for 3", 2},
    {kPair, "A1", "fixed --skip-header 1 --skip-trailer 2",
     "oxrrec: standard input has only 2 bytes, but its header with its trailer asks for 3", 2},
    {kPair, "A1", "fixed --range 0-3", "oxrrec: standard input has only 2 bytes, but the range asks for 3", 2},
    {kPair, "A1", "fixed --range 3-0", "oxrrec: --range: '3-0' is no range of bytes such as 1000-2000*", 2},
};

TEST(Framing, FindsTheRecords) {
  for (const auto& [copybook, records, arguments, result, code] : kCases) {
    SCOPED_TRACE(std::string(copybook) + ' ' + records + ' ' + arguments);
    const std::string page = std::string(arguments).find("--ccsid") == std::string::npos ? " --ccsid 819" : "";
    const Outcome outcome = decodeBytes(copybook, bytesOf(records), "--records " + (arguments + page));
    const std::string given = inShort(outcome);
    EXPECT_THAT(replaced(given, "\\r", "\r"), ContainsRegex(asPattern(result) + (given.empty() ? "$" : " $")));
    EXPECT_EQ(outcome.code, code);
  }
}

// Ten records "R00........." to "R09.........", or of other lengths, in a form.
std::string framed(const RecordForm& form, bool isLong) {
  RecordFramer framer(form, 50);
  std::string file;
  for (int i = 0; i < 10; ++i) {
    const std::string record = "R0" + std::to_string(i) + std::string(isLong && i % 2 == 0 ? 17 : 13, '.');
    framer.add({reinterpret_cast<const unsigned char*>(record.data()), record.size()}, file);
  }
  framer.finish(file);
  return file;
}

constexpr char kCountedPair[] = "05 N PIC 9. 05 A PIC X OCCURS 0 TO 5 DEPENDING ON N.";
constexpr char kDots[] = "01 R. 05 K PIC X(3). 05 D PIC X(13).";

// What `--records auto` says of a file, and of one that is said to lie in another way.
TEST(Framing, IsFoundOutAndSuggested) {
  const struct {
    RecordForm form;
    const char* found;
    const char* wrong;  // a form that it is not
  } kForms[] = {
      {{Framing::fixed}, "records without headers, 10 of them fit the input exactly (--records fixed)", "rdw"},
      {{Framing::rdw},
       "records with 4-byte headers, length most significant byte first, 10 of them fit the input exactly (--records "
       "rdw)",
       "rdw-le"},
      {{Framing::rdwLittle}, "* (--records rdw-le)", "rdw"},
      {{Framing::rdw, false},
       "*, which does not count the header, 10 of them fit the input exactly (--records rdw --length-includes-header "
       "no)",
       "rdw"},
      {{Framing::bdw}, "blocks of records, both with 4-byte headers, 10 of * (--records bdw)", "rdw"},
      {{Framing::spanned}, "blocks of records that go on * (--records spanned)", "bdw"},
      {{Framing::length2}, "* (--records length2)", "fixed"},
      {{Framing::length2Little}, "* (--records length2-le)", "bdw"},
      {{Framing::length2Little, true},
       "*, which counts itself, 10 of * (--records length2-le --length-includes-header yes)",
       "rdw"},
      {{Framing::length4}, "* (--records length4)", "length4-le"},
      {{Framing::length4Little}, "* (--records length4-le)", "rdw"},
      {{Framing::lines}, "lines of text, 10 of * (--records lines)", "fixed"},
  };
  for (const auto& [form, found, wrong] : kForms) {
    SCOPED_TRACE(std::string(found) + ' ' + wrong);
    const std::string file = framed(form, false);
    const Outcome outcome = decodeBytes(kDots, file, "--records auto --ccsid 819");
    EXPECT_EQ(outcome.code, kDone);
    EXPECT_EQ(std::count(outcome.lines.begin(), outcome.lines.end(), '\n'), 10);
    EXPECT_THAT(outcome.messages, ContainsRegex(asPattern(std::string(kStart) + found) + "\n$"));
    const std::string option = outcome.messages.substr(outcome.messages.rfind('('));
    const Outcome bad = decodeBytes(kDots, file, std::string("--ccsid 819 --records ") + wrong);
    EXPECT_THAT(bad.messages, HasSubstr(option.substr(1, option.size() - 3) + " fits: "));
    EXPECT_NE(bad.code, kDone);
  }
}

// What nothing stands around, or what hardly is a file.
TEST(Framing, IsFoundOutByCountsAndWithoutBytes) {
  const struct {
    const char* copybook;
    std::string bytes;
    const char* found;
    std::size_t records;
  } kFound[] = {
      {kCountedPair, "2ab02cd",
       "records without headers, as long as their counts say, 3 of them fit the input exactly (--records fixed)", 3},
      {kCountedPair, "", "no byte, so no record in any form (--records fixed)", 0},
      {kDots, "", "no byte, so no record in any form (--records fixed)", 0},
      {kDots, "a\nb\nc", "lines of text, 3 of them fit the input exactly (--records lines)", 3},
      {kDots, framed({Framing::bdw, false}, false),
       "blocks of records, both with 4-byte headers, lengths do not count the headers, 10 of them fit the input "
       "exactly (--records bdw --length-includes-header no)",
       10},
      {kCountedPair, replaced(std::string(30'000, '.'), ".", "3abc"),
       "records without headers, as long as their counts say, 16384 of them fit the first 64 KiB exactly (--records "
       "fixed)",
       30'000},
  };
  for (const auto& [copybook, bytes, found, records] : kFound) {
    const Outcome outcome = decodeBytes(copybook, bytes, "--records auto --ccsid 819");
    EXPECT_EQ(outcome.messages, std::string(kStart) + found + '\n');
    EXPECT_EQ(std::count(outcome.lines.begin(), outcome.lines.end(), '\n'), static_cast<std::ptrdiff_t>(records));
  }
}

// More than what `--records auto` looks at, in blocks whose length takes more than 15 bits.
TEST(Framing, IsFoundOutInLargeFiles) {
  for (const RecordForm& form : {RecordForm{Framing::bdw}, RecordForm{Framing::spanned}}) {
    RecordFramer framer(form, 40'000);
    const std::vector<unsigned char> record(16, 'x');
    std::string file;
    for (int i = 0; i < 6000; ++i)
      framer.add(record, file);
    framer.finish(file);
    const Outcome outcome = decodeBytes(kDots, file, "--records auto --ccsid 819");
    EXPECT_EQ(std::count(outcome.lines.begin(), outcome.lines.end(), '\n'), 6000) << outcome.messages;
  }
}

TEST(Framing, IsNotGuessed) {
  const struct {
    const char* copybook;
    std::string bytes;
    const char* arguments;
    const char* messages;
  } kUnclear[] = {
      {"01 R. 05 A PIC X(3). 05 FILLER PIC X.", "abc\nabc\n", "--records auto",
       "the records may lie in 2 ways, say which: * (--records lines); or * (--records fixed)"},
      {"01 R. 05 A PIC X(30).", std::string(31, 'x'), "--records auto",
       "how the records lie cannot be told: there are neither headers nor lines of text, and 31 bytes are no multiple "
       "of "
       "the 30 of a record but 1 more: --skip-header or --skip-trailer leaves out what is no record"},
      {"01 R. 05 A PIC S9(5) COMP-3. 05 B PIC X.", bytesOf("<00001C>a<0A00002C>b<0A>"), "--records auto",
       "*and 10 bytes are no multiple of the 4 of a record; a line end stands behind each record: --records lines "
       "reads them if their values hold none"},
      // Counts are looked at, as far as records are.
      {kCountedPair, bytesOf("2ab1cx<00>"), "--records auto",
       "*there are neither headers nor lines of text, nor do records lie as their counts say: record 3 at byte 5: its "
       "length hangs on a count that cannot be read, *"},
      {kCountedPair, "2ab7cdefghi", "--records auto", "*: record 2 at byte 3: its length hangs on a count *"},
      {"01 R. 05 A PIC X(30).", "a line\nanother\n", "--records auto --ccsid 37",
       "how the records lie cannot be told: it is lines of text in no EBCDIC code page: --ccsid 819, 1208 or another "
       "one"},
      {"01 R. 05 A PIC X(30).", "\xC1\x40\x25\xC2\x25", "--records auto --ccsid 819",
       "how the records lie cannot be told: it is lines of text in an EBCDIC code page: --ccsid 37, or another one"},
      {"01 R. 05 A PIC 9(2).", "\xF1\x25\xF2\x25", "--ccsid 819",
       "*; it is lines of text in an EBCDIC code page: --ccsid 37, or another one"},
      // Blocks are no records, whatever is wrong in them.
      {"05 N PIC 9. 05 A PIC X(9) OCCURS 0 TO 5 DEPENDING ON N.", bytesOf("<00090000><00050300>0<00090000><00050000>0"),
       "--records spanned", "record 1 at byte 4: it begins with a later segment of a record\n"},
      {"01 R. 05 A PIC XX. 05 B PIC 9.", "\xC1\xC1\xF1\x25\xC1\xC1\xF1\x25\xC1\xC1\xF1\x25", "--ccsid 37",
       "*; --records lines fits: *"},
      {"05 N PIC 9. 05 A PIC X(9) OCCURS 1 TO 5 DEPENDING ON N.",
       "1" + std::string(45, '9') + "1" + std::string(45, '9'), "",
       "*; --odo fixed fits: the input is 2 times the largest size, 46 bytes"},
      // A kind of record that the copybook does not describe
      {kDots, framed({Framing::rdw}, true), "--records auto",
       "records with 4-byte headers,* (--records rdw)\n*4 more than*"},
  };
  for (const auto& [copybook, bytes, arguments, messages] : kUnclear) {
    const bool hasPage = std::string_view(arguments).find("--ccsid") != std::string_view::npos;
    const Outcome outcome = decodeBytes(copybook, bytes, (hasPage ? "" : "--ccsid 819 ") + std::string(arguments));
    EXPECT_NE(outcome.code, kDone);
    EXPECT_THAT(outcome.messages, ContainsRegex(asPattern(std::string("oxrrec: standard input: ") + messages)));
  }
}

TEST(Framing, LooksForALineEndForAWhile) {
  EXPECT_EQ(decodeBytes(kPair, std::string((1U << 24) + 1, 'x'), "--records lines --ccsid 819").messages,
            "oxrrec: standard input: record 1 at byte 0: its line does not end within 16777216 bytes\n");
}

// A pipe is read like a file.
TEST(Framing, ReadsAWindowOfAPipe) {
  const auto pipe = [](const std::string& text, const InputWindow& window) {
    std::array<int, 2> ends;
    EXPECT_EQ(::pipe(ends.data()), 0);
    EXPECT_EQ(::write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    ::close(ends[1]);
    FileInput input(FileDescriptor::owned(ends[0]), "pipe", window, 4);
    std::string all;
    for (int size = 0;;) {
      int remaining = 0;
      const char* const bytes = input.slide(size, 1)->getData(&remaining, 0);
      if (remaining == 0) return all;
      all += std::string(bytes, static_cast<std::size_t>(remaining)) + '|';
      size = remaining;
    }
  };
  EXPECT_EQ(replaced(pipe("HHabcdefghTTTTTT", {2, 6, std::nullopt}), "|", ""), "abcdefgh");
  EXPECT_EQ(replaced(pipe("HHabcdefghTTTTTT", {2, 6, InputWindow::Range{4, 7}}), "|", ""), "cde");
  EXPECT_EQ(replaced(pipe("HHabcdefghTTTTTT", {2, 6, InputWindow::Range{4, ~std::uint64_t{0}}}), "|", ""), "cdefgh");
  EXPECT_THROW(pipe("abc", {0, 4, std::nullopt}), ToolError);
  EXPECT_THROW(pipe("abc", {4, 0, std::nullopt}), ToolError);
}

TEST(Framing, TellsThatAFileBecameShorter) {
  const Folder folder;
  const std::string path = folder.write("in", std::string(100, 'x'));
  FileInput input(FileDescriptor::owned(::open(path.c_str(), O_RDONLY)), "in", {}, 10);
  input.slide(0, 10);
  std::filesystem::resize_file(path, 50);
  EXPECT_THROW(input.slide(10, 90), ToolError);
}

// A file that was there stays as it was until the new one is whole, and no other is left.
TEST(FileOutput, ReplacesAFileWhenAllIsWritten) {
  const Folder folder;
  const std::string path = folder.write("out", "old");
  ::chmod(path.c_str(), 0640);
  std::filesystem::create_symlink(path, folder.path("link"));
  for (const bool isClosed : {false, true}) {
    FileOutput output = FileOutput::open(folder.path("link"), {}, -1);
    output.write("new");
    EXPECT_EQ(contentOf(path), "old");
    if (isClosed) output.close();
  }
  EXPECT_EQ(contentOf(path), "new");
  EXPECT_EQ(folder.names(), "link out");
  EXPECT_TRUE(std::filesystem::is_symlink(folder.path("link")));
  struct stat status;
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0640U);
}

TEST(FileOutput, EndsQuietlyWhenNobodyReads) {
  std::array<int, 2> ends;
  ASSERT_EQ(::pipe(ends.data()), 0);
  ::close(ends[0]);
  const Folder folder;
  const std::string files = folder.write("c", kPair) + ' ' + folder.write("in", "A1");
  std::ostringstream messages;
  const auto before = std::signal(SIGPIPE, SIG_IGN);
  EXPECT_EQ(runOn({0, ends[1], messages, false}, "decode --format free --ccsid 819 --copybook " + files), kDone);
  std::signal(SIGPIPE, before);
  ::close(ends[1]);
  EXPECT_EQ(messages.str(), "");
}

}  // namespace
}  // namespace oxr::rec::test
