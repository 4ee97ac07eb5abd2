#include "kelmutex.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "host/process.hpp"
#include "kellog.hpp"

namespace oxr::test {
namespace {

// The result of `lock` in another thread, which undoes it when it was true.
bool anotherThreadGets(KelMutex& mutex, int timeoutMilliseconds) {
  bool locked = false;
  std::thread([&] {
    locked = mutex.lock(timeoutMilliseconds);
    if (locked) mutex.unlock();
  }).join();
  return locked;
}

TEST(KelMutexThreads, IsRecursiveAndHeldToTheLastUnlock) {
  KelMutex mutex;
  EXPECT_TRUE(mutex.lock());
  EXPECT_TRUE(mutex.lock(0));
  EXPECT_TRUE(mutex.unlock());
  EXPECT_FALSE(anotherThreadGets(mutex, 0));
  EXPECT_TRUE(mutex.unlock());
  EXPECT_TRUE(anotherThreadGets(mutex, 0));
}

TEST(KelMutexThreads, WaitsAsLongAsAskedAndNoLonger) {
  KelMutex mutex;
  KelMutex::Mutex held(mutex);
  ASSERT_TRUE(held.isLocked());
  const auto waited = [&](int timeoutMilliseconds) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(anotherThreadGets(mutex, timeoutMilliseconds));
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  EXPECT_LT(waited(0), 1.0);
  EXPECT_LT(waited(-2), 1.0);  // only -1 is for ever
  EXPECT_GE(waited(60), 0.05);
  EXPECT_GE(waited(1010), 1.0);  // the carry from nanoseconds to seconds
}

TEST(KelMutexThreads, WaitersGetItWhenItIsFreed) {
  KelMutex mutex;
  long sum = 0;  // plain: the mutex is what keeps the threads apart
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&] {
      for (int round = 0; round < 500; ++round) {
        KelMutex::Mutex outer(mutex), inner(mutex, 10'000);
        if (inner.isLocked()) ++sum;
      }
    });
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(sum, 2000);
}

TEST(KelMutexThreads, AForeignUnlockIsLoggedAndChangesNothing) {
  const auto sink = std::make_shared<RecordingLogSink>();
  const ScopedLogSink scope(sink);
  KelMutex mutex;
  mutex.lock();
  std::thread([&] { EXPECT_TRUE(mutex.unlock()); }).join();
  EXPECT_FALSE(anotherThreadGets(mutex, 0));
  mutex.unlock();
  ASSERT_EQ(sink->records().size(), 2u);
  EXPECT_EQ(sink->records()[0].inserts[0], "The caller does not hold the mutex");
  const std::vector<std::string>& relayed = sink->records()[1].inserts;
  EXPECT_EQ(relayed[1], "Relayed by KelMutex::unlock");
  EXPECT_EQ(relayed[2], "3");
  mutex.unlock();  // held by nobody
  EXPECT_EQ(sink->records().size(), 4u);
  EXPECT_TRUE(anotherThreadGets(mutex, 0));
}

#ifndef __SANITIZE_ADDRESS__  // the sanitizers stop the use of a stale pointer before the mutex does
using KelMutexDeathTest = OwnProcess;

TEST_F(KelMutexDeathTest, ADestroyedMutexEndsTheProcess) {
  const ScopedEnvironment log("KELHOST_LOG", "stderr");
  alignas(KelMutex) unsigned char storage[sizeof(KelMutex)];
  KelMutex* const mutex = ::new (storage) KelMutex;
  mutex->~KelMutex();
  EXPECT_DEATH(mutex->lock(), "Trying to lock an invalid mutex");
  EXPECT_DEATH(mutex->unlock(), "Trying to unlock an invalid mutex");
}
#endif

}  // namespace
}  // namespace oxr::test
