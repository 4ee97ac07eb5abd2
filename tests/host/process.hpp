#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

// Tests of what happens at load and at a process's end run in a process of their own, made by running this binary
// again, so that it reads the environment anew.

namespace oxr::test {

// The environment that such a process starts with, to the end of the scope.
class ScopedEnvironment {
 public:
  ScopedEnvironment(const char* name, const char* value) : name_(name) {
    if (const char* const previous = std::getenv(name)) previous_ = previous, wasSet_ = true;
    setenv(name, value, 1);
  }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;
  ~ScopedEnvironment() { wasSet_ ? setenv(name_, previous_.c_str(), 1) : unsetenv(name_); }

 private:
  const char* name_;
  std::string previous_;
  bool wasSet_ = false;
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
