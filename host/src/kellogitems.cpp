#include <charconv>
#include <cstdint>
#include <cstdio>
#include <utility>

#include "kellog.hpp"
#include "kelloginternal.hpp"
#include "kellogsource.hpp"
#include "kelwstringconvertor.hpp"

constinit const unsigned short KelLog::Item::iNullCharacter = 0;

namespace {

const char* orEmpty(const char* text) {
  return text != nullptr ? text : "";
}

template <class Number>
std::string numberText(Number value) {
  char text[32];  // the longest shortest double has 24 characters
  return std::string(text, std::to_chars(text, text + sizeof text, value).ptr);
}

// How each kind of insert reads.
std::string insertText(std::string_view text) {
  for (const char c : text)
    if (static_cast<unsigned char>(c) >= 0x80) return oxr::toUtf8(oxr::fromUtf8(text));  // mends what is malformed
  return std::string(text);
}
std::string insertText(oxr::UnitView text) {
  return oxr::toUtf8(text);
}
std::string insertText(unsigned short unit) {
  return oxr::toUtf8(oxr::UnitView(&unit, 1));
}
std::string insertText(int value) {
  return numberText(value);
}
std::string insertText(long value) {
  return numberText(value);
}
std::string insertText(double value) {
  return numberText(value);
}
std::string insertText(bool value) {
  return value ? "true" : "false";
}
std::string insertText(const char* text) {
  return insertText(std::string_view(orEmpty(text)));
}
std::string insertText(const unsigned short* text) {
  return text != nullptr ? oxr::toUtf8(oxr::UnitView(text)) : std::string();
}

}  // namespace

std::string oxr::addressText(const void* pointer) {
  char text[2 + 2 * sizeof pointer] = {'0', 'x'};
  const auto address = reinterpret_cast<std::uintptr_t>(pointer);
  return std::string(text, std::to_chars(text + 2, text + sizeof text, address, 16).ptr);
}

std::string oxr::messageName(int messageNumber) {
  constexpr std::string_view kSeverity[] = {"", "", "", "", "I", "", "", "", "W", "", "", "", "E", "", "", ""};
  const auto bits = static_cast<unsigned>(messageNumber);
  char name[16];
  std::snprintf(name, sizeof name, "OXR%04u", bits & 0xFFFFu);
  return name + std::string(kSeverity[bits >> 28]);
}

// The root of the items has inserts and nothing else.

KelLog::Item::~Item() = default;

const char* KelLog::Item::fileName() const {
  return "";
}
int KelLog::Item::lineNumber() const {
  return 0;
}
const char* KelLog::Item::functionName() const {
  return "";
}
const char* KelLog::Item::objectType() const {
  return "";
}
const char* KelLog::Item::objectName() const {
  return "";
}
const char* KelLog::Item::objectLabel() const {
  return "";
}
const char* KelLog::Item::logSourceName() const {
  return "";
}
int KelLog::Item::messageNumber() const {
  return 0;
}
int KelLog::Item::stackLevel() const {
  return 0;
}
KelWstring KelLog::Item::fileNameString() const {
  return oxr::fromUtf8(fileName());
}
KelWstring KelLog::Item::functionNameString() const {
  return oxr::fromUtf8(functionName());
}
KelWstring KelLog::Item::objectTypeString() const {
  return oxr::fromUtf8(objectType());
}
KelWstring KelLog::Item::objectNameString() const {
  return oxr::fromUtf8(objectName());
}
KelWstring KelLog::Item::objectLabelString() const {
  return oxr::fromUtf8(objectLabel());
}
KelWstring KelLog::Item::logSourceNameString() const {
  return oxr::fromUtf8(logSourceName());
}
void KelLog::Item::addNestedItem(const ComplexItem&) {}
int KelLog::Item::nestedItemCount() const {
  return 0;
}
const KelLog::ComplexItem* KelLog::Item::nestedItem(int) const {
  return nullptr;
}

KelLog::Item& KelLog::Item::operator<<(const char* text) {
  return inserts_.push_back(insertText(text)), *this;
}
KelLog::Item& KelLog::Item::operator<<(const unsigned short* text) {
  return inserts_.push_back(insertText(text)), *this;
}
KelLog::Item& KelLog::Item::operator<<(unsigned short unit) {
  return inserts_.push_back(insertText(unit)), *this;
}
KelLog::Item& KelLog::Item::operator<<(int value) {
  return inserts_.push_back(insertText(value)), *this;
}
KelLog::Item& KelLog::Item::operator<<(long value) {
  return inserts_.push_back(insertText(value)), *this;
}
KelLog::Item& KelLog::Item::operator<<(double value) {
  return inserts_.push_back(insertText(value)), *this;
}
KelLog::Item& KelLog::Item::operator<<(bool value) {
  return inserts_.push_back(insertText(value)), *this;
}
KelLog::Item& KelLog::Item::operator<<(const KelWstring& text) {
  return inserts_.push_back(insertText(text.view())), *this;
}
KelLog::Item& KelLog::Item::operator<<(const std::string& text) {
  return inserts_.push_back(insertText(std::string_view(text))), *this;
}
KelLog::Item& KelLog::Item::operator<<(const ComplexItem& item) {
  return addNestedItem(item), *this;
}

void KelLog::Item::writeToFile() const {
  if (std::exchange(written_, true)) return;
  try {
    oxr::writeRecord(record());
  } catch (...) {
    // Destructors come here, and the log must not change what is traced: a record without memory is lost.
  }
}

oxr::LogRecord KelLog::Item::record() const {
  oxr::LogRecord record;
  record.function = functionName();
  record.file = fileName();
  record.line = lineNumber();
  record.source = logSourceName();
  record.messageNumber = messageNumber();
  record.inserts = inserts_;
  return record;
}

// Trace items carry the names of function and object.

KelLog::TraceLogItem::TraceLogItem(const KelLogSource* source, const char* function, long handle)
    : function_(orEmpty(function)), handle_(handle) {
  if (source == nullptr) return;
  objectType_ = oxr::toUtf8(source->logType());
  objectName_ = oxr::toUtf8(source->logName());
  objectLabel_ = oxr::toUtf8(source->logLabel());
}
const char* KelLog::TraceLogItem::functionName() const {
  return function_.c_str();
}
const char* KelLog::TraceLogItem::objectType() const {
  return objectType_.c_str();
}
const char* KelLog::TraceLogItem::objectName() const {
  return objectName_.c_str();
}
const char* KelLog::TraceLogItem::objectLabel() const {
  return objectLabel_.c_str();
}
oxr::LogRecord KelLog::TraceLogItem::record() const {
  oxr::LogRecord record = Item::record();
  record.source = objectName_;
  record.handle = handle_;
  return record;
}

KelLog::TraceItem::~TraceItem() {
  writeToFile();
}

KelLog::EntryItem::EntryItem(const char* function, long* handle)
    : TraceLogItem(nullptr, function, *handle = oxr::nextTraceHandle()) {}
KelLog::EntryItem::~EntryItem() {
  writeToFile();
}
oxr::LogRecord KelLog::EntryItem::record() const {
  oxr::LogRecord record = TraceLogItem::record();
  record.kind = oxr::RecordKind::entry;
  return record;
}

// Events carry place, message number and nested items.

KelLog::ComplexItem::ComplexItem(const KelLogSource* source, const char* file, int line, const char* function,
                                 const KelWstring& sourceName, int number, long handle)
    : file_(orEmpty(file)),
      function_(orEmpty(function)),
      sourceName_(oxr::toUtf8(sourceName)),
      line_(line),
      number_(number),
      handle_(handle) {
  if (source == nullptr) return;
  objectType_ = oxr::toUtf8(source->logType());
  objectName_ = oxr::toUtf8(source->logName());
  objectLabel_ = oxr::toUtf8(source->logLabel());
}
KelLog::ComplexItem::ComplexItem(const ComplexItem&) = default;
KelLog::ComplexItem::~ComplexItem() = default;

const char* KelLog::ComplexItem::fileName() const {
  return file_.c_str();
}
int KelLog::ComplexItem::lineNumber() const {
  return line_;
}
const char* KelLog::ComplexItem::functionName() const {
  return function_.c_str();
}
const char* KelLog::ComplexItem::objectType() const {
  return objectType_.c_str();
}
const char* KelLog::ComplexItem::objectName() const {
  return objectName_.c_str();
}
const char* KelLog::ComplexItem::objectLabel() const {
  return objectLabel_.c_str();
}
const char* KelLog::ComplexItem::logSourceName() const {
  return sourceName_.c_str();
}
int KelLog::ComplexItem::messageNumber() const {
  return number_;
}
int KelLog::ComplexItem::stackLevel() const {
  return stackLevel_;
}
int KelLog::ComplexItem::oxrMessageNumber() const {
  return number_ & 0xFFFF;
}

std::shared_ptr<const KelLog::ComplexItem> KelLog::ComplexItem::copyAtLevel(int level) const {
  auto copy = std::make_shared<ComplexItem>(*this);
  copy->stackLevel_ = level;
  for (auto& nested : copy->nested_)
    nested = nested->copyAtLevel(level + 1);
  return copy;
}
void KelLog::ComplexItem::addNestedItem(const ComplexItem& item) {
  nested_.push_back(item.copyAtLevel(stackLevel_ + 1));
}
int KelLog::ComplexItem::nestedItemCount() const {
  return static_cast<int>(nested_.size());
}
const KelLog::ComplexItem* KelLog::ComplexItem::nestedItem(int index) const {
  return index >= 0 && index < nestedItemCount() ? nested_[static_cast<std::size_t>(index)].get() : nullptr;
}

std::string KelLog::ComplexItem::text(bool withLocation) const {
  std::string text = oxr::messageName(number_);
  // Some messages have no name but their number.
  if (*identifier_ != 0 && !text.starts_with(identifier_)) text.append(" ").append(identifier_);
  const char* separator = ": ";
  for (const std::string& insert : inserts()) {
    text.append(separator).append(insert);
    separator = "; ";
  }
  if (withLocation) text.append(" (" + function_ + ", " + file_ + ':' + numberText(line_) + ')');
  for (const auto& nested : nested_)
    text.append(" [" + nested->text(withLocation) + ']');
  return text;
}
KelWstring KelLog::ComplexItem::toString() const {
  return toString(false);
}
KelWstring KelLog::ComplexItem::toLocalString() const {
  return toLocalString(false);
}
KelWstring KelLog::ComplexItem::toString(bool withLocation) const {
  return oxr::fromUtf8(text(withLocation));
}
KelWstring KelLog::ComplexItem::toLocalString(bool withLocation) const {
  return toString(withLocation);  // there is one language
}

oxr::LogRecord KelLog::ComplexItem::record() const {
  oxr::LogRecord record = Item::record();
  record.kind = oxr::RecordKind::event;
  record.handle = handle_;
  for (const auto& nested : nested_)
    record.inserts.push_back('[' + nested->text(true) + ']');
  return record;
}

KelLog::EventLogItem::~EventLogItem() {
  writeToFile();
}
KelLog::ErrorItem::~ErrorItem() = default;
KelLog::WarningItem::~WarningItem() = default;

// Fast items keep references until the list is closed.

KelLog::FastItem::FastItem(oxr::RecordKind kind, bool debug, const KelLogSource* source, const char* function,
                           long handle)
    : source_(source) {
  record_.kind = kind;
  record_.debug = debug;
  record_.handle = handle;
  try {
    record_.function = orEmpty(function);
    if (source != nullptr) record_.source = oxr::toUtf8(source->logName());
  } catch (...) {
    // A record that finds no memory says less; what is traced goes on.
  }
}

KelLog::FastItem::~FastItem() {
  oxr::writeRecord(record_);
}

KelLog::FastItem& KelLog::FastItem::operator<<(const MagicInsert*) {
  if (std::exchange(closed_, true)) return *this;
  struct Render {
    std::string operator()(const char* text) const { return insertText(text); }
    std::string operator()(const unsigned short* text) const { return insertText(text); }
    std::string operator()(Unit reference) const { return insertText(*reference.unit); }
    std::string operator()(const int* value) const { return insertText(*value); }
    std::string operator()(const long* value) const { return insertText(*value); }
    std::string operator()(const double* value) const { return insertText(*value); }
    std::string operator()(const bool* value) const { return insertText(*value); }
    std::string operator()(const void* pointer) const { return oxr::addressText(pointer); }
    std::string operator()(const KelWstring* text) const { return insertText(text->view()); }
  };
  try {
    if (source_ != nullptr) source_->addLogInserts(*this);
    for (int i = 0; i < count_; ++i)
      record_.inserts.push_back(std::visit(Render(), references_[static_cast<std::size_t>(i)]));
  } catch (...) {
    record_.inserts.clear();
  }
  return *this;
}

KelLog::FastEntryItem::FastEntryItem(const KelLogSource* source, const char* function, long* handle, bool)
    : FastItem(oxr::RecordKind::entry, false, source, function, *handle = oxr::nextTraceHandle()) {}

KelLog::FastDebugEntryItem::FastDebugEntryItem(const KelLogSource* source, const char* function, long* handle, bool)
    : FastItem(oxr::RecordKind::entry, true, source, function, *handle = oxr::nextTraceHandle()) {}
