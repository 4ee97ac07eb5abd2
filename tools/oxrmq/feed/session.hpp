#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <optional>

#include "oxrmq/amqp/backoff.hpp"
#include "oxrmq/amqp/confirms.hpp"
#include "oxrmq/feed/feedstate.hpp"
#include "oxrmq/reconnecting.hpp"
#include "records/parallel/recordcutter.hpp"

namespace oxr::mq {

// What is cut of a file at a time, if it is there by now; `isEnd` if nothing is left.
struct Part {
  std::optional<rec::Chunk> chunk{};
  bool isEnd = false;
};

// Messages that are to be published, across connections: those that were not confirmed on a connection that was lost
// come first again.
class Outbox {
 public:
  // Gives the next part of the file.
  using Take = std::function<Part()>;
  Outbox(Take take, FeedProgress::Place start) : take_(std::move(take)), progress_(start) {}

  // Nothing if the next part is not there yet, too. Throws ToolError if memory runs out, or did.
  std::optional<rec::Chunk> next();
  // To be sent again, before all others.
  void giveBack(std::vector<rec::Chunk> chunks);
  // Without memory to keep what is to be sent again, nothing can be sent any more.
  void lost() { isLost_ = true; }
  void confirmed(const rec::Chunk& chunk) { progress_.confirmed(beginOf(chunk)); }
  bool hasAny() const { return !isAtEnd_ || !again_.empty(); }
  // All before it is confirmed.
  FeedProgress::Place upTo() const { return progress_.upTo(); }
  // Whether all that was cut is confirmed.
  bool isConfirmed() const { return progress_.isConfirmed(); }

 private:
  void cut();
  static FeedProgress::Place beginOf(const rec::Chunk& chunk) { return {chunk.origin.bytes, chunk.origin.records}; }

  const Take take_;
  FeedProgress progress_;
  std::deque<rec::Chunk> again_;
  bool isAtEnd_ = false;
  bool isLost_ = false;
};

// The work of a feed on one connection.
class FeedSession {
 public:
  struct Settings {
    const Target& output;
    std::string source;  // what messages call the file
    std::string type;    // their content type
    MessageIds ids;
    std::uint32_t window;
  };

  // `confirmed` is called after each confirmation.
  FeedSession(const Surroundings& around, const Settings& settings, Outbox& outbox, Connection& connection,
              Backoff& pauses, std::function<void()> confirmed);
  // What is not confirmed goes back to the outbox.
  ~FeedSession();

  // Returns when all is confirmed, or when an end is asked for and what was on its way is confirmed, or is not in time.
  // Throws BrokerGone and BrokerRefused.
  void run();

 private:
  using Clock = std::chrono::steady_clock;

  bool isDone();
  bool maySend() const;
  void drain(std::chrono::milliseconds wait);
  void take(const Answer& answer);
  void take(const Returned& returned);
  void take(const Blocked& blocked);
  void take(const Delivery&) {}
  void publish(rec::Chunk&& taken);

  const Surroundings& around_;
  const Settings& settings_;
  Outbox& outbox_;
  Connection& connection_;
  Backoff& pauses_;
  const std::function<void()> confirmed_;
  Backoff notTakenPauses_;
  ConfirmWindow<rec::Chunk> published_;
  bool isBlocked_ = false;
  Clock::time_point notBefore_{};
};

}  // namespace oxr::mq
