#include "oxrmq/feed/session.hpp"

#include <new>
#include <utility>

#include "records/framing/errors.hpp"

namespace oxr::mq {

namespace {

constexpr std::chrono::milliseconds kLook{200};  // so soon it is seen that an end is asked for

}  // namespace

std::optional<rec::Chunk> Outbox::next() {
  if (isLost_) throw rec::ToolError("out of memory for what was on its way");
  if (again_.empty()) cut();
  if (again_.empty()) return std::nullopt;
  std::optional<rec::Chunk> chunk(std::move(again_.front()));
  again_.pop_front();
  return chunk;
}

// What was cut and then lost would never be sent, so there is no going on without memory.
void Outbox::cut() {
  if (isAtEnd_) return;
  try {
    Part part = take_();
    isAtEnd_ = part.isEnd;
    if (!part.chunk) return;
    const rec::Chunk& chunk = *part.chunk;
    progress_.sent(beginOf(chunk), {chunk.origin.bytes + chunk.bytes.size(), chunk.origin.records + chunk.records});
    again_.push_back(*std::move(part.chunk));
  } catch (const std::bad_alloc&) {
    throw rec::ToolError("out of memory where the file is cut");
  }
}

void Outbox::giveBack(std::vector<rec::Chunk> chunks) {
  again_.insert(again_.begin(), std::make_move_iterator(chunks.begin()), std::make_move_iterator(chunks.end()));
}

FeedSession::FeedSession(const Surroundings& around, const Settings& settings, Outbox& outbox, Connection& connection,
                         Backoff& pauses, std::function<void()> confirmed)
    : around_(around),
      settings_(settings),
      outbox_(outbox),
      connection_(connection),
      pauses_(pauses),
      confirmed_(std::move(confirmed)),
      notTakenPauses_(pauses) {}

FeedSession::~FeedSession() {
  try {
    outbox_.giveBack(published_.takeAll());
  } catch (const std::bad_alloc&) {
    outbox_.lost();
  }
}

void FeedSession::run() {
  prepareTarget(around_.options, connection_, settings_.output);
  while (!isDone()) {
    drain(maySend() ? std::chrono::milliseconds(0) : kLook);
    if (!maySend()) continue;
    if (std::optional<rec::Chunk> chunk = outbox_.next()) publish(std::move(*chunk));
  }
}

bool FeedSession::isDone() {
  if (published_.size() == 0 && !outbox_.hasAny()) return true;
  if (!around_.stop.isAsked()) return false;
  return published_.size() == 0 || around_.stop.isOver();
}

bool FeedSession::maySend() const {
  return outbox_.hasAny() && published_.size() < settings_.window && !isBlocked_ && !around_.stop.isAsked() &&
         Clock::now() >= notBefore_;
}

void FeedSession::drain(std::chrono::milliseconds wait) {
  const Stopwatch watch(around_.counters.waitingNanoseconds);
  while (std::optional<Event> event = connection_.next(wait)) {
    std::visit([this](const auto& given) { take(given); }, *event);
    wait = std::chrono::milliseconds(0);
  }
}

void FeedSession::take(const Answer& answer) {
  std::vector<rec::Chunk> settled = published_.settle(answer.number, answer.isForAllBefore);
  if (!answer.isTaken) {
    around_.counters.notTaken += settled.size();
    outbox_.giveBack(std::move(settled));
    if (Clock::now() < notBefore_) return;
    const Backoff::Pause pause = notTakenPauses_.next();
    notBefore_ = Clock::now() + pause;
    if (pause > Backoff::kFirst)
      around_.log.tell("the broker takes no message for " + shown(settings_.output) + " at present; trying again");
    return;
  }
  pauses_.reset();
  notTakenPauses_.reset();
  for (const rec::Chunk& chunk : settled) {
    outbox_.confirmed(chunk);
    ++around_.counters.messagesOut;
    around_.counters.records += chunk.records;
    around_.counters.bytesOut += chunk.bytes.size();
  }
  confirmed_();
}

void FeedSession::take(const Returned& returned) {
  throw BrokerRefused(shown(settings_.output) + " leads to no queue: " + returned.text);
}

void FeedSession::take(const Blocked& blocked) {
  isBlocked_ = blocked.reason.has_value();
  if (isBlocked_) ++around_.counters.blocked;
  around_.log.tell(isBlocked_ ? "the broker asks for a pause: " + *blocked.reason : "the broker goes on");
}

// The window has the message before the broker: if publishing fails half way, it goes back to the outbox.
void FeedSession::publish(rec::Chunk&& taken) {
  const Stopwatch watch(around_.counters.publishingNanoseconds);
  const rec::Chunk& chunk = published_.add(connection_.nextNumber(), std::move(taken));
  Properties properties;
  properties.setContentType(settings_.type);
  properties.setMessageId(settings_.ids.at(chunk.origin.bytes, chunk.bytes));
  properties.setHeader(kFileHeader, settings_.source);
  properties.setHeader(kRecordHeader, static_cast<std::int64_t>(chunk.origin.records + 1));
  properties.setHeader(kOffsetHeader, static_cast<std::int64_t>(chunk.origin.bytes));
  properties.setHeader(kCountHeader, static_cast<std::int64_t>(chunk.records));
  connection_.publish(settings_.output, properties, chunk.bytes);
}

}  // namespace oxr::mq
