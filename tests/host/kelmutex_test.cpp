#include "kelmutex.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <new>
#include <thread>
#include <vector>

#include "harness/tracing.hpp"
#include "host/process.hpp"

namespace oxr::test {
namespace {

// The result of `lock` in another thread, which undoes it when it was true.
bool anotherThreadGets(KelMutex& mutex, int timeoutMilliseconds) {
  bool locked = false;
  std::jthread([&] { locked = mutex.lock(timeoutMilliseconds) && mutex.unlock(); });
  return locked;
}

TEST(KelMutexThreads, IsRecursiveAndHeldToTheLastUnlock) {
  KelMutex mutex;
  EXPECT_TRUE(mutex.lock() && mutex.lock(0) && mutex.unlock());
  EXPECT_FALSE(anotherThreadGets(mutex, 0));
  EXPECT_TRUE(mutex.unlock() && anotherThreadGets(mutex, 0));

  long sum = 0;  // plain: the mutex is what keeps the threads apart, and who waits gets it
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&] {
      for (int round = 0; round < 500; ++round) {
        KelMutex::Mutex outer(mutex), inner(mutex, 10'000);
        if (inner.isLocked()) ++sum;
      }
    });
  threads.clear();
  EXPECT_EQ(sum, 2000);
}

TEST(KelMutexThreads, WaitsAsLongAsAskedAndNoLonger) {
  KelMutex mutex;
  const KelMutex::Mutex held(mutex);
  // Milliseconds, and the seconds that take at least and at most; only -1 is for ever. The last carries nanoseconds.
  for (const auto& [timeout, least] : {std::pair(0, 0.0), {-2, 0.0}, {60, 0.05}, {1010, 1.0}}) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(anotherThreadGets(mutex, timeout));
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_TRUE(seconds >= least && seconds < least + 1.0) << timeout << ": " << seconds;
  }
}

TEST(KelMutexThreads, AForeignUnlockIsLoggedAndChangesNothing) {
  KelMutex mutex;
  mutex.lock();
  EXPECT_THAT(tracedAt(0, [&] { std::jthread([&] { EXPECT_TRUE(mutex.unlock()); }); }),
              testing::StartsWith("KelMutex: The caller does not hold the mutex|code 0|errno 0\n"
                                  "KelAbend: System error|Relayed by KelMutex::unlock|3|0|"));
  EXPECT_FALSE(anotherThreadGets(mutex, 0));
  mutex.unlock();
  EXPECT_NE(tracedAt(0, [&] { mutex.unlock(); }), "");  // held by nobody
  EXPECT_TRUE(anotherThreadGets(mutex, 0));
}

using KelMutexDeathTest = OwnProcess;

TEST_F(KelMutexDeathTest, ADestroyedMutexEndsTheProcess) {
  const ScopedEnvironment log("KELHOST_LOG", "stderr");
  alignas(KelMutex) unsigned char storage[sizeof(KelMutex)];
  KelMutex* const mutex = ::new (storage) KelMutex;
  mutex->~KelMutex();
  EXPECT_DEATH(mutex->lock(), "Trying to lock an invalid mutex");
  EXPECT_DEATH(mutex->unlock(), "Trying to unlock an invalid mutex");
}

}  // namespace
}  // namespace oxr::test
