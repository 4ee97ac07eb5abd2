#include "kelforkhold.hpp"

#include <pthread.h>

#include "heldoverforks.hpp"

namespace {

// A fork that waits goes before those who come later. Else threads that hold one after the other would never let it in.
class ForkLock {
 public:
  void lock() { pthread_rwlock_wrlock(&lock_); }
  void lockShared() { pthread_rwlock_rdlock(&lock_); }
  void unlock() { pthread_rwlock_unlock(&lock_); }

 private:
  pthread_rwlock_t lock_ = PTHREAD_RWLOCK_WRITER_NONRECURSIVE_INITIALIZER_NP;
};

constinit ForkLock forkLock;
constinit thread_local int holds = 0;  // of this thread; a second lock behind a fork that waits would wait for itself
[[maybe_unused]] const bool isHeld = oxr::holdOverForks<forkLock>();

}  // namespace

KelForkHold::KelForkHold() {
  if (holds++ == 0) forkLock.lockShared();
}

KelForkHold::~KelForkHold() {
  if (--holds == 0) forkLock.unlock();
}
