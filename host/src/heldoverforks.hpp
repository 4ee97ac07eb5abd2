#pragma once

#include <pthread.h>

#include <new>
#include <type_traits>

namespace oxr {

// The priority of a function that calls the following; what has none runs later.
inline constexpr int kNotedFirst = 200;

// A process that forks has one thread in the child: a lock that another thread held at that moment would stay held
// there for good. This takes the lock before each fork and gives it back afterwards, so that the child finds it free
// and what it guards whole. The child gets a new one: the old one may still count threads that waited for it. To be
// called once, when the library is loaded; the lock is a global object.
//
// No thread may take one such lock while it holds another one, and none may fork while it holds one. Only the lock of
// KelForkHold may be held meanwhile: the others are noted before it, by functions of kNotedFirst, and so taken after
// it.
template <auto& kMutex>
bool holdOverForks() {
  using Mutex = std::remove_reference_t<decltype(kMutex)>;
  if (::pthread_atfork([] { kMutex.lock(); }, [] { kMutex.unlock(); }, [] { ::new (&kMutex) Mutex; }) != 0)
    throw std::bad_alloc();
  return true;
}

}  // namespace oxr
