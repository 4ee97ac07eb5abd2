#include "kellog.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <limits>
#include <memory>
#include <set>
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

// Runs `write` and gives the records that came out.
template <class Write>
std::vector<LogRecord> recordsOf(Write write) {
  const auto sink = std::make_shared<RecordingLogSink>();
  {
    const ScopedLogSink scope(sink);
    write();
  }
  return sink->records();  // not before other threads have let go of the sink
}

// A record in one line: kind, function, handle, file:line, message number, source, inserts.
std::string lineOf(const LogRecord& record) {
  static constexpr const char* kKinds[] = {"entry", "exit", "trace", "event"};
  std::ostringstream line;
  line << (record.debug ? "debug " : "") << kKinds[static_cast<int>(record.kind)] << ' ' << record.function << " #"
       << record.handle << ' ' << record.file << ':' << record.line << ' ' << std::hex << record.messageNumber << ' '
       << record.source;
  for (const std::string& insert : record.inserts)
    line << " [" << insert << ']';
  return line.str();
}

template <class Write>
Texts linesOf(Write write) {
  Texts lines;
  for (const LogRecord& record : recordsOf(write))
    lines.push_back(lineOf(record));
  return lines;
}

const KelNamedLogSource kOwner(u"type"_k, u"name"_k, u"label"_k);

TEST(KelLogItem, RendersEachKindOfInsertInOrder) {
  const KelWstring text = u"\u20AC"_k;
  const KelBufferedWstring<16u> buffered(u"\u00E9"_k);
  const unsigned short unit = u'\u00E9';
  const int negative = -2147483647 - 1;
  const long big = 9223372036854775807;
  const double tenth = 0.1, huge = 1e300, whole = 3, none = std::numeric_limits<double>::quiet_NaN();
  const bool yes = true, no = false;
  const char* const nothing = nullptr;
  const unsigned short* const noUnits = nullptr;
  const auto fill = [&](auto& item) -> auto& {
    return item << "text" << text.characters() << unit << negative << big << tenth << huge << whole << none << yes << no
                << text << buffered << nothing << noUnits;
  };
  const std::string line =
      " #1 :0 0  [text] [\u20AC] [\u00E9] [-2147483648] [9223372036854775807] [0.1] [1e+300] [3] [nan] [true] [false] "
      "[\u20AC] [\u00E9] [] []";
  const auto write = [&] {
    {
      KelLog::FastTraceItem item("fast", 1, true);
      fill(item) << KelLog::endOfInserts;
    }
    KelLog::TraceItem item("slow", 1);
    fill(item);
    item.writeToFile();
    item.writeToFile();  // and the destructor: one record all the same
  };
  EXPECT_EQ(linesOf(write), (Texts{"trace fast" + line, "trace slow" + line}));
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

// A log source with facts of its own.
struct Source : KelOwnedLogSource {
  void addLogInserts(KelLog::FastItem& item) const override { item << "fact" << fact; }
  int fact = 5;
};

TEST(KelLog, RecordsTellKindFunctionHandleAndSource) {
  Source source;
  source.setOwner(&kOwner);
  long handles[5] = {};
  const Texts lines = linesOf([&] {
    handles[0] = KelLog::writeEntry(&source, "a");
    KelLog::writeTrace(&source, "a", "fact", handles[0]);
    KelLog::writeExit(&source, "a", handles[0]);
    handles[1] = KelLog::writeDebugEntry("b");
    KelLog::writeDebugTrace("b", nullptr, handles[1]);
    KelLog::writeDebugExit("b", handles[1]);
    KelLog::FastEntryItem(&source, "c", &handles[2], true) << 1 << KelLog::endOfInserts;
    KelLog::FastDebugEntryItem("d", &handles[3], true) << KelLog::endOfInserts;
    KelLog::FastDebugExitItem("d", handles[3], true) << 1 << KelLog::endOfInserts;
    KelLog::EntryItem("e", &handles[4]) << "x";
    KelLog::TraceItem(&source, "t", noTraceHandle) << "x";
  });
  const auto at = [&](int i) { return " #" + std::to_string(handles[i]) + " :0 0 "; };
  EXPECT_EQ(lines, (Texts{"entry a" + at(0) + "name", "trace a" + at(0) + "name [fact]", "exit a" + at(0) + "name",
                          "debug entry b" + at(1), "debug trace b" + at(1) + " []", "debug exit b" + at(1),
                          "entry c" + at(2) + "name [1] [fact] [5]", "debug entry d" + at(3),
                          "debug exit d" + at(3) + " [1]", "entry e" + at(4) + " [x]", "trace t #-77 :0 0 name [x]"}));
  EXPECT_EQ(std::set<long>(std::begin(handles), std::end(handles)).size(), 5u);
  EXPECT_GT(handles[0], 0);
}

TEST(KelLog, EventsCarryPlaceNumberAndWhatIsNestedInThem) {
  const auto write = [] {
    KelParserException cause("deep", 2, "inner", KelLog::iDefaultLogSource, 0, 0);
    cause << std::string("a\xFF");
    KelLog::ErrorItem error("src/x", 46, "f", u"SRC"_k, static_cast<int>(0xC000157D), 3);
    error << "failed" << cause;
    KelLog::WarningItem(&kOwner, "src/y", 1, "g", u"SRC"_k, static_cast<int>(0x800015AC), 0) << 2;
  };
  EXPECT_EQ(linesOf(write), (Texts{"event g #0 src/y:1 800015ac SRC [2]",
                                   "event f #3 src/x:46 c000157d SRC [failed] [[OXR0000: a\uFFFD (inner, deep:2)]]"}));
}

TEST(KelLog, SinksNestAndAFailingOneHarmsNobody) {
  struct Failing : LogSink {
    void write(const LogRecord&) override { throw std::runtime_error("disk full"); }
  };
  const auto write = [] {
    KelLog::writeExit("before", 1);
    EXPECT_EQ(linesOf([] { KelLog::writeExit("inner", 1); }).size(), 1u);
    const ScopedLogSink failing(std::make_shared<Failing>());
    KelLog::writeExit("lost", 1);
  };
  EXPECT_EQ(linesOf(write), Texts{"exit before #1 :0 0 "});
}

TEST(KelLogThreads, RecordsArriveWholeWhileSinksChange) {
  const auto records = recordsOf([] {
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
      threads.emplace_back([i] {
        for (int round = 0; round < 300; ++round)
          KelLog::FastTraceItem("f", i, true) << i << KelLog::endOfInserts;
      });
    for (int round = 0; round < 50; ++round)
      recordsOf([] { KelLog::writeExit("swapped", 0); });
    for (std::thread& thread : threads)
      thread.join();
  });
  for (const LogRecord& record : records)
    ASSERT_EQ(record.inserts, Texts{std::to_string(record.handle)});
}

TEST(KelLogSource, AnOwnedSourceSpeaksThroughItsOwner) {
  Source source;
  EXPECT_EQ(source.owner(), nullptr);
  EXPECT_EQ(source.logType().length() + source.logName().length() + source.logLabel().length(), 0u);
  EXPECT_EQ(source.traceFilter() + source.userTraceFilter(), 0);
  EXPECT_TRUE(source.isTraceActive() && source.isDebugTraceActive());
  EXPECT_TRUE(source.isUserTraceActive() && source.isUserDebugTraceActive());
  source.setOwner(&kOwner);
  EXPECT_EQ(source.owner(), &kOwner);
  EXPECT_TRUE(kOwner.isNamed() && !source.isNamed());
  EXPECT_TRUE(source.logType() == u"type"_k && source.logName() == u"name"_k && source.logLabel() == u"label"_k);
  for (const int level : {4, 3, 0}) {
    KelLog::iEffectiveLogFilter = level;
    EXPECT_EQ(source.isTraceActive() && source.isUserTraceActive(), level > 2);
    EXPECT_EQ(source.isDebugTraceActive() && source.isUserDebugTraceActive(), level > 3);
    EXPECT_EQ(source.traceFilter(), level);
  }
}

template <class Exception>
Exception failing(int number) {
  Exception exception(&kOwner, "src/file", 12, "Class::f", KelLog::iDefaultLogSource, number, 4);
  exception << "first" << 2;
  return exception;
}

TEST(KelException, ThrowsACopyOfItsOwnClass) {
  EXPECT_THROW(failing<KelException>(1).throwThis(), KelException);
  const KelException& asBase = failing<KelParserException>(1);
  EXPECT_THROW(asBase.throwThis(), KelParserException);
  EXPECT_THROW(failing<KelRecoverableException>(1).throwThis(), KelRecoverableException);
  try {
    failing<KelConversionException>(static_cast<int>(0xC000157E)).throwThis();
  } catch (const KelRecoverableException& caught) {
    EXPECT_NE(dynamic_cast<const KelConversionException*>(&caught), nullptr);
    EXPECT_EQ(caught.oxrMessageNumber(), 5502);
    EXPECT_EQ(caught.functionNameString(), u"Class::f"_k);
    EXPECT_EQ(caught.logSourceNameString(), KelLog::iDefaultLogSource);
    EXPECT_EQ(caught.objectNameString(), u"name"_k);
  }
}

TEST(KelException, ReadsWellWithWhatIsNestedInIt) {
  auto outer = failing<KelConversionException>(static_cast<int>(0xC000157E));
  EXPECT_EQ(toUtf8(outer.toString()), "OXR5502E: first; 2");
  outer.setIdentifier("CP_INTERNAL_ERROR");
  EXPECT_EQ(toUtf8(outer.toLocalString(true)), "OXR5502E CP_INTERNAL_ERROR: first; 2 (Class::f, src/file:12)");
  auto middle = failing<KelConversionException>(static_cast<int>(0x800015AC));
  middle.addNestedItem(KelRecoverableException("f", 1, "g", KelWstring(), static_cast<int>(0xC0000034), 0));
  outer << middle;
  EXPECT_EQ(toUtf8(outer.toString()), "OXR5502E CP_INTERNAL_ERROR: first; 2 [OXR5548W: first; 2 [OXR0052E]]");
  const KelException copy(outer);
  ASSERT_EQ(copy.nestedItemCount(), 1);
  EXPECT_EQ(copy.nestedItem(0)->stackLevel(), 1);
  EXPECT_EQ(copy.nestedItem(0)->nestedItem(0)->stackLevel(), 2);
  EXPECT_EQ(copy.nestedItem(1), nullptr);
  EXPECT_EQ(copy.nestedItem(-1), nullptr);
  EXPECT_EQ(middle.nestedItem(0)->stackLevel(), 1);  // the copy went deeper, not this one
}

// The host's own log and the level, as the environment of a new process sets them.
using KelLogEnvironment = OwnProcess;

void writeOneOfEach() {
  std::fprintf(stderr, "level %d\n", static_cast<int>(KelLog::iEffectiveLogFilter));
  KelLog::FastDebugTraceItem("PWFData::f", 12, true) << "a\nb" << 3 << KelLog::endOfInserts;
  KelLog::ErrorItem("src/cpassert", 46, "cpAssert", u"SRC"_k, static_cast<int>(0xC000157D), 0) << "failed";
  std::_Exit(0);
}
constexpr const char* kTraceLine = "[0-9-]+ [0-9:.]+ \\[[0-9]+\\] debug trace PWFData::f #12: a\\\\x0ab; 3\n";
constexpr const char* kEventLine = ".* event OXR5501E cpAssert \\(src/cpassert:46\\) of SRC: failed\n$";

TEST_F(KelLogEnvironment, SetsLogAndLevelAndRefusesWhatIsNeither) {
  const std::string lines = std::string(kTraceLine) + kEventLine, refused = "is not a whole number; .*\nlevel 0\n";
  const struct {
    const char *log, *level;
    std::string expected;
  } rows[] = {
      {"", "4", "^level 4\n" + lines},
      {"stderr", "", "^level 0\n" + lines},
      {"none", "-1", "^level -1\n$"},
      {"stderr", "4x", refused},
      {"stderr", " 4", refused},
      {"stderr", "+4", refused},
      {"stderr", "0x4", refused},
      {"stderr", "4294967296", refused},
      {"/dev/null/log", "3", "^level 3\n.*no file that can be written.*\n" + lines},
  };
  for (const auto& row : rows) {
    const ScopedEnvironment log("KELHOST_LOG", row.log), level("KELHOST_TRACE_LEVEL", row.level);
    EXPECT_EXIT(writeOneOfEach(), testing::ExitedWithCode(0), row.expected);
  }
}

TEST_F(KelLogEnvironment, NamesAFile) {
  const std::string path = testing::TempDir() + "kellog_test.log";
  const ScopedEnvironment log("KELHOST_LOG", path.c_str()), level("KELHOST_TRACE_LEVEL", "0");
  std::remove(path.c_str());
  EXPECT_EXIT(writeOneOfEach(), testing::ExitedWithCode(0), "^level 0\n$");
  std::stringstream written;
  written << std::ifstream(path).rdbuf();
  EXPECT_THAT(written.str(), testing::MatchesRegex(std::string(kTraceLine) + kEventLine));
  std::remove(path.c_str());
}

}  // namespace
}  // namespace oxr::test
