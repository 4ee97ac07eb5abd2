#pragma once

#include <memory>

#include "kellog.hpp"

namespace oxr::fuzz {

// Sends every conversion its general way for as long as the object lives, if `wanted`: debug trace is on, and its
// records go nowhere. A model that agrees with both ways says that the fast one gives what the general one gives.
class GeneralWay {
 public:
  explicit GeneralWay(bool wanted) : scope_(std::make_shared<NoLog>()), level_(KelLog::iEffectiveLogFilter) {
    if (wanted) KelLog::iEffectiveLogFilter = 4;
  }
  GeneralWay(const GeneralWay&) = delete;
  GeneralWay& operator=(const GeneralWay&) = delete;
  ~GeneralWay() { KelLog::iEffectiveLogFilter = level_; }

 private:
  struct NoLog : LogSink {
    void write(const LogRecord&) override {}
  };

  ScopedLogSink scope_;
  int level_;
};

}  // namespace oxr::fuzz
