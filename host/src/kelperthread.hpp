#pragma once

#include <pthread.h>

#include <memory>
#include <new>

#include "kelforkhold.hpp"

namespace oxr {

// An object for each thread, which ends with the thread. A `thread_local` that has to be destroyed would end the
// process where the C library finds no memory to note that down; here it is std::bad_alloc. Never destroyed itself.
template <class T>
class PerThread {
 public:
  PerThread() {
    if (pthread_key_create(&key_, end) != 0) throw std::bad_alloc();
  }
  PerThread(const PerThread&) = delete;
  PerThread& operator=(const PerThread&) = delete;

  // Gives the thread's object, which `make()` makes the first time, as a std::unique_ptr<T>.
  template <class Make>
  T& get(Make make) const {
    if (void* const object = pthread_getspecific(key_)) return *static_cast<T*>(object);
    std::unique_ptr<T> made = make();
    if (pthread_setspecific(key_, made.get()) != 0) throw std::bad_alloc();
    return *made.release();
  }

 private:
  static void end(void* object) {
    const KelForkHold hold;  // the objects are ICU's
    delete static_cast<T*>(object);
  }

  pthread_key_t key_{};
};

}  // namespace oxr
