#pragma once

#include <mutex>
#include <string>

#include "records/program/console.hpp"

namespace oxr::mq {

// The messages of all threads, a line each.
class Log {
 public:
  explicit Log(const rec::Console& console) : console_(console) {}

  void tell(const std::string& text) {
    const std::lock_guard lock(mutex_);
    console_.messages << console_.program << ": " << text << std::endl;
  }

 private:
  const rec::Console& console_;
  std::mutex mutex_;
};

}  // namespace oxr::mq
