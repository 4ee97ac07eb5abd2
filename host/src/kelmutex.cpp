// A POSIX mutex and condition under a recursive mutex that can be waited for with a limit.
//
// The inner mutex is held for a moment only, while free flag, owner and count are looked at or changed; who has to wait
// does so on the condition, which the last unlock signals. A failure of the system while that goes on is raised as
// KelMutexInternalException and caught in the same function: it is logged, and the caller goes on.

#include "kelmutex.hpp"

#include <sys/time.h>

#include <cerrno>

#include "kelabend.hpp"
#include "kelloginternal.hpp"

namespace {

constexpr const char* kFile = "host/src/kelmutex";
constexpr const char* kVersion = "%Z% %I% %W% %E% %U% [%H% %T%]";

[[noreturn]] void endProcess(int line, const char* text, int code, const void* mutex) {
  KelAbend::logSystemErrorAndTerminateProcessInternal(kFile, line, kVersion, text, code, {}, {}, {}, {}, mutex, false);
}

// Each of these calls returns 0 or an error number.
void requireSuccess(int line, const char* text, int code, const void* mutex) {
  if (code != 0) endProcess(line, text, code, mutex);
}

void logRelayed(int line, const char* text, const KelMutex::KelMutexInternalException& failure, const void* mutex) {
  KelAbend::logSystemErrorInternal(kFile, line, kVersion, text, failure.type(), failure.code(), {}, {}, {}, mutex,
                                   false);
}

// The point in time `milliseconds` from now.
timespec deadlineIn(int milliseconds) {
  timeval now;
  if (gettimeofday(&now, nullptr) != 0)
    throw KelMutex::KelMutexInternalException(__LINE__, kFile, KelMutex::KelMutexInternalException::systemCall, -1,
                                              errno, "gettimeofday", milliseconds);
  timespec deadline;
  deadline.tv_sec = now.tv_sec + milliseconds / 1000;
  deadline.tv_nsec = now.tv_usec * 1000L + milliseconds % 1000 * 1'000'000L;
  if (deadline.tv_nsec > 999'999'999) {
    deadline.tv_nsec -= 1'000'000'000;
    ++deadline.tv_sec;
  }
  return deadline;
}

}  // namespace

// Holds the inner mutex of a KelMutex to the end of a scope. A failure to give it back must be raised, which a
// destructor cannot do: the regular way is release().
class KelMutex::InnerLock {
 public:
  explicit InnerLock(KelMutex& mutex) : inner_(mutex.inner_) {
    const int code = pthread_mutex_lock(&inner_);
    if (code != 0) throw KelMutexInternalException(__LINE__, KelMutexInternalException::systemCall, code);
  }
  InnerLock(const InnerLock&) = delete;
  InnerLock& operator=(const InnerLock&) = delete;
  ~InnerLock() {
    if (held_) pthread_mutex_unlock(&inner_);
  }

  void release() {
    held_ = false;
    const int code = pthread_mutex_unlock(&inner_);
    if (code != 0) throw KelMutexInternalException(__LINE__, KelMutexInternalException::systemCall, code);
  }

 private:
  pthread_mutex_t& inner_;
  bool held_ = true;
};

KelMutex::KelMutex() {
  pthread_mutexattr_t mutexAttributes;
  requireSuccess(__LINE__, "pthread_mutexattr_init", pthread_mutexattr_init(&mutexAttributes), this);
  requireSuccess(__LINE__, "pthread_mutex_init", pthread_mutex_init(&inner_, &mutexAttributes), this);
  requireSuccess(__LINE__, "pthread_mutexattr_destroy", pthread_mutexattr_destroy(&mutexAttributes), this);
  pthread_condattr_t conditionAttributes;
  requireSuccess(__LINE__, "pthread_condattr_init", pthread_condattr_init(&conditionAttributes), this);
  requireSuccess(__LINE__, "pthread_cond_init", pthread_cond_init(&freed_, &conditionAttributes), this);
  requireSuccess(__LINE__, "pthread_condattr_destroy", pthread_condattr_destroy(&conditionAttributes), this);
  validity_ = 1;
}

KelMutex::~KelMutex() {
  requireSuccess(__LINE__, "~KelMutex", pthread_mutex_destroy(&inner_), this);
  requireSuccess(__LINE__, "~KelMutex", pthread_cond_destroy(&freed_), this);
  // Through a volatile reference: the object ends here, and the compiler would drop an ordinary store.
  static_cast<volatile std::uint32_t&>(validity_) = 0;
}

// Called with the inner mutex held. False when the time ran out.
bool KelMutex::waitUntilFree(int timeoutMilliseconds) {
  if (free_ == 1) return true;  // before the clock is read: it can fail
  const bool forEver = timeoutMilliseconds == kWaitForEver;
  const timespec deadline = forEver ? timespec{} : deadlineIn(timeoutMilliseconds > 0 ? timeoutMilliseconds : 0);
  while (free_ != 1) {
    const int code =
        forEver ? pthread_cond_wait(&freed_, &inner_) : pthread_cond_timedwait(&freed_, &inner_, &deadline);
    if (code == EAGAIN || code == ETIMEDOUT) return false;
    if (code != 0)
      throw KelMutexInternalException(__LINE__, kFile, KelMutexInternalException::systemCall, code, errno,
                                      "pthread_cond(timed)wait", timeoutMilliseconds);
  }
  return true;
}

bool KelMutex::lock(int timeoutMilliseconds) {
  if (validity_ == 0) endProcess(__LINE__, "Trying to lock an invalid mutex", 0, this);
  bool locked = false;
  try {
    InnerLock inner(*this);
    if (free_ != 1 && pthread_equal(owner_, pthread_self()) != 0) {
      ++recursion_;
      locked = true;
    } else if (waitUntilFree(timeoutMilliseconds)) {
      free_ = 0;
      owner_ = pthread_self();
      recursion_ = 1;
      locked = true;
    }
    inner.release();
  } catch (const KelMutexInternalException& failure) {
    failure.printException();
    logRelayed(__LINE__, "Relayed by KelMutex::lock", failure, this);
  }
  return locked;
}

bool KelMutex::unlock() {
  if (validity_ == 0) endProcess(__LINE__, "Trying to unlock an invalid mutex", 0, this);
  try {
    InnerLock inner(*this);
    if (free_ == 1 || pthread_equal(owner_, pthread_self()) == 0)
      throw KelMutexInternalException(__LINE__, KelMutexInternalException::notOwner, 0);
    if (--recursion_ == 0) {
      free_ = 1;
      owner_ = {};
      const int code = pthread_cond_signal(&freed_);
      if (code != 0) throw KelMutexInternalException(__LINE__, KelMutexInternalException::systemCall, code);
    }
    inner.release();
  } catch (const KelMutexInternalException& failure) {
    failure.printException();
    logRelayed(__LINE__, "Relayed by KelMutex::unlock", failure, this);
  }
  return true;
}

KelMutex::Mutex::Mutex(KelMutex& mutex, int timeoutMilliseconds)
    : mutex_(&mutex), locked_(mutex.lock(timeoutMilliseconds)) {}

KelMutex::Mutex::~Mutex() {
  if (locked_) mutex_->unlock();
}

void KelMutex::KelMutexInternalException::printException() const try {
  oxr::LogRecord record;
  record.kind = oxr::RecordKind::event;
  record.function = "KelMutex";
  record.file = file_;
  record.line = line_;
  record.inserts = {type_ == notOwner ? "The caller does not hold the mutex" : "A system call failed",
                    "code " + std::to_string(code_), "errno " + std::to_string(errno_)};
  if (*text_ != 0) record.inserts.push_back(text_ + (" of " + std::to_string(argument_)));
  oxr::writeRecord(record);
} catch (...) {
  // An event that finds no memory is lost; lock() and unlock() raise nothing.
}
