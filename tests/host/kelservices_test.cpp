#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "harness/tracing.hpp"
#include "host/process.hpp"
#include "kelabend.hpp"
#include "kelalloc.hpp"
#include "kellocale.hpp"
#include "kelutility.hpp"
#include "kelwstringconvertor.hpp"

namespace oxr::test {
namespace {

TEST(KelUtility, KnowsDigits) {
  for (unsigned c = 0; c <= 0xFF; ++c)
    EXPECT_EQ(KelUtility::isDigit(static_cast<unsigned short>(c)), c >= '0' && c <= '9') << c;
  // An arabic five and a full-width zero; a circled one is a number, no decimal digit.
  EXPECT_TRUE(KelUtility::isDigit(u'\u0665') && KelUtility::isDigit(u'\uFF10') && !KelUtility::isDigit(u'\u2460'));
}

TEST(KelAlloc, GivesABlockOrTellsTheHandler) {
  KelBlock<unsigned short> units = allocateBlock<unsigned short>(100);
  units[99] = 1;
  std::free(units.release());  // a taker releases it so
  EXPECT_NE((std::unique_ptr<void, FreeBlock>(kelMalloc(0))), nullptr);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // their allocators end the process instead
  EXPECT_EQ(tracedAt(0, [] { EXPECT_THROW(kelMalloc(ULONG_MAX / 2), std::bad_alloc); }),
            "KelAbend::newHandler: Out of memory\n");
#endif
}

using KelAbendDeathTest = OwnProcess;

TEST_F(KelAbendDeathTest, EndsTheProcessAfterAnEventWithWhatCarriesSomething) {
  const ScopedEnvironment log("KELHOST_LOG", "stderr");
  EXPECT_EXIT(KelAbend::logSystemErrorAndTerminateProcessInternal("src/x", 9, "%Z%", "why", 12, {}, -3L,
                                                                  static_cast<const char*>(nullptr), {},
                                                                  reinterpret_cast<const void*>(0x1A0), false),
              testing::KilledBySignal(SIGABRT), "event KelAbend \\(src/x:9\\): System error; why; 12; -3; 0x1a0\n");
}

TEST(KelLocaleThreads, IsSetOnceForAll) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([] {
      if (!KelLocale::symbolsInitialised) KelLocale::initialiseExtendedInformation();
      EXPECT_TRUE(KelLocale::symbolsInitialised && KelLocale::iSymbols.length() >= 1);
    });
  for (std::thread& thread : threads)
    thread.join();
  const unsigned short* const characters = KelLocale::iSymbols.characters();
  KelLocale::initialiseExtendedInformation();
  EXPECT_EQ(KelLocale::iSymbols.characters(), characters);  // may be held by pointer
}

using KelLocaleEnvironment = OwnProcess;

TEST_F(KelLocaleEnvironment, FollowsLcAll) {
  const auto show = [] {
    KelLocale::initialiseExtendedInformation();
    std::fputs((toUtf8(KelLocale::iLocale) + ' ' + toUtf8(KelLocale::iSymbols)).c_str(), stderr);
    std::_Exit(0);
  };
  for (const auto& [lcAll, expected] :
       {std::pair("de_DE.UTF-8", "^de_DE ,$"), {"en_GB.UTF-8", "^en_GB \\.$"}, {"C", "^en_US_POSIX \\.$"}}) {
    const ScopedEnvironment locale("LC_ALL", lcAll);
    EXPECT_EXIT(show(), testing::ExitedWithCode(0), expected);
  }
}

}  // namespace
}  // namespace oxr::test
