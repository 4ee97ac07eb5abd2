#include "kellog.hpp"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "harness/text.hpp"
#include "host/process.hpp"
#include "kelexception.hpp"
#include "kellogsource.hpp"

namespace oxr::test {
namespace {

using Texts = std::vector<std::string>;

// What `write` writes, a record on a line: kind, function, handle, file:line, message number, source, inserts.
template <class Write>
Texts linesOf(Write write) {
  static constexpr const char* kKinds[] = {"entry", "exit", "trace", "event"};
  const auto sink = std::make_shared<RecordingLogSink>();
  std::optional<ScopedLogSink> scope(sink);
  write();
  scope.reset();  // other threads have let go of the sink now
  Texts lines;
  for (const LogRecord& record : sink->records()) {
    std::ostringstream line;
    line << (record.debug ? "debug " : "") << kKinds[static_cast<int>(record.kind)] << ' ' << record.function << " #"
         << record.handle << ' ' << record.file << ':' << record.line << ' ' << std::hex << record.messageNumber << ' '
         << record.source;
    for (const std::string& insert : record.inserts)
      line << " [" << insert << ']';
    lines.push_back(line.str());
  }
  return lines;
}

// A source with facts of its own, and its owner.
const KelNamedLogSource kOwner(u"type"_k, u"name"_k, u"label"_k);
struct Source : KelOwnedLogSource {
  void addLogInserts(KelLog::FastItem& item) const override { item << "fact" << fact; }
  int fact = 5;
};

TEST(KelLogItem, RendersEachKindOfInsertInOrder) {
  const auto write = [](const auto&... inserts) {
    KelLog::FastTraceItem fast("fast", 1, true);
    (fast << ... << inserts) << KelLog::endOfInserts;
    KelLog::TraceItem item("slow", 1);
    (item << ... << inserts);
    item.writeToFile();
    item.writeToFile();  // and the destructor: one record all the same
  };
  const KelWstring text = u"\u20AC"_k;
  const std::string line =
      " #1 :0 0  [text] [\u20AC] [\u00E9] [-2147483648] [9223372036854775807] [0.1] [1e+300] [nan] [true] [false] "
      "[\u20AC] [\u20AC] [] []";
  EXPECT_EQ(linesOf([&] {
              write("text", text.characters(), static_cast<unsigned short>(0xE9), -2147483647 - 1, 9223372036854775807,
                    0.1, 1e300, std::nan(""), true, false, text, KelBufferedWstring<16u>(text),
                    static_cast<const char*>(nullptr), static_cast<const unsigned short*>(nullptr));
            }),
            (Texts{"trace slow" + line, "trace fast" + line}));
}

TEST(KelLogItem, FastInsertsAreReadWhenTheListIsClosed) {
  int value = 1;
  const auto write = [&] {
    KelLog::FastDebugTraceItem item("f", 7, true);
    item << value << reinterpret_cast<const void*>(0xABC0) << static_cast<const void*>(nullptr);
    value = 2;
    item << KelLog::endOfInserts;
    value = 3;
    item << KelLog::endOfInserts;  // closed already
    KelLog::FastDebugTraceItem("open", 7, true) << value;
    KelLog::FastTraceItem full("full", 0, true);
    for (int i = 0; i < 20; ++i)
      full << value;
    full << KelLog::endOfInserts;
  };
  EXPECT_EQ(linesOf(write),
            (Texts{"debug trace open #7 :0 0 ",
                   "trace full #0 :0 0  [3] [3] [3] [3] [3] [3] [3] [3] [3] [3] [3] [3] [3] [3] [3] [3]",
                   "debug trace f #7 :0 0  [2] [0xabc0] [0x0]"}));
}

TEST(KelLog, RecordsTellKindFunctionHandleAndSource) {
  Source source;
  source.setOwner(&kOwner);
  long first = 0;
  const Texts lines = linesOf([&] {
    first = KelLog::writeEntry(&source, "a");
    KelLog::writeTrace(&source, "a", "fact", 7);
    KelLog::writeExit(&source, "a", 7);
    KelLog::writeDebugEntry("b");
    KelLog::writeDebugTrace("b", nullptr, 7);
    KelLog::writeDebugExit("b", 7);
    long handle = 0;
    KelLog::FastEntryItem(&source, "c", &handle, true) << 1 << KelLog::endOfInserts;
    KelLog::FastDebugEntryItem("d", &handle, true) << KelLog::endOfInserts;
    KelLog::FastDebugExitItem("d", handle, true) << 1 << KelLog::endOfInserts;
    KelLog::EntryItem("e", &handle) << "x";
    KelLog::TraceItem(&source, "t", noTraceHandle) << "x";
  });
  const auto at = [&](int entry) { return " #" + std::to_string(first + entry) + " :0 0 "; };
  EXPECT_EQ(lines, (Texts{"entry a" + at(0) + "name", "trace a #7 :0 0 name [fact]", "exit a #7 :0 0 name",
                          "debug entry b" + at(1), "debug trace b #7 :0 0  []", "debug exit b #7 :0 0 ",
                          "entry c" + at(2) + "name [1] [fact] [5]", "debug entry d" + at(3),
                          "debug exit d" + at(3) + " [1]", "entry e" + at(4) + " [x]", "trace t #-77 :0 0 name [x]"}));
}

TEST(KelLogThreads, RecordsArriveWholeWhileSinksChangeAndFail) {
  struct Failing : LogSink {
    void write(const LogRecord&) override { throw std::runtime_error("disk full"); }
  };
  const Texts lines = linesOf([] {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 3; ++i)
      threads.emplace_back([i] {
        for (int round = 0; round < 300; ++round)
          KelLog::FastTraceItem("f", i, true) << i << KelLog::endOfInserts;
      });
    for (int round = 0; round < 50; ++round)
      EXPECT_THAT(linesOf([] { KelLog::writeExit("inner", 0); }), testing::Contains("exit inner #0 :0 0 "));
    const ScopedLogSink failing(std::make_shared<Failing>());
    KelLog::writeExit("lost", 1);
  });
  for (const std::string& line : lines)
    ASSERT_THAT(line, testing::AnyOf("trace f #0 :0 0  [0]", "trace f #1 :0 0  [1]", "trace f #2 :0 0  [2]"));
}

TEST(KelLogSource, AnOwnedSourceSpeaksThroughItsOwner) {
  const auto told = [](const KelLogSource& source) {
    std::ostringstream text;
    text << toUtf8(source.logType() + u' ' + source.logName() + u' ' + source.logLabel()) << source.isNamed()
         << source.traceFilter() << source.userTraceFilter() << source.isTraceActive() << source.isUserTraceActive()
         << source.isDebugTraceActive() << source.isUserDebugTraceActive();
    return text.str();
  };
  Source source;
  EXPECT_EQ(told(source), "  0001111");
  source.setOwner(&kOwner);
  for (const auto& [level, expected] : {std::pair(4, "441111"), {3, "331100"}, {2, "220000"}, {0, "000000"}}) {
    KelLog::iEffectiveLogFilter = level;
    EXPECT_EQ(told(source) + told(kOwner), std::string("type name label0") + expected + "type name label1" + expected);
  }
}

KelConversionException failing(unsigned number) {
  KelConversionException exception(&kOwner, "src/file", 12, "Class::f", u"SRC"_k, static_cast<int>(number), 4);
  exception << "first" << 2;
  return exception;
}

TEST(KelException, ReadsWellWithWhatIsNestedInIt) {
  auto outer = failing(0xC000157E), middle = failing(0x800015AC);
  EXPECT_TRUE(outer.oxrMessageNumber() == 5502 && outer.objectNameString() == u"name"_k);
  EXPECT_EQ(toUtf8(outer.toString()), "OXR5502E: first; 2");
  outer.setIdentifier("CP_INTERNAL_ERROR");
  EXPECT_EQ(toUtf8(outer.toLocalString(true)), "OXR5502E CP_INTERNAL_ERROR: first; 2 (Class::f, src/file:12)");
  middle.addNestedItem(KelRecoverableException("f", 1, "g", KelWstring(), static_cast<int>(0xC0000034), 0));
  outer << middle;
  EXPECT_EQ(toUtf8(outer.toString()), "OXR5502E CP_INTERNAL_ERROR: first; 2 [OXR5548W: first; 2 [OXR0052E]]");
  const KelException copy(outer);
  EXPECT_TRUE(copy.nestedItem(0)->stackLevel() == 1 && copy.nestedItem(0)->nestedItem(0)->stackLevel() == 2);
  // The copies went deeper, not the item that was copied.
  EXPECT_TRUE(copy.nestedItem(1) == nullptr && !copy.nestedItem(-1) && middle.nestedItem(0)->stackLevel() == 1);

  EXPECT_EQ(linesOf([] {
              KelParserException cause("deep", 2, "inner", KelLog::iDefaultLogSource, 0, 0);
              cause << std::string("a\xFF");
              KelLog::ErrorItem error("src/x", 46, "f", u"SRC"_k, static_cast<int>(0xC000157D), 3);
              error << "failed" << cause;
            }),
            (Texts{"event f #3 src/x:46 c000157d SRC [failed] [[OXR0000: a\uFFFD (inner, deep:2)]]"}));
}

// The host's own log and the level, as the environment of a new process sets them.
using KelLogEnvironment = OwnProcess;

const std::filesystem::path kLogFolder = testing::TempDir() + "kellog_test";

// A pipe with both ends open, and what there is room for in it: its reader never reads.
int stoppedPipe(const char* name) {
  const int pipe = ::open(name, O_RDWR | O_NONBLOCK | O_CLOEXEC);
  while (::write(pipe, name, 1) == 1)
    continue;
  return pipe;
}

void writeOneOfEach() {
  std::filesystem::current_path(kLogFolder);
  for (const char* const pipe : {"unread", "left", "stopped"})
    ::mkfifo(pipe, 0600);
  stoppedPipe("stopped");
  const std::string log = std::getenv("KELHOST_LOG");
  if (log == "left") {
    const int reader = ::open("left", O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    KelLog::FastDebugTraceItem("opens", 0, true) << KelLog::endOfInserts;
    ::close(reader);
  }
  std::fprintf(stderr, "level %d\n", static_cast<int>(KelLog::iEffectiveLogFilter));
  KelLog::FastDebugTraceItem("PWFData::f", 12, true) << "a\n\u009b\u202e\u00e4" << 3 << KelLog::endOfInserts;
  KelLog::ErrorItem("src/x", 46, "f", u"SRC"_k, static_cast<int>(0xC000157D), 0) << "failed";
  std::exit(0);  // with its counts, where a build counts
}

TEST_F(KelLogEnvironment, SetsLogAndLevelAndRefusesWhatIsNeither) {
  const std::string lines =
      "[0-9-]+ [0-9:.]+ \\[[0-9]+\\] debug trace PWFData::f #12: a\\\\x0a\\\\u009b\\\\u202e\u00e4; 3\n"
      ".* event OXR5501E f \\(src/x:46\\) of SRC: failed\n$";
  const std::string refused = "is not a whole number; .*\nlevel 0\n";
  const struct {
    const char *log, *level;
    std::string onStderr;
    std::string inFile = "";  // a.log
  } rows[] = {
      {"", "", "^level 0\n" + lines},
      {"none", "-1", "^level -1\n$"},
      {"a.log", "4", "^level 4\n$", lines},
      {"stderr", "4x", refused},
      {"stderr", "4294967296", refused},
      {"/dev/null/log", "3", "^level 3\n.*no file that can be written.*\n" + lines},
      {".", "3", "^level 3\n.*no file that can be written; .*Is a directory.*\n" + lines},
      {"no/a.log", "3", "^level 3\n.*no file that can be written; .*No such file.*\n" + lines},
      {"unread", "3", "^level 3\n.*no file that can be written; .*No such device.*\n" + lines},
      {"/dev/full", "4", "^level 4\nthe log of KELHOST_LOG cannot be written: No space left on device\n$"},
      {"left", "4", "^level 4\nthe log of KELHOST_LOG cannot be written: Broken pipe\n$"},
      {"stopped", "4", "^level 4\n$"},
  };
  std::filesystem::create_directory(kLogFolder);
  for (const auto& row : rows) {
    const ScopedEnvironment log("KELHOST_LOG", row.log), level("KELHOST_TRACE_LEVEL", row.level);
    EXPECT_EXIT(writeOneOfEach(), testing::ExitedWithCode(0), row.onStderr);
    // The only file, if there is one, is that which was named: "none" and "stderr" are no names.
    std::stringstream written;
    written << std::ifstream(kLogFolder / "a.log").rdbuf();
    EXPECT_THAT(written.str(), testing::MatchesRegex(row.inFile)) << row.log;
    for (const char* const name : {"a.log", "unread", "left", "stopped"})
      std::filesystem::remove(kLogFolder / name);
  }
  EXPECT_EQ(std::filesystem::remove_all(kLogFolder), 1u);
}

}  // namespace
}  // namespace oxr::test
