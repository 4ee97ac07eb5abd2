#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "kelexport.hpp"
#include "kelwstring.hpp"

class KelLogSource;

namespace oxr {

// An int that one thread sets and others read at any time. It reads as an int; a read costs a plain load.
class RelaxedInt {
 public:
  constexpr RelaxedInt(int value) noexcept : value_(value) {}  // NOLINT: reads and writes like an int
  RelaxedInt(const RelaxedInt&) = delete;
  RelaxedInt& operator=(const RelaxedInt&) = delete;
  // Sets the number, and gives it.
  int operator=(int value) noexcept {
    value_.store(value, std::memory_order_relaxed);
    return value;
  }
  // Reads the number.
  operator int() const noexcept { return value_.load(std::memory_order_relaxed); }

 private:
  std::atomic<int> value_;
};

// What a record tells: that a function begins or ends, a fact between the two, or an event for people.
enum class RecordKind { entry, exit, trace, event };

// One record of trace or log, as a sink gets it.
struct LogRecord {
  RecordKind kind = RecordKind::trace;  // what the record tells
  bool debug = false;                   // it is written at the debug level (above 3) only
  std::string function;                 // may be empty
  std::string file;                     // source path of an event
  int line = 0;                         // of an event
  std::string source;                   // name of the log source, may be empty
  int messageNumber = 0;                // of an event
  long handle = 0;                      // ties an exit and the records between to their entry
  std::vector<std::string> inserts;     // each as UTF-8 text, in order
};

// Where records go. write() may be called on any thread, one call at a time; it must not log itself.
class KELHOST_EXPORT LogSink {
 public:
  virtual ~LogSink();
  // Takes one record, which is valid for the time of the call.
  virtual void write(const LogRecord& record) = 0;
};

// Puts a sink in the place of the current one for as long as the object lives; null puts the host's own log there. No
// record is on its way into the sink once the object is gone. For tests and tools: objects end in the reverse order of
// their making.
class KELHOST_EXPORT ScopedLogSink {
 public:
  // Sends records to `sink` from here on, and keeps it alive.
  explicit ScopedLogSink(std::shared_ptr<LogSink> sink);
  ScopedLogSink(const ScopedLogSink&) = delete;
  ScopedLogSink& operator=(const ScopedLogSink&) = delete;
  ~ScopedLogSink();

 private:
  std::shared_ptr<LogSink> previous_;
};

// A sink that keeps what it is given.
class KELHOST_EXPORT RecordingLogSink : public LogSink {
 public:
  ~RecordingLogSink() override;
  void write(const LogRecord& record) override;
  // All records so far, in order. Not to be read while another thread may log.
  const std::vector<LogRecord>& records() const { return records_; }

 private:
  std::vector<LogRecord> records_;
};

}  // namespace oxr

// Trace and log of the host: the level, the functions that write plain records, and the items that collect inserts.
//
// The level is read without a lock before anything is built: above 3 debug entries, exits and facts are written; above
// 2 trace records; at 0 or above events. The writing functions do not look at the level: their callers have.
//
// Records go to the host's log: the environment variable KELHOST_LOG names it ("stderr", the default, "none", or the
// path of a file), KELHOST_TRACE_LEVEL sets the first level (default 0).
//
// Example:
//   if (KelLog::iEffectiveLogFilter > 3)
//     KelLog::FastDebugTraceItem("PWFData::getInt32Value", handle, true) << "LogicalType" << type <<
//     KelLog::endOfInserts;
class KELHOST_EXPORT KelLog {
 public:
  static oxr::RelaxedInt iEffectiveLogFilter;   // the trace level in force
  static oxr::RelaxedInt iCurrentSubComponent;  // which subcomponent is being debugged; 1 is the logical values
  static const KelWstring iDefaultLogSource;    // name of the log source of items that have none of their own

  // The last "insert" of every fast item: it closes the list.
  struct MagicInsert;
  static constexpr const MagicInsert* endOfInserts = nullptr;

  class Item;
  class TraceLogItem;
  class TraceItem;
  class EntryItem;
  class ComplexItem;
  class EventLogItem;
  class ErrorItem;
  class WarningItem;
  class FastItem;
  class FastEntryItem;
  class FastDebugEntryItem;
  class FastTraceItem;
  class FastDebugTraceItem;
  class FastDebugExitItem;

  // Plain records. An entry returns the handle that goes with its exit; the forms without a source serve classes that
  // have none.
  static long writeEntry(const KelLogSource* source, const char* function);
  static long writeEntry(const char* function);
  static void writeExit(const KelLogSource* source, const char* function, long handle);
  static void writeExit(const char* function, long handle);
  static void writeTrace(const KelLogSource* source, const char* function, const char* text, long handle);
  static void writeTrace(const char* function, const char* text, long handle);
  static long writeDebugEntry(const KelLogSource* source, const char* function);
  static long writeDebugEntry(const char* function);
  static void writeDebugExit(const KelLogSource* source, const char* function, long handle);
  static void writeDebugExit(const char* function, long handle);
  static void writeDebugTrace(const KelLogSource* source, const char* function, const char* text, long handle);
  static void writeDebugTrace(const char* function, const char* text, long handle);
};

// The handle of a function that traces no entry.
inline constexpr long noTraceHandle = -77;

// Collects inserts, each kept as UTF-8 text. The root of trace items, events and exceptions.
class KELHOST_EXPORT KelLog::Item {
 public:
  static const unsigned short iNullCharacter;  // its address serves as the items' empty text

  Item() = default;
  Item(const Item&) = default;
  Item& operator=(const Item&) = default;

  virtual ~Item();
  virtual const char* fileName() const;      // source path, or ""
  virtual int lineNumber() const;            // or 0
  virtual const char* functionName() const;  // or ""
  // The names of the log source as it gave them when the item was made, or "".
  virtual const char* objectType() const;
  virtual const char* objectName() const;
  virtual const char* objectLabel() const;
  // The name that records show as their source.
  virtual const char* logSourceName() const;
  virtual int messageNumber() const;  // 32 bits: severity in the top bits; 0 for an item that has none
  virtual int stackLevel() const;     // how deep the item is nested in others
  // The same texts as UTF-16.
  virtual KelWstring fileNameString() const;
  virtual KelWstring functionNameString() const;
  virtual KelWstring objectTypeString() const;
  virtual KelWstring objectNameString() const;
  virtual KelWstring objectLabelString() const;
  virtual KelWstring logSourceNameString() const;
  // Keeps a copy of `item` below this one. An item that takes no nested ones ignores it.
  virtual void addNestedItem(const ComplexItem& item);
  virtual int nestedItemCount() const;                     // 0 for an item that takes none
  virtual const ComplexItem* nestedItem(int index) const;  // null when there is none

  // Each insert as UTF-8 text, in order.
  const std::vector<std::string>& inserts() const { return inserts_; }

  // Inserts. Null text gives an empty insert; an `unsigned short` is one code unit of text; an item is nested.
  Item& operator<<(const char* text);
  Item& operator<<(const unsigned short* text);
  Item& operator<<(unsigned short unit);
  Item& operator<<(int value);
  Item& operator<<(long value);
  Item& operator<<(double value);
  Item& operator<<(bool value);
  Item& operator<<(const KelWstring& text);
  Item& operator<<(const KelBufferedWstring<16u>& text) { return *this << static_cast<const KelWstring&>(text); }
  Item& operator<<(const std::string& text);
  Item& operator<<(const ComplexItem& item);

  // Writes the record. A second call writes nothing. A record that finds no memory is lost.
  void writeToFile() const;

 protected:
  // What the sink gets, the inserts included.
  virtual oxr::LogRecord record() const;

 private:
  std::vector<std::string> inserts_;
  mutable bool written_ = false;
};

// Adds the names of function and object.
class KELHOST_EXPORT KelLog::TraceLogItem : public KelLog::Item {
 public:
  // Copies the name of the function and those of `source`, null for none. `handle` ties the record to its entry.
  TraceLogItem(const KelLogSource* source, const char* function, long handle);
  const char* functionName() const override;
  const char* objectType() const override;
  const char* objectName() const override;
  const char* objectLabel() const override;

 protected:
  oxr::LogRecord record() const override;

 private:
  std::string function_, objectType_, objectName_, objectLabel_;
  long handle_;
};

// One trace record, written by its destructor at the latest.
class KELHOST_EXPORT KelLog::TraceItem : public KelLog::TraceLogItem {
 public:
  // Make the record as TraceLogItem does, which says what the arguments are.
  TraceItem(const char* function, long handle) : TraceItem(nullptr, function, handle) {}
  TraceItem(const KelLogSource* source, const char* function, long handle) : TraceLogItem(source, function, handle) {}
  TraceItem(const TraceItem&) = delete;
  TraceItem& operator=(const TraceItem&) = delete;
  ~TraceItem() override;
};

// An entry record with inserts, written by its destructor at the latest; fills `*handle` at once.
class KELHOST_EXPORT KelLog::EntryItem : public KelLog::TraceLogItem {
 public:
  // Sets `*handle` to one that no other entry has.
  EntryItem(const char* function, long* handle);
  EntryItem(const EntryItem&) = delete;
  EntryItem& operator=(const EntryItem&) = delete;
  ~EntryItem() override;

 protected:
  oxr::LogRecord record() const override;
};

// An event: where it happened, its message number, its inserts, and the items nested in it.
class KELHOST_EXPORT KelLog::ComplexItem : public KelLog::Item {
 public:
  // As KelException, which says what the arguments are.
  ComplexItem(const KelLogSource* source, const char* file, int line, const char* function,
              const KelWstring& sourceName, int number, long handle);
  // Shares in what is nested in the other one.
  ComplexItem(const ComplexItem&);
  ComplexItem& operator=(const ComplexItem&) = delete;
  ~ComplexItem() override;

  const char* fileName() const override;
  int lineNumber() const override;
  const char* functionName() const override;
  const char* objectType() const override;
  const char* objectName() const override;
  const char* objectLabel() const override;
  const char* logSourceName() const override;
  int messageNumber() const override;
  int stackLevel() const override;
  void addNestedItem(const ComplexItem& item) override;
  int nestedItemCount() const override;
  const ComplexItem* nestedItem(int index) const override;

  // The number by which the message catalogue knows the message: the low 16 bits, 5502 of 0xC000157E.
  virtual int oxrMessageNumber() const;
  // A text for people: "OXR5502E CP_INTERNAL_ERROR: insert; insert", and the nested items after that. `withLocation`
  // adds where it happened.
  virtual KelWstring toString() const;
  virtual KelWstring toLocalString() const;
  virtual KelWstring toString(bool withLocation) const;
  virtual KelWstring toLocalString(bool withLocation) const;

  // A name of the message that toString() shows; no part of the record.
  void setIdentifier(const char* identifier) { identifier_ = identifier; }

 protected:
  oxr::LogRecord record() const override;

 private:
  // A copy for another item, the items nested in it one level deeper each.
  std::shared_ptr<const ComplexItem> copyAtLevel(int level) const;
  std::string text(bool withLocation) const;

  std::string file_, function_, sourceName_, objectType_, objectName_, objectLabel_;
  const char* identifier_ = "";  // of static storage
  int line_, number_;
  int stackLevel_ = 0;
  long handle_;
  std::vector<std::shared_ptr<const ComplexItem>> nested_;
};

// An event for the log, written by its destructor at the latest.
class KELHOST_EXPORT KelLog::EventLogItem : public KelLog::ComplexItem {
 public:
  using ComplexItem::ComplexItem;
  EventLogItem(const EventLogItem&) = delete;  // a copy would be written a second time
  ~EventLogItem() override;
};

// An event for what has failed. Its number says so in its top bits, 0xC.
class KELHOST_EXPORT KelLog::ErrorItem : public KelLog::EventLogItem {
 public:
  // As KelException, which says what the arguments are.
  ErrorItem(const char* file, int line, const char* function, const KelWstring& sourceName, int number, long handle)
      : EventLogItem(nullptr, file, line, function, sourceName, number, handle) {}
  ~ErrorItem() override;
};

// An event for what has not failed but deserves a look. Its number says so in its top bits, 0x8.
class KELHOST_EXPORT KelLog::WarningItem : public KelLog::EventLogItem {
 public:
  // As KelException, which says what the arguments are.
  WarningItem(const KelLogSource* source, const char* file, int line, const char* function,
              const KelWstring& sourceName, int number, long handle)
      : EventLogItem(source, file, line, function, sourceName, number, handle) {}
  ~WarningItem() override;
};

// Takes inserts by reference and copies nothing until `endOfInserts` closes the list; then the record stands, the
// facts that the log source adds last, and the destructor writes it. Inserts beyond kMaxInserts are dropped. A record
// whose list was never closed is written without inserts: what they refer to may be gone. So is one that finds no
// memory for them: a trace changes nothing in what it traces.
class KELHOST_EXPORT KelLog::FastItem {
 public:
  static constexpr int kMaxInserts = 16;  // more are dropped

  FastItem(const FastItem&) = delete;
  FastItem& operator=(const FastItem&) = delete;
  ~FastItem();

  // Take inserts, which stay the caller's and must live until the list is closed. Null text gives an empty insert; an
  // `unsigned short` is one code unit of text; `const void*` shows as an address.
  FastItem& operator<<(const char* text) { return add(text); }
  FastItem& operator<<(const unsigned short* text) { return add(text); }
  FastItem& operator<<(const unsigned short& unit) { return add(&unit, true); }
  FastItem& operator<<(const int& value) { return add(&value); }
  FastItem& operator<<(const long& value) { return add(&value); }
  FastItem& operator<<(const double& value) { return add(&value); }
  FastItem& operator<<(const bool& value) { return add(&value); }
  FastItem& operator<<(const void* pointer) { return add(pointer); }
  FastItem& operator<<(const KelWstring& text) { return add(&text); }
  FastItem& operator<<(const KelBufferedWstring<16u>& text) { return add(static_cast<const KelWstring*>(&text)); }
  // Closes the list: what the inserts refer to is no longer needed. `end` is endOfInserts.
  FastItem& operator<<(const MagicInsert* end);

 protected:
  // Begins a record of `kind`, at the debug level where `debug` is set. `source` may be null, and must live as long as
  // the item; the name of the function is copied.
  FastItem(oxr::RecordKind kind, bool debug, const KelLogSource* source, const char* function, long handle);

 private:
  struct Unit {
    const unsigned short* unit;
  };
  using Reference = std::variant<const char*, const unsigned short*, Unit, const int*, const long*, const double*,
                                 const bool*, const void*, const KelWstring*>;
  template <class Pointer>
  FastItem& add(Pointer pointer) {
    if (count_ < kMaxInserts) references_[static_cast<std::size_t>(count_++)] = pointer;
    return *this;
  }
  FastItem& add(const unsigned short* unit, bool) { return add(Unit{unit}); }

  std::array<Reference, kMaxInserts> references_;
  int count_ = 0;
  bool closed_ = false;
  const KelLogSource* source_;  // may be null
  oxr::LogRecord record_;
};

// An entry record with inserts.
class KELHOST_EXPORT KelLog::FastEntryItem : public KelLog::FastItem {
 public:
  // Sets `*handle` to one that no other entry has. `source` is as in FastItem. The last argument is reserved: true.
  FastEntryItem(const char* function, long* handle, bool) : FastEntryItem(nullptr, function, handle, true) {}
  FastEntryItem(const KelLogSource* source, const char* function, long* handle, bool);
};
// The same at the debug level.
class KELHOST_EXPORT KelLog::FastDebugEntryItem : public KelLog::FastItem {
 public:
  // Sets `*handle` to one that no other entry has. `source` is as in FastItem. The last argument is reserved: true.
  FastDebugEntryItem(const char* function, long* handle, bool) : FastDebugEntryItem(nullptr, function, handle, true) {}
  FastDebugEntryItem(const KelLogSource* source, const char* function, long* handle, bool);
};

// A record between an entry and its exit.
class KELHOST_EXPORT KelLog::FastTraceItem : public KelLog::FastItem {
 public:
  // Ties the record to the entry of `handle`. `source` is as in FastItem. The last argument is reserved: true.
  FastTraceItem(const char* function, long handle, bool) : FastTraceItem(nullptr, function, handle, true) {}
  FastTraceItem(const KelLogSource* source, const char* function, long handle, bool)
      : FastItem(oxr::RecordKind::trace, false, source, function, handle) {}
};
// The same at the debug level.
class KELHOST_EXPORT KelLog::FastDebugTraceItem : public KelLog::FastItem {
 public:
  // Ties the record to the entry of `handle`. `source` is as in FastItem. The last argument is reserved: true.
  FastDebugTraceItem(const char* function, long handle, bool) : FastDebugTraceItem(nullptr, function, handle, true) {}
  FastDebugTraceItem(const KelLogSource* source, const char* function, long handle, bool)
      : FastItem(oxr::RecordKind::trace, true, source, function, handle) {}
};
// An exit at the debug level, with inserts.
class KELHOST_EXPORT KelLog::FastDebugExitItem : public KelLog::FastItem {
 public:
  // Ends what the entry of `handle` began. `source` is as in FastItem. The last argument is reserved: true.
  FastDebugExitItem(const char* function, long handle, bool) : FastDebugExitItem(nullptr, function, handle, true) {}
  FastDebugExitItem(const KelLogSource* source, const char* function, long handle, bool)
      : FastItem(oxr::RecordKind::exit, true, source, function, handle) {}
};
