#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace oxr::rec {

// Strings that were used and will be again: large ones cost more to get from the system than to fill. Serves all
// threads.
class Spares {
 public:
  // An empty string, with the room of one that was given back if there is one.
  std::string take() {
    const std::lock_guard lock(mutex_);
    if (strings_.empty()) return {};
    std::string spare = std::move(strings_.back());
    strings_.pop_back();
    return spare;
  }
  void giveBack(std::string&& used) {
    used.clear();
    const std::lock_guard lock(mutex_);
    strings_.push_back(std::move(used));
  }

 private:
  std::mutex mutex_;
  std::vector<std::string> strings_;
};

}  // namespace oxr::rec
