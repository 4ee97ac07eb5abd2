#pragma once

#include <gtest/gtest.h>
#include <unicode/locid.h>

#include <cstdio>
#include <cstdlib>

// What a process does once, such as to take a locale, is tested in a process of its own.
namespace oxr::test {

// The failed expectations of this test, which gtest keeps to itself in a process of a death test.
inline int reportFailures() {
  const ::testing::TestResult& result = *::testing::UnitTest::GetInstance()->current_test_info()->result();
  for (int i = 0; i < result.total_part_count(); ++i)
    if (result.GetTestPartResult(i).failed()) std::fputs(result.GetTestPartResult(i).message(), stderr);
  return result.Failed() ? 1 : 0;
}

// Runs `body` in a process of its own; fails where an expectation in it does.
template <class F>
void inANewProcess(F body) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        body();
        std::exit(reportFailures());
      },
      ::testing::ExitedWithCode(0), "");
}

// Makes it ICU's default locale.
inline void useLocale(const char* name) {
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale::setDefault(icu::Locale(name), status);
}

}  // namespace oxr::test
