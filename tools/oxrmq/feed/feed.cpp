#include "oxrmq/feed/feed.hpp"

#include <algorithm>
#include <filesystem>

#include "oxrmq/convert/conversion.hpp"
#include "oxrmq/feed/session.hpp"
#include "oxrmq/metrics.hpp"
#include "records/program/reading.hpp"
#include "records/program/settledrecords.hpp"

namespace oxr::mq {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kSaveInterval{1};
constexpr std::size_t kFingerprintBytes = 65536;

void refuse(const FeedOptions& options) {
  const rec::Framing framing = options.input.records.form.framing;
  const bool isFramed = framing != rec::Framing::fixed && framing != rec::Framing::automatic;
  if (options.record.copybook.path.empty() && !isFramed)
    throw rec::ToolError("--copybook has to tell how long a record is, unless --records says what stands around it");
  if (options.state.empty()) return;
  if (options.input.path == rec::kStandardStream) throw rec::ToolError("--resume is not for standard input");
  if (framing == rec::Framing::automatic)
    throw rec::ToolError(
        "--resume goes on in the middle of the file, where --records auto may see it otherwise: say "
        "how the records lie");
}

// The file as it is at the start.
FeedState stateOf(const FeedOptions& options, const std::string& source) {
  const rec::InputWindow whole;
  rec::FileInput file = rec::FileInput::open(options.input.path, whole);
  int size = 0;
  const char* const bytes = file.slide(0, kFingerprintBytes)->getData(&size, 0);
  const std::string_view start(bytes, std::min<std::size_t>(static_cast<std::size_t>(size), kFingerprintBytes));
  FeedState state;
  state.file = source;
  state.size = file.totalSize().value_or(0);
  state.start = fingerprint(start);
  state.bytes = options.bytes;
  state.most = options.mostRecords;
  return state;
}

// The window of the rest of the file. Throws ToolError for a state that does not fit.
rec::InputWindow restOf(const FeedOptions& options, FeedState& state) {
  rec::InputWindow window = options.input.window;
  const std::optional<FeedState> before = readState(options.state);
  if (!before) return window;
  if (const std::string why = whyNot(*before, state); !why.empty())
    throw rec::ToolError("cannot go on by " + options.state + ": " + why);
  state = *before;
  window.range = {state.offset, window.range ? window.range->end : state.size};
  window.recordsBefore = state.records;
  return window;
}

// Cuts the input: by the copybook, where one is given.
class Cutting {
 public:
  Cutting(const FeedOptions& options, rec::FileInput& input, const rec::Console& console) : input_(input) {
    if (options.record.copybook.path.empty()) {
      rec::RecordForm form = options.input.records.form;
      rec::setLineCharacters(form, options.record.plan.form.ccsid);
      cutter_.emplace(form, input, options.bytes, spares_);
    } else {
      rec::RecordOptions silent = options.record;
      silent.plan.isSilent = true;
      description_.emplace(silent, console);
      const rec::RecordPlan& plan = description_->plan();
      cutter_.emplace(plan, rec::settledRecords(options.input, plan, input, console), input, options.bytes, spares_);
    }
    if (options.mostRecords != 0) cutter_->setMostRecords(options.mostRecords);
  }

  // The next part of the file; nothing at its end, or where what follows are no records.
  std::optional<rec::Chunk> next() {
    std::optional<rec::Chunk> chunk = cutter_->next();
    if (!chunk) return std::nullopt;
    if (chunk->failure) std::rethrow_exception(chunk->failure);
    fault_ = std::move(chunk->fault);
    chunk->bytes.resize(chunk->whole);
    return chunk->bytes.empty() ? std::nullopt : std::move(chunk);
  }
  // Why the rest of the file was not cut; empty if it was.
  std::string fault() const { return fault_.empty() ? std::string() : input_.name() + ": " + fault_; }

 private:
  rec::FileInput& input_;
  rec::Spares spares_;
  std::optional<rec::Description> description_;
  std::optional<rec::RecordCutter> cutter_;
  std::string fault_;
};

// Keeps the file of --resume up to date.
class StateFile {
 public:
  StateFile(std::string path, FeedState state) : path_(std::move(path)), state_(std::move(state)) {}

  void save(const Outbox& outbox, bool isNow) {
    const Clock::time_point now = Clock::now();
    if (path_.empty() || (!isNow && now < next_)) return;
    next_ = now + kSaveInterval;
    state_.offset = outbox.upTo().offset;
    state_.records = outbox.upTo().records;
    writeState(path_, state_);
  }

 private:
  const std::string path_;
  FeedState state_;
  Clock::time_point next_{};
};

}  // namespace

int feed(const FeedOptions& options, const rec::Console& console) {
  refuse(options);
  Log log(console);
  Stop stop;
  Counters counters;
  const Surroundings around{options.broker, addressOf(options.broker), log, stop, counters};
  const std::string source =
      options.source.empty() ? std::filesystem::path(options.input.path).filename().string() : options.source;
  FeedState state;
  rec::InputWindow window = options.input.window;
  if (!options.state.empty()) {
    state = stateOf(options, source);
    window = restOf(options, state);
  }
  rec::FileInput input = rec::openInput(options.input.path, window, console);
  Cutting cutting(options, input, console);
  Outbox outbox([&] { return cutting.next(); }, {input.origin().bytes, input.origin().records});
  StateFile file(options.state, state);
  const MetricsFile metrics(options.broker.metrics, counters, log);
  const FeedSession::Settings settings{options.output, source, options.type.empty() ? kRecordsType : options.type,
                                       options.window};
  keepConnected(around, "oxrmq feed", [&](Connection& connection, Backoff& pauses) {
    FeedSession(around, settings, outbox, connection, pauses, [&] { file.save(outbox, false); }).run();
  });
  file.save(outbox, true);
  log.tell(std::to_string(counters.messagesOut) + " messages with " + std::to_string(counters.records) +
           " records sent to " + shown(options.output));
  const FeedProgress::Place upTo = outbox.upTo();
  if (!cutting.fault().empty()) throw rec::ToolError(cutting.fault());
  if (!stop.isAsked()) {
    if (outbox.isConfirmed()) return rec::kDone;
    throw rec::ToolError("the broker has not confirmed all of the file: only what is before byte " +
                         std::to_string(upTo.offset) + " is sure to be there");
  }
  log.tell("stopped at byte " + std::to_string(upTo.offset) + " of the file");
  return outbox.hasAny() ? rec::kBadField : rec::kDone;
}

}  // namespace oxr::mq
