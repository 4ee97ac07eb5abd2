#include "oxrmq/feed/feed.hpp"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "oxrmq/convert/conversion.hpp"
#include "oxrmq/feed/cutahead.hpp"
#include "oxrmq/feed/session.hpp"
#include "oxrmq/feed/waitinginput.hpp"
#include "oxrmq/metrics.hpp"
#include "records/program/reading.hpp"
#include "records/program/settledrecords.hpp"
#include "records/smallfile.hpp"

namespace oxr::mq {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kSaveInterval{1};
constexpr std::size_t kFingerprintBytes = 65536;
constexpr std::size_t kMessageBytes = 65536;

// Not a file whose bytes can be read twice.
bool isStream(const std::string& path) {
  return path == rec::kStandardStream || (std::filesystem::exists(path) && !std::filesystem::is_regular_file(path));
}

std::string sourceOf(const FeedOptions& options) {
  if (!options.source.empty()) return options.source;
  if (isStream(options.input.path))
    throw rec::ToolError(
        "--source has to give a name to what comes in, for the ids of the messages: another one for "
        "other bytes");
  return std::filesystem::path(options.input.path).filename().string();
}

void refuseLong(const std::string& source) {
  if (source.size() > kLongestFileName)
    throw rec::ToolError("--source has to give a name of " + std::to_string(kLongestFileName) +
                         " bytes or less, for the ids of the messages");
}

// 0 for any number.
std::size_t bytesOfMessage(const FeedOptions& options) {
  return options.bytes == 0 && options.mostRecords == 0 ? kMessageBytes : options.bytes;
}

void refuse(const FeedOptions& options) {
  const rec::Framing framing = options.input.records.form.framing;
  const bool isFramed = framing != rec::Framing::fixed && framing != rec::Framing::automatic;
  if (options.record.copybook.path.empty() && !isFramed)
    throw rec::ToolError("--copybook has to tell how long a record is, unless --records says what stands around it");
  if (options.state.empty()) return;
  if (isStream(options.input.path)) throw rec::ToolError("--resume is not for standard input");
  if (framing == rec::Framing::automatic)
    throw rec::ToolError(
        "--resume goes on in the middle of the file, where --records auto may see it otherwise: say "
        "how the records lie");
}

// The copybook as far as it is needed, if one is given.
std::optional<rec::Description> describe(const FeedOptions& options, const rec::Console& console) {
  if (options.record.copybook.path.empty()) return std::nullopt;
  rec::RecordOptions silent = options.record;
  silent.plan.isSilent = true;
  return std::optional<rec::Description>(std::in_place, silent, console);
}

// All that tells where records lie, and which of them are fed, beside the bytes of the file.
std::string formOf(const FeedOptions& options, const std::optional<rec::Description>& description) {
  const rec::RecordForm& records = options.input.records.form;
  const rec::InputWindow& window = options.input.window;
  const rec::CopybookOptions& copybook = options.record.copybook.options;
  const rec::RecordPlan::Options& plan = options.record.plan;
  const rec::PhysicalForm& form = plan.form;
  std::ostringstream text;
  const auto add = [&text](const auto&... values) { ((text << values << '\n'), ...); };
  add(static_cast<int>(records.framing), records.countsHeader ? static_cast<int>(*records.countsHeader) : -1);
  add(window.skipHeader, window.skipTrailer, window.recordsBefore);
  if (window.range) add(window.range->begin, window.range->end);
  add(static_cast<int>(copybook.format), copybook.record, static_cast<int>(copybook.binarySizes),
      static_cast<int>(copybook.dialect), plan.arraysAtFullSize);
  for (const std::string& condition : plan.conditions)
    add(condition);
  for (const rec::FieldSettingText& setting : plan.fieldSettings)
    add(setting.text);
  add(form.ccsid, static_cast<int>(form.integerEndian), form.hasLetterSigns, form.nationalCcsid,
      static_cast<int>(form.blankNumbers), static_cast<int>(form.lowValues), form.lenientNumbers,
      static_cast<int>(form.sign), static_cast<int>(form.packedSign));
  if (description)
    for (const std::string& file : description->plan().layout().fileNames)
      if (std::filesystem::is_regular_file(file))  // a pipe was read already
        add(rec::readSmallFile(file, rec::kMaxCopybookBytes));
  return text.str();
}

// What is written must be nothing that is read, and the state must be one that can be written: it is too late when
// messages are on their way.
void refuseOutputs(const FeedOptions& options, const std::optional<rec::Description>& description) {
  std::vector<std::string> inputs = filesOf(options.broker);
  inputs.push_back(options.input.path == rec::kStandardStream ? "/dev/stdin" : options.input.path);
  if (description) inputs.insert(inputs.end(), description->files().begin(), description->files().end());
  refuseInputs(options.state, inputs);
  if (!options.state.empty()) rec::FileOutput::open(options.state, {}, -1);
  inputs.push_back(options.state);
  refuseInputs(options.broker.metrics, inputs);
}

// A stream, of which nothing is known before it is read.
FeedState stateOf(const FeedOptions& options, const std::string& source,
                  const std::optional<rec::Description>& description) {
  FeedState state;
  state.file = source;
  state.form = fingerprint(formOf(options, description));
  state.bytes = bytesOfMessage(options);
  state.most = options.mostRecords;
  return state;
}

// The file as it is at the start.
void addFile(FeedState& state, const FeedOptions& options) {
  const rec::InputWindow whole;
  rec::FileInput file = rec::FileInput::open(options.input.path, whole);
  int size = 0;
  const char* const bytes = file.slide(0, kFingerprintBytes)->getData(&size, 0);
  const std::string_view start(bytes, std::min<std::size_t>(static_cast<std::size_t>(size), kFingerprintBytes));
  state.size = file.totalSize().value_or(0);
  state.changed = static_cast<std::uint64_t>(
      std::chrono::nanoseconds(std::filesystem::last_write_time(options.input.path).time_since_epoch()).count());
  state.start = fingerprint(start);
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
  Cutting(const FeedOptions& options, const std::optional<rec::Description>& description, rec::FileInput& input,
          const rec::Console& console)
      : input_(input) {
    const std::size_t given = bytesOfMessage(options), bytes = given != 0 ? given : std::string::npos;
    if (!description) {
      rec::RecordForm form = options.input.records.form;
      rec::setLineCharacters(form, options.record.plan.form.ccsid);
      cutter_.emplace(form, input, bytes, spares_);
    } else {
      const rec::RecordPlan& plan = description->plan();
      cutter_.emplace(plan, rec::settledRecords(options.input, plan, input, console), input, bytes, spares_);
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
  rec::Spares<std::string> spares_;
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
  // After a failure, which is what is told.
  void saveIfPossible(const Outbox& outbox) {
    try {
      save(outbox, true);
    } catch (const rec::ToolError&) {
      // The state is then older, which makes doubles.
    }
  }

 private:
  const std::string path_;
  FeedState state_;
  Clock::time_point next_{};
};

// The code of the program's end.
int endOf(const Outbox& outbox, const std::string& fault, const Stop& stop, Log& log) {
  if (!fault.empty()) throw rec::ToolError(fault);
  const std::string upTo = std::to_string(outbox.upTo().offset);
  if (stop.isAsked()) {
    log.tell("stopped at byte " + upTo + " of the file");
    return outbox.hasAny() ? rec::kBadField : rec::kDone;
  }
  if (outbox.isConfirmed()) return rec::kDone;
  throw rec::ToolError("the broker has not confirmed all of the file: only what is before byte " + upTo +
                       " is sure to be there");
}

int feedAll(const FeedOptions& options, const rec::Console& console) {
  refuse(options);
  Log log(console);
  Stop stop(std::chrono::seconds(options.broker.grace));
  Counters counters;
  const Surroundings around{options.broker, addressOf(options.broker), log, stop, counters};
  const std::string source = sourceOf(options);
  refuseLong(source);
  const std::optional<rec::Description> description = describe(options, console);
  refuseOutputs(options, description);
  FeedState state = stateOf(options, source, description);
  if (!isStream(options.input.path)) addFile(state, options);
  const rec::InputWindow window = options.state.empty() ? options.input.window : restOf(options, state);
  rec::FileInput input = openWaiting(options.input.path, window, console, stop);
  Cutting cutting(options, description, input, console);
  CutAhead ahead([&] { return cutting.next(); }, stop);
  Outbox outbox([&] { return ahead.next(); }, {input.origin().bytes, input.origin().records});
  StateFile file(options.state, state);
  const MetricsFile metrics(options.broker.metrics, counters, log);
  const FeedSession::Settings settings{options.output, source, options.type.empty() ? kRecordsType : options.type,
                                       MessageIds(state), options.window};
  try {
    keepConnected(around, "oxrmq feed", [&](Connection& connection, Backoff& pauses) {
      FeedSession(around, settings, outbox, connection, pauses, [&] { file.save(outbox, false); }).run();
    });
  } catch (...) {
    file.saveIfPossible(outbox);
    throw;
  }
  file.save(outbox, true);
  log.tell(std::to_string(counters.messagesOut) + " messages with " + std::to_string(counters.records) +
           " records sent to " + shown(options.output));
  // Before the end it is still being cut.
  return endOf(outbox, outbox.hasAny() ? std::string() : cutting.fault(), stop, log);
}

}  // namespace

int feed(const FeedOptions& options, const rec::Console& console) {
  try {
    return feedAll(options, console);
  } catch (const InputLeft& left) {
    Log(console).tell(left.what());
    return rec::kBadField;
  }
}

}  // namespace oxr::mq
