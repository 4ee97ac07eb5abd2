#pragma once

#include <memory>

#include "fuzz/harness/choices.hpp"
#include "kellog.hpp"
#include "support/fastway.hpp"

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

// What `call` gives the general way.
template <class Call>
auto theGeneralWay(Call call) {
  const GeneralWay way(true);
  return call();
}

// What `call` gives as it is; no guard may send it the general way.
template <class Call>
auto theFastWay(Call call) {
  const std::uint64_t before = generalWaysTaken();
  auto result = call();
  requireEqual(generalWaysTaken(), before, "the general ways taken where a fast one should serve");
  return result;
}

}  // namespace oxr::fuzz
