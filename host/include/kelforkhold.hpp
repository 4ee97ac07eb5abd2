#pragma once

#include <atomic>

#include "kelexport.hpp"

// Keeps the process from forking to the end of a scope. It is for calls of libraries that take locks of their own, or
// do some work once a process: a child that was made meanwhile would find the locks taken and the work half done, for
// good. Any number of threads may hold at a time; a fork waits for those that do. One that holds may hold again, but
// must not fork.
class KELHOST_EXPORT KelForkHold {
 public:
  KelForkHold();
  KelForkHold(const KelForkHold&) = delete;
  KelForkHold& operator=(const KelForkHold&) = delete;
  ~KelForkHold();
};

namespace oxr {

// What `kMake()` gives when it is called for the first time. It stays to the end of the process, and no fork comes
// while it is made: a static object alone would leave a child waiting for the thread that makes it.
template <auto kMake>
auto& madeOnce() {
  using Made = decltype(kMake());
  constinit static std::atomic<Made*> kept = nullptr;
  if (Made* const known = kept.load(std::memory_order_acquire)) return *known;
  const KelForkHold hold;
  static Made* const made = new Made(kMake());
  kept.store(made, std::memory_order_release);
  return *made;
}

}  // namespace oxr
