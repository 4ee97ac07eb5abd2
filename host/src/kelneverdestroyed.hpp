#pragma once

#include <cstddef>
#include <new>
#include <utility>

namespace oxr {

// A static object that outlives every other one: built in its own storage, never destroyed. For what other libraries'
// statics may still ask for while the process ends.
template <class T>
class NeverDestroyed {
 public:
  NeverDestroyed() { ::new (static_cast<void*>(storage_)) T; }
  NeverDestroyed(const NeverDestroyed&) = delete;
  NeverDestroyed& operator=(const NeverDestroyed&) = delete;
  T& get() { return *std::launder(reinterpret_cast<T*>(storage_)); }

 private:
  alignas(T) std::byte storage_[sizeof(T)];
};

}  // namespace oxr
