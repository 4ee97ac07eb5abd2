#pragma once

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include "oxrmq/feed/session.hpp"
#include "oxrmq/stop.hpp"

namespace oxr::mq {

// Cuts a file on a thread of its own, a few parts ahead of who sends them: however long the next bytes of a pipe are
// not there, the connection is looked after.
class CutAhead {
 public:
  // The next part, nothing at the end; called on the thread.
  using Cut = std::function<std::optional<rec::Chunk>()>;

  // `stop` is to end a wait for input. It is asked when the object goes.
  CutAhead(Cut cut, Stop& stop);
  CutAhead(const CutAhead&) = delete;
  CutAhead& operator=(const CutAhead&) = delete;
  ~CutAhead() { stop_.ask(); }

  // Waits a short time for the next part. Throws what cutting threw, once all parts before it were given.
  Part next();

 private:
  void keepCutting(const std::stop_token& isEnding);
  bool put(std::optional<rec::Chunk> chunk, const std::stop_token& isEnding);

  const Cut cut_;
  Stop& stop_;
  std::mutex mutex_;  // of what follows
  std::condition_variable_any changed_;
  std::deque<rec::Chunk> ready_;
  bool isAtEnd_ = false;
  std::exception_ptr failure_;
  std::jthread thread_;
};

}  // namespace oxr::mq
