#include "kellog.hpp"

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

#include "host/process.hpp"
#include "kelexception.hpp"
#include "kellogsource.hpp"
#include "support/text.hpp"

namespace oxr::test {
namespace {

using Texts = std::vector<std::string>;

// Runs `write` and gives the records that came out.
template <class Write>
std::vector<LogRecord> recordsOf(Write write) {
  const auto sink = std::make_shared<RecordingLogSink>();
  const ScopedLogSink scope(sink);
  write();
  return sink->records();
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
  const KelWstring text = u"\u20AC1"_k;
  const KelBufferedWstring<16u> buffered(text);
  const unsigned short unit = u'\u00E9';
  const int negative = -2147483647 - 1;
  const long big = 9223372036854775807;
  const double tenth = 0.1, huge = 1e300, whole = 3;
  const bool yes = true;
  const char* const none = nullptr;
  const unsigned short* const noUnits = nullptr;
  const Texts expected{"text",
                       "\xE2\x82\xAC"
                       "1",
                       "\xC3\xA9",
                       "-2147483648",
                       "9223372036854775807",
                       "0.1",
                       "1e+300",
                       "3",
                       "true",
                       "\xE2\x82\xAC"
                       "1",
                       "\xE2\x82\xAC"
                       "1",
                       "",
                       ""};

  const auto fast = recordsOf([&] {
    KelLog::FastTraceItem("f", 1, true) << "text" << text.characters() << unit << negative << big << tenth << huge
                                        << whole << yes << text << buffered << none << noUnits << KelLog::endOfInserts;
  });
  ASSERT_EQ(fast.size(), 1u);
  EXPECT_EQ(fast[0].inserts, expected);
  const auto slow = recordsOf([&] {
    KelLog::TraceItem item("f", 1);
    item << "text" << text.characters() << unit << negative << big << tenth << huge << whole << yes << text << buffered
         << none << noUnits << std::string("a\xFF") << std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(item.inserts().back(), "nan");
    item.writeToFile();
    item.writeToFile();  // and the destructor: one record all the same
  });
  ASSERT_EQ(slow.size(), 1u);
  EXPECT_EQ(Texts(slow[0].inserts.begin(), slow[0].inserts.end() - 2), expected);
  EXPECT_EQ(slow[0].inserts[13], "a\xEF\xBF\xBD");  // inserts are valid UTF-8
  const auto addresses = recordsOf([] {
    const void* const address = reinterpret_cast<const void*>(0xABC0);
    KelLog::FastTraceItem("f", 1, true) << address << static_cast<const void*>(nullptr) << KelLog::endOfInserts;
  });
  EXPECT_EQ(addresses.at(0).inserts, (Texts{"0xabc0", "0x0"}));
}

TEST(KelLogItem, FastInsertsAreReadWhenTheListIsClosed) {
  int value = 1;
  EXPECT_EQ(linesOf([&] {
              KelLog::FastDebugTraceItem item("f", 7, true);
              item << value;
              value = 2;
              item << KelLog::endOfInserts;
              value = 3;
              item << KelLog::endOfInserts;  // closed already
              KelLog::FastDebugTraceItem("open", 7, true) << value;
            }),
            (Texts{"debug trace open #7 :0 0 ", "debug trace f #7 :0 0  [2]"}));
  EXPECT_EQ(recordsOf([&] {
              KelLog::FastTraceItem item("f", 0, true);
              for (int i = 0; i < 20; ++i)
                item << value;
              item << KelLog::endOfInserts;
            })[0]
                .inserts.size(),
            16u);
}

// A log source with facts of its own.
class Source : public KelOwnedLogSource {
 public:
  void addLogInserts(KelLog::FastItem& item) const override { item << "fact" << fact_; }

 private:
  int fact_ = 5;
};

TEST(KelLog, RecordsTellKindFunctionHandleAndSource) {
  Source source;
  source.setOwner(&kOwner);
  long first = 0, second = 0, third = 0, fourth = 0, fifth = 0;
  const auto records = recordsOf([&] {
    first = KelLog::writeEntry(&source, "a");
    KelLog::writeTrace(&source, "a", "fact", first);
    KelLog::writeExit(&source, "a", first);
    second = KelLog::writeDebugEntry("b");
    KelLog::writeDebugTrace("b", nullptr, second);
    KelLog::writeDebugExit("b", second);
    KelLog::FastEntryItem(&source, "c", &third, true) << third << KelLog::endOfInserts;
    KelLog::FastDebugEntryItem("d", &fourth, true) << KelLog::endOfInserts;
    KelLog::FastDebugExitItem("d", fourth, true) << 1 << KelLog::endOfInserts;
    KelLog::EntryItem("e", &fifth) << "x";
    KelLog::TraceItem(&source, "t", noTraceHandle) << "x";
  });
  const auto handle = [](long value) { return std::to_string(value); };
  const Texts expected{"entry a #" + handle(first) + " :0 0 name",
                       "trace a #" + handle(first) + " :0 0 name [fact]",
                       "exit a #" + handle(first) + " :0 0 name",
                       "debug entry b #" + handle(second) + " :0 0 ",
                       "debug trace b #" + handle(second) + " :0 0  []",
                       "debug exit b #" + handle(second) + " :0 0 ",
                       "entry c #" + handle(third) + " :0 0 name [" + handle(third) + "] [fact] [5]",
                       "debug entry d #" + handle(fourth) + " :0 0 ",
                       "debug exit d #" + handle(fourth) + " :0 0  [1]",
                       "entry e #" + handle(fifth) + " :0 0  [x]",
                       "trace t #-77 :0 0 name [x]"};
  Texts lines;
  for (const LogRecord& record : records)
    lines.push_back(lineOf(record));
  EXPECT_EQ(lines, expected);
  EXPECT_EQ((std::set{0l, first, second, third, fourth, fifth}).size(), 6u);
}

TEST(KelLog, EventsCarryPlaceNumberAndWhatIsNestedInThem) {
  EXPECT_EQ(linesOf([] {
              KelParserException cause("deep", 2, "inner", KelLog::iDefaultLogSource, 0, 0);
              cause << 1;
              KelLog::ErrorItem error("src/x", 46, "f", u"SRC"_k, static_cast<int>(0xC000157D), 3);
              error << "failed" << cause;
              EXPECT_EQ(error.nestedItemCount(), 1);
              KelLog::WarningItem(&kOwner, "src/y", 1, "g", u"SRC"_k, static_cast<int>(0x800015AC), 0) << 2;
            }),
            (Texts{"event g #0 src/y:1 800015ac SRC [2]",
                   "event f #3 src/x:46 c000157d SRC [failed] [[OXR0000: 1 (inner, deep:2)]]"}));
}

TEST(KelLog, SinksNestAndAFailingOneHarmsNobody) {
  class Failing : public LogSink {
   public:
    void write(const LogRecord&) override { throw std::runtime_error("disk full"); }
  };
  EXPECT_EQ(linesOf([] {
              KelLog::writeExit("before", 1);
              EXPECT_EQ(linesOf([] { KelLog::writeExit("inner", 1); }).size(), 1u);
              {
                const ScopedLogSink failing(std::make_shared<Failing>());
                KelLog::writeExit("lost", 1);
              }
              KelLog::writeExit("after", 1);
            }).size(),
            2u);
}

TEST(KelLogThreads, RecordsArriveWholeWhileSinksChange) {
  const auto sink = std::make_shared<RecordingLogSink>();
  {
    const ScopedLogSink scope(sink);
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
      threads.emplace_back([i] {
        for (int round = 0; round < 300; ++round)
          KelLog::FastTraceItem("f", i, true) << i << KelLog::endOfInserts;
      });
    for (int round = 0; round < 50; ++round)
      linesOf([] { KelLog::writeExit("swapped", 0); });
    for (std::thread& thread : threads)
      thread.join();
  }
  for (const LogRecord& record : sink->records())
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
  EXPECT_FALSE(source.isNamed());
  EXPECT_TRUE(kOwner.isNamed());
  EXPECT_TRUE(source.logType() == u"type"_k && source.logName() == u"name"_k && source.logLabel() == u"label"_k);
  for (const int level : {0, 3, 4}) {
    KelLog::iEffectiveLogFilter = level;
    EXPECT_EQ(source.isTraceActive() && source.isUserTraceActive(), level > 2);
    EXPECT_EQ(source.isDebugTraceActive() && source.isUserDebugTraceActive(), level > 3);
    EXPECT_EQ(source.traceFilter(), level);
  }
  KelLog::iEffectiveLogFilter = 0;
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
  EXPECT_THROW(failing<KelConversionException>(1).throwThis(), KelConversionException);
  EXPECT_THROW(failing<KelRecoverableException>(1).throwThis(), KelRecoverableException);
  try {
    const auto exception = failing<KelConversionException>(static_cast<int>(0xC000157E));
    exception.throwThis();
  } catch (const KelRecoverableException& caught) {
    EXPECT_EQ(caught.messageNumber(), static_cast<int>(0xC000157E));
    EXPECT_EQ(caught.oxrMessageNumber(), 5502);
    EXPECT_EQ(caught.inserts(), (Texts{"first", "2"}));
    EXPECT_STREQ(caught.fileName(), "src/file");
    EXPECT_EQ(caught.lineNumber(), 12);
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

TEST_F(KelLogEnvironment, GoesToStandardErrorAndTheLevelIsRead) {
  const ScopedEnvironment log("KELHOST_LOG", ""), level("KELHOST_TRACE_LEVEL", "4");
  EXPECT_EXIT(writeOneOfEach(), testing::ExitedWithCode(0), std::string("level 4\n") + kTraceLine + kEventLine);
}

TEST_F(KelLogEnvironment, NoneWritesNothingAndNegativeLevelsAreLevels) {
  const ScopedEnvironment log("KELHOST_LOG", "none"), level("KELHOST_TRACE_LEVEL", "-1");
  EXPECT_EXIT(writeOneOfEach(), testing::ExitedWithCode(0), "^level -1\n$");
}

TEST_F(KelLogEnvironment, RefusesALevelThatIsNoNumber) {
  for (const char* const text : {"4x", " 4", "+4", "0x4", "4294967296", "four"}) {
    const ScopedEnvironment log("KELHOST_LOG", "stderr"), level("KELHOST_TRACE_LEVEL", text);
    EXPECT_EXIT(writeOneOfEach(), testing::ExitedWithCode(0), "is not a whole number; .*\nlevel 0\n");
  }
}

TEST_F(KelLogEnvironment, WritesToAFileOrSaysWhyNot) {
  const std::string path = testing::TempDir() + "kellog_test.log";
  std::remove(path.c_str());
  {
    const ScopedEnvironment log("KELHOST_LOG", path.c_str()), level("KELHOST_TRACE_LEVEL", "0");
    EXPECT_EXIT(writeOneOfEach(), testing::ExitedWithCode(0), "^level 0\n$");
  }
  std::stringstream written;
  written << std::ifstream(path).rdbuf();
  EXPECT_TRUE(
      testing::internal::RE::FullMatch(written.str(), testing::internal::RE(std::string(kTraceLine) + kEventLine)))
      << written.str();
  std::remove(path.c_str());
  const ScopedEnvironment log("KELHOST_LOG", "/dev/null/log"), level("KELHOST_TRACE_LEVEL", "0");
  EXPECT_EXIT(writeOneOfEach(), testing::ExitedWithCode(0),
              std::string("names no file that can be written.*\n.*") + kTraceLine + kEventLine);
}

}  // namespace
}  // namespace oxr::test
