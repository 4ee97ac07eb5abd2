#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "host/process.hpp"
#include "kelabend.hpp"
#include "kelalloc.hpp"
#include "kelheader.hpp"
#include "kellocale.hpp"
#include "kellog.hpp"
#include "kelutility.hpp"
#include "kelwstringconvertor.hpp"

namespace oxr::test {
namespace {

TEST(ObjectHeader, MarksTheLivingAndTheDead) {
  alignas(objectHeader) unsigned char storage[sizeof(objectHeader)];
  const unsigned char* volatile dump = storage;  // hides from the compiler that the object is dead
  objectHeader* const header = ::new (storage) objectHeader("QVDC", 32, 320);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(storage), 8), ">OXRQVDC");
  EXPECT_EQ(header->start, 32u);
  EXPECT_EQ(header->end, 320u);
  header->~objectHeader();
  EXPECT_EQ(*dump, '0');
}

TEST(KelUtility, KnowsDigits) {
  for (unsigned c = 0; c <= 0xFF; ++c)
    EXPECT_EQ(KelUtility::isDigit(static_cast<unsigned short>(c)), c >= '0' && c <= '9') << c;
  EXPECT_TRUE(KelUtility::isDigit(u'\u0665'));   // arabic five
  EXPECT_TRUE(KelUtility::isDigit(u'\uFF10'));   // full-width zero
  EXPECT_FALSE(KelUtility::isDigit(u'\u2460'));  // circled one: a number, no decimal digit
}

TEST(KelAlloc, GivesABlockOrTellsTheHandler) {
  oxr::KelBlock<unsigned short> units = oxr::allocateBlock<unsigned short>(100);
  units[99] = 1;
  std::free(units.release());  // a taker releases it so
  const std::unique_ptr<void, oxr::FreeBlock> none(kelMalloc(0));
  EXPECT_NE(none, nullptr);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // their allocators end the process instead
  const auto sink = std::make_shared<RecordingLogSink>();
  const ScopedLogSink scope(sink);
  EXPECT_THROW(kelMalloc(ULONG_MAX / 2), std::bad_alloc);
  ASSERT_EQ(sink->records().size(), 1u);
  EXPECT_EQ(sink->records()[0].function, "KelAbend::newHandler");
#endif
}

TEST(KelAbend, LogsTheInsertsThatCarrySomething) {
  const auto sink = std::make_shared<RecordingLogSink>();
  const ScopedLogSink scope(sink);
  const int object = 0;
  KelAbend::logSystemErrorInternal("src/x", 9, "%Z%", "text", 12, {}, -3L, static_cast<const char*>(nullptr), {},
                                   &object, false);
  ASSERT_EQ(sink->records().size(), 1u);
  const LogRecord& record = sink->records()[0];
  EXPECT_EQ(record.file + ':' + std::to_string(record.line), "src/x:9");
  EXPECT_EQ(record.kind, RecordKind::event);
  ASSERT_EQ(record.inserts.size(), 5u);
  EXPECT_EQ(std::vector<std::string>(record.inserts.begin(), record.inserts.begin() + 4),
            (std::vector<std::string>{"System error", "text", "12", "-3"}));
  EXPECT_EQ(KelAbend::Insert().tag(), KelAbend::Insert::Tag::none);
}

using KelAbendDeathTest = OwnProcess;

TEST_F(KelAbendDeathTest, EndsTheProcessAfterTheEvent) {
  const ScopedEnvironment log("KELHOST_LOG", "stderr");
  EXPECT_EXIT(
      KelAbend::logSystemErrorAndTerminateProcessInternal("src/x", 9, "", "why", 12, {}, {}, {}, {}, nullptr, false),
      testing::KilledBySignal(SIGABRT), "event KelAbend \\(src/x:9\\): System error; why; 12");
}

TEST(KelLocaleThreads, IsSetOnceForAll) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([] {
      if (!KelLocale::symbolsInitialised) KelLocale::initialiseExtendedInformation();
      EXPECT_TRUE(KelLocale::symbolsInitialised);
      EXPECT_GE(KelLocale::iSymbols.length(), 1u);
    });
  for (std::thread& thread : threads)
    thread.join();
  const unsigned short* const characters = KelLocale::iSymbols.characters();
  KelLocale::initialiseExtendedInformation();
  EXPECT_EQ(KelLocale::iSymbols.characters(), characters);  // may be held by pointer
}

using KelLocaleEnvironment = OwnProcess;

TEST_F(KelLocaleEnvironment, FollowsLcAll) {
  const struct {
    const char *lcAll, *expected;
  } rows[] = {{"de_DE.UTF-8", "^de_DE ,$"}, {"en_GB.UTF-8", "^en_GB \\.$"}, {"C", "^en_US_POSIX \\.$"}};
  for (const auto& row : rows) {
    const ScopedEnvironment locale("LC_ALL", row.lcAll);
    EXPECT_EXIT(
        {
          KelLocale::initialiseExtendedInformation();
          const std::string text = toUtf8(KelLocale::iLocale) + ' ' + toUtf8(KelLocale::iSymbols);
          std::fputs(text.c_str(), stderr);
          std::_Exit(0);
        },
        testing::ExitedWithCode(0), row.expected);
  }
}

}  // namespace
}  // namespace oxr::test
