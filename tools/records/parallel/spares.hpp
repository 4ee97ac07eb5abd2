#pragma once

#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace oxr::rec {

// Things that were used and will be again: large buffers cost more to get from the system than to fill. Serves all
// threads.
template <class T>
class Spares {
 public:
  // One that was given back, as it then was; nothing if there is none.
  std::optional<T> take() {
    const std::lock_guard lock(mutex_);
    if (spares_.empty()) return std::nullopt;
    std::optional<T> spare = std::move(spares_.back());
    spares_.pop_back();
    return spare;
  }
  void giveBack(T used) {
    const std::lock_guard lock(mutex_);
    spares_.push_back(std::move(used));
  }

 private:
  std::mutex mutex_;
  std::vector<T> spares_;
};

}  // namespace oxr::rec
