#pragma once

#include <pthread.h>

#include <cstdint>

#include "kelexport.hpp"
#include "kelheader.hpp"

// A recursive mutex whose wait can be limited. It serves any number of threads.
//
// A failure of the system ends the process in the constructor and the destructor; in lock() and unlock() it is logged
// and the caller goes on.
//
// Example:
//   KelMutex::Mutex lock(mutex);             // waits for ever, unlocks at the end of the scope
//   KelMutex::Mutex limited(mutex, 50);      // waits up to 50 milliseconds
//   if (!limited.isLocked()) return;
class KELHOST_EXPORT KelMutex {
 public:
  static constexpr int kWaitForEver = -1;  // as a number of milliseconds

  class Mutex;
  class KelMutexInternalException;

  KelMutex();
  KelMutex(const KelMutex&) = delete;
  KelMutex& operator=(const KelMutex&) = delete;
  virtual ~KelMutex();

  // Takes the mutex, or counts one more lock when the caller holds it. False when it could not be had within
  // `timeoutMilliseconds`; 0 does not wait, -1 waits for ever. A destroyed mutex ends the process.
  bool lock(int timeoutMilliseconds = kWaitForEver);

  // Undoes one lock(); the last one frees the mutex. True, also for a caller that does not hold the mutex: that is
  // logged as a system error, and the mutex stays as it is. A destroyed mutex ends the process.
  bool unlock();

 private:
  class InnerLock;
  bool waitUntilFree(int timeoutMilliseconds);

  objectHeader header_{"HSMX", 8, 144};
  std::uint32_t validity_ = 0;  // 1 from the end of the constructor to the end of the destructor
  pthread_mutex_t inner_;       // guards what follows; held for a moment only
  pthread_cond_t freed_;
  int free_ = 1;
  pthread_t owner_{};  // of meaning while free_ is 0
  unsigned recursion_ = 0;
};

// Holds a KelMutex to the end of a scope.
class KELHOST_EXPORT KelMutex::Mutex {
 public:
  // Locks `mutex`, which must outlive this object.
  explicit Mutex(KelMutex& mutex, int timeoutMilliseconds = kWaitForEver);
  Mutex(const Mutex&) = delete;
  Mutex& operator=(const Mutex&) = delete;
  ~Mutex();

  // False when the time ran out.
  bool isLocked() const { return locked_; }

 private:
  objectHeader header_{"HSMG", 0, 32};
  KelMutex* mutex_;
  bool locked_;
};

// A failure inside lock() or unlock(). It never leaves them.
class KELHOST_EXPORT KelMutex::KelMutexInternalException {
 public:
  // What failed: a call of the system, or the caller does not hold the mutex.
  enum excType { systemCall = 1, notOwner = 3 };

  // Takes the source line and the result, of a call that it does not name.
  KelMutexInternalException(int line, excType type, int code)
      : KelMutexInternalException(line, "", type, code, 0, "", 0) {}
  // `code` is what the failing call returned; `text` names the call and `argument` is what it was given.
  KelMutexInternalException(int line, const char* file, excType type, int code, int errnoValue, const char* text,
                            int argument)
      : line_(line), file_(file), type_(type), code_(code), errno_(errnoValue), text_(text), argument_(argument) {}

  excType type() const { return type_; }  // what failed
  int code() const { return code_; }      // what the failing call returned

  // Writes an event with all of it to the host's log.
  void printException() const;

 private:
  int line_;
  const char* file_;
  excType type_;
  int code_;
  int errno_;
  const char* text_;
  int argument_;
};
