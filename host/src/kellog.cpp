// The way of a record from the functions that write one to the sink in force, and the trace level.
//
// All records pass writeRecord(), which holds one mutex: a sink gets one record at a time and may be exchanged between
// two. The level is looked at by the callers only, before they build anything.

#include "kellog.hpp"

#include <charconv>
#include <cstdlib>
#include <mutex>
#include <string_view>
#include <utility>

#include "heldoverforks.hpp"
#include "kelloginternal.hpp"
#include "kellogsource.hpp"
#include "kelneverdestroyed.hpp"
#include "kelwstringconvertor.hpp"

// The level must stand before any load-time initialiser can ask for it.
constinit oxr::RelaxedInt KelLog::iEffectiveLogFilter{0};
constinit oxr::RelaxedInt KelLog::iCurrentSubComponent{0};
const KelWstring KelLog::iDefaultLogSource = KelWstringConvertor::toKelWstring(L"OXR");

namespace oxr {
namespace {

constinit std::mutex logMutex;
[[gnu::constructor(kNotedFirst)]] void holdLogOverForks() {
  holdOverForks<logMutex>();
}

// Null until the first record: then the host's own. The lock is held.
std::shared_ptr<LogSink>& sinkInForce() {
  // Destructors of other libraries' statics may still write.
  static NeverDestroyed<std::shared_ptr<LogSink>> sink;
  return sink.get();
}

std::shared_ptr<LogSink> exchangeSink(std::shared_ptr<LogSink> sink) {
  const std::lock_guard lock(logMutex);
  return std::exchange(sinkInForce(), std::move(sink));
}

// Takes the first level from the environment. A text that is no whole number is reported and leaves the level alone.
bool setLevelFromEnvironment() {
  const char* const text = std::getenv("KELHOST_TRACE_LEVEL");
  if (text == nullptr || *text == 0) return false;
  const std::string_view digits(text);
  int level = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), level);
  if (error == std::errc() && end == digits.data() + digits.size()) {
    KelLog::iEffectiveLogFilter = level;
    return true;
  }
  LogRecord refusal;
  refusal.kind = RecordKind::event;
  refusal.function = "KelLog";
  refusal.inserts = {"KELHOST_TRACE_LEVEL is not a whole number", std::string(digits)};
  writeRecord(refusal);
  return false;
}

[[maybe_unused]] const bool levelIsSet = setLevelFromEnvironment();

LogRecord plainRecord(RecordKind kind, bool debug, const KelLogSource* source, const char* function, long handle) {
  LogRecord record;
  record.kind = kind;
  record.debug = debug;
  if (function != nullptr) record.function = function;
  if (source != nullptr) record.source = toUtf8(source->logName());
  record.handle = handle;
  return record;
}

// Writes a record as `fill(LogRecord&)` completes it. A record that finds no memory is lost: what is traced must go on
// as if nobody looked.
template <class Fill>
void writePlain(RecordKind kind, bool debug, const KelLogSource* source, const char* function, long handle,
                Fill fill) noexcept {
  try {
    LogRecord record = plainRecord(kind, debug, source, function, handle);
    fill(record);
    writeRecord(record);
  } catch (...) {
  }
}

long writePlainEntry(bool debug, const KelLogSource* source, const char* function) {
  const long handle = nextTraceHandle();
  writePlain(RecordKind::entry, debug, source, function, handle, [](LogRecord&) {});
  return handle;
}

void writePlainTrace(bool debug, const KelLogSource* source, const char* function, const char* text, long handle) {
  writePlain(RecordKind::trace, debug, source, function, handle,
             [text](LogRecord& record) { record.inserts.emplace_back(text != nullptr ? text : ""); });
}

void writePlainExit(bool debug, const KelLogSource* source, const char* function, long handle) {
  writePlain(RecordKind::exit, debug, source, function, handle, [](LogRecord&) {});
}

}  // namespace

LogSink::~LogSink() = default;

ScopedLogSink::ScopedLogSink(std::shared_ptr<LogSink> sink) : previous_(exchangeSink(std::move(sink))) {}

ScopedLogSink::~ScopedLogSink() {
  exchangeSink(std::move(previous_));
}

RecordingLogSink::~RecordingLogSink() = default;

void RecordingLogSink::write(const LogRecord& record) {
  records_.push_back(record);
}

void writeRecord(const LogRecord& record) noexcept {
  try {
    const std::lock_guard lock(logMutex);
    std::shared_ptr<LogSink>& sink = sinkInForce();
    if (sink == nullptr) sink = makeHostSink();
    sink->write(record);
  } catch (...) {
    // Nobody is left to be told.
  }
}

long nextTraceHandle() {
  constinit static std::atomic<long> last{0};
  return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

}  // namespace oxr

long KelLog::writeEntry(const KelLogSource* source, const char* function) {
  return oxr::writePlainEntry(false, source, function);
}
long KelLog::writeEntry(const char* function) {
  return writeEntry(nullptr, function);
}
void KelLog::writeExit(const KelLogSource* source, const char* function, long handle) {
  oxr::writePlainExit(false, source, function, handle);
}
void KelLog::writeExit(const char* function, long handle) {
  writeExit(nullptr, function, handle);
}
void KelLog::writeTrace(const KelLogSource* source, const char* function, const char* text, long handle) {
  oxr::writePlainTrace(false, source, function, text, handle);
}
void KelLog::writeTrace(const char* function, const char* text, long handle) {
  writeTrace(nullptr, function, text, handle);
}
long KelLog::writeDebugEntry(const KelLogSource* source, const char* function) {
  return oxr::writePlainEntry(true, source, function);
}
long KelLog::writeDebugEntry(const char* function) {
  return writeDebugEntry(nullptr, function);
}
void KelLog::writeDebugExit(const KelLogSource* source, const char* function, long handle) {
  oxr::writePlainExit(true, source, function, handle);
}
void KelLog::writeDebugExit(const char* function, long handle) {
  writeDebugExit(nullptr, function, handle);
}
void KelLog::writeDebugTrace(const KelLogSource* source, const char* function, const char* text, long handle) {
  oxr::writePlainTrace(true, source, function, text, handle);
}
void KelLog::writeDebugTrace(const char* function, const char* text, long handle) {
  writeDebugTrace(nullptr, function, text, handle);
}
