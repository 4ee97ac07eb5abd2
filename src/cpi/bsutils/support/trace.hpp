#pragma once

#include <exception>

#include "kellog.hpp"
#include "kellogsource.hpp"

namespace oxr {

// Where a failure is raised: what the trace record and the exception tell of it.
struct FailureSite {
  const KelLogSource* source;  // null for a class or a static member that has none
  const char* function;        // the traced name, such as "DataCnv::IntToInt64"
  const char* file;            // the source path that goes out, such as "src/cpi/bsutils/datacnv"
  long handle;  // of the function's entry record; 0 when it traced none, noTraceHandle when it never does
  int line;
};

// Makes the site of a function that never traces an entry. The line is the caller's.
inline FailureSite untracedSite(const KelLogSource* source, const char* function, const char* file,
                                int line = __builtin_LINE()) {
  return {source, function, file, noTraceHandle, line};
}

inline bool debugTraceOn() {
  return KelLog::iEffectiveLogFilter > 3;
}

// The guards of the two kinds of function trace: `on()` says whether entry and exit are to be written.
struct DebugTrace {
  static bool on() { return debugTraceOn(); }
};
// Logical values are made and dropped by the million: their trace is asked for by subcomponent, too.
struct ValueTrace {
  static bool on() { return debugTraceOn() && KelLog::iCurrentSubComponent == 1; }
};

// Traces one function: the entry when it is made, the exit when the function returns. A function that leaves by an
// exception writes no exit. With trace off it costs one load and compare, and a test of a local at the end: its members
// are forced inline so that none of it need exist in memory.
//
// Example:
//   const FunctionTrace trace(this, "DataCnv::IntToInt64", kSourcePath);
//   if (source == nullptr) raiseInternalError(trace.site(), "Null input pointer");
template <class Guard>
class BasicFunctionTrace {
 public:
  [[gnu::always_inline]] BasicFunctionTrace(const KelLogSource* source, const char* function, const char* file)
      : source_(source), function_(function), file_(file) {
    if (Guard::on()) [[unlikely]] {
      handle_ = KelLog::writeDebugEntry(source, function);
      begin();
    }
  }
  // Writes the entry with the inserts that `addInserts(KelLog::FastItem&)` gives.
  template <class AddInserts>
  [[gnu::always_inline]] BasicFunctionTrace(const KelLogSource* source, const char* function, const char* file,
                                            AddInserts addInserts)
      : source_(source), function_(function), file_(file) {
    if (Guard::on()) [[unlikely]] {
      KelLog::FastDebugEntryItem item(source, function, &handle_, true);
      addInserts(item);
      item << KelLog::endOfInserts;
      begin();
    }
  }
  BasicFunctionTrace(const BasicFunctionTrace&) = delete;
  BasicFunctionTrace& operator=(const BasicFunctionTrace&) = delete;
  [[gnu::always_inline]] ~BasicFunctionTrace() {
    if (active_) [[unlikely]]
      writeExit(source_, function_, handle_, exceptionsAtEntry_);
  }

  // Writes the exit now, with the inserts that `addInserts(KelLog::FastItem&)` gives.
  template <class AddInserts>
  void exit(AddInserts addInserts) {
    if (!active_) return;
    active_ = false;
    KelLog::FastDebugExitItem item(source_, function_, handle_, true);
    addInserts(item);
    item << KelLog::endOfInserts;
  }
  // Traces a fact between entry and exit, such as ("LogicalType", 4).
  template <class... Inserts>
  void fact(const Inserts&... inserts) const {
    if (!Guard::on()) return;
    KelLog::FastDebugTraceItem item(source_, function_, handle_, true);
    static_cast<void>((item << ... << inserts));
    item << KelLog::endOfInserts;
  }

  [[gnu::always_inline]] FailureSite site(int line = __builtin_LINE()) const {
    return {source_, function_, file_, handle_, line};
  }

 private:
  [[gnu::always_inline]] void begin() {
    active_ = true;
    exceptionsAtEntry_ = std::uncaught_exceptions();
  }
  [[gnu::cold, gnu::noinline]] static void writeExit(const KelLogSource* source, const char* function, long handle,
                                                     int exceptionsAtEntry) {
    if (std::uncaught_exceptions() == exceptionsAtEntry) KelLog::writeDebugExit(source, function, handle);
  }

  const KelLogSource* source_;
  const char* function_;
  const char* file_;
  long handle_ = 0;
  int exceptionsAtEntry_ = 0;
  bool active_ = false;
};

using FunctionTrace = BasicFunctionTrace<DebugTrace>;
using ValueFunctionTrace = BasicFunctionTrace<ValueTrace>;

}  // namespace oxr
