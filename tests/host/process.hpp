#pragma once

#include <gtest/gtest.h>

#include <cstdlib>

// Tests of what happens at load and at a process's end run in a process of their own, made by running this binary
// again, so that it reads the environment anew.

namespace oxr::test {

// The environment that such a process starts with, to the end of the scope.
struct ScopedEnvironment {
  ScopedEnvironment(const char* variable, const char* value) : name(variable) { setenv(name, value, 1); }
  ~ScopedEnvironment() { unsetenv(name); }
  const char* name;
};

// Base of such tests.
class OwnProcess : public testing::Test {
 protected:
  void SetUp() override {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "no death tests under the thread sanitizer";
#endif
    GTEST_FLAG_SET(death_test_style, "threadsafe");
  }
};

}  // namespace oxr::test
