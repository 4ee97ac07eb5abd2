#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include "harness/tracing.hpp"
#include "host/process.hpp"
#include "kelabend.hpp"
#include "kelalloc.hpp"
#include "kelbuffer.hpp"
#include "kellocale.hpp"
#include "kelutility.hpp"
#include "kelwstringconvertor.hpp"

namespace oxr::test {
namespace {

// Windows are held against a model: fuzz/host/kelbuffer_check.hpp.
TEST(KelBuffer, CountsLocksAndLimitsNoWindowToTheBound) {
  static constexpr char kBytes[] = "0123456789";
  KelBuffer buffer(kBytes, 10);
  for (const int offset : {1, 2, 1})
    buffer.lockOffset(offset);
  for (const int offset : {1, 3, 2})  // 3 is not held
    buffer.unlockOffset(offset);
  EXPECT_TRUE(buffer.isLocked(1) && !buffer.isLocked(2));
  KelBufferPointer bounded(&buffer, 3, 4, false), none(nullptr, 2, 3, true);
  EXPECT_TRUE(bounded.moveOffsetWindow(0, 2, false) && bounded.getOffsetPointer(1) == kBytes + 1);
  EXPECT_TRUE(none.hasNoLock() && !none.offsetAvailable(2) && !none.moveOffsetWindow(0, 1, true));
  EXPECT_TRUE(none.moveOffsetWindow(0, 0, false) && none.getEndPointer() == nullptr);
}

TEST(KelUtility, KnowsDigits) {
  EXPECT_TRUE(KelUtility::isDigit('0') && KelUtility::isDigit('9'));
  EXPECT_FALSE(KelUtility::isDigit('0' - 1) || KelUtility::isDigit('9' + 1));
  // An arabic five and a full-width zero; a circled one is a number, no decimal digit.
  EXPECT_TRUE(KelUtility::isDigit(u'\u0665') && KelUtility::isDigit(u'\uFF10') && !KelUtility::isDigit(u'\u2460'));
}

TEST(KelAlloc, TellsTheHandlerThatMemoryIsOut) {
  EXPECT_EQ(tracedAt(0, [] { EXPECT_THROW(kelMalloc(std::size_t{1} << 62), std::bad_alloc); }),
            "KelAbend::newHandler: Out of memory\n");
}

using KelAbendDeathTest = OwnProcess;

TEST_F(KelAbendDeathTest, EndsTheProcessAfterAnEventWithWhatCarriesSomething) {
  const ScopedEnvironment log("KELHOST_LOG", "stderr");
  EXPECT_EXIT(KelAbend::logSystemErrorAndTerminateProcessInternal("src/x", 9, "%Z%", "why", 12, {}, -3L,
                                                                  static_cast<const char*>(nullptr), {},
                                                                  reinterpret_cast<const void*>(0x1A0), false),
              testing::KilledBySignal(SIGABRT), "event KelAbend \\(src/x:9\\): System error; why; 12; -3; 0x1a0\n");
}

using KelLocaleEnvironment = OwnProcess;

TEST_F(KelLocaleEnvironment, FollowsLcAll) {
  const auto show = [] {
    KelLocale::initialiseExtendedInformation();
    const unsigned short* const characters = KelLocale::iSymbols.characters();  // may be held by pointer
    KelLocale::initialiseExtendedInformation();
    if (characters != KelLocale::iSymbols.characters()) std::abort();
    std::fputs((toUtf8(KelLocale::iLocale) + ' ' + toUtf8(KelLocale::iSymbols)).c_str(), stderr);
    std::exit(0);
  };
  for (const auto& [lcAll, expected] : {std::pair("de_DE.UTF-8", "^de_DE ,$"), {"C", "^en_US_POSIX \\.$"}}) {
    const ScopedEnvironment locale("LC_ALL", lcAll);
    EXPECT_EXIT(show(), testing::ExitedWithCode(0), expected);
  }
}

}  // namespace
}  // namespace oxr::test
