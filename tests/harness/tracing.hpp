#pragma once

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "kellog.hpp"

namespace oxr::test {

// What `call` writes to the log at a trace level, each record on a line: "> function" for an entry, "< function" for an
// exit, "function: insert|insert" for a fact. Something raised passes through.
//
// Example:
//   EXPECT_EQ(tracedAt(4, [&] { converter.resetToUnicode(); }),
//             "> CPUnicodeConverter::resetToUnicode\n< CPUnicodeConverter::resetToUnicode\n");
template <class F>
std::string tracedAt(int level, F call) {
  struct Level {
    explicit Level(int value) { KelLog::iEffectiveLogFilter = value; }
    ~Level() { KelLog::iEffectiveLogFilter = before; }
    int before = KelLog::iEffectiveLogFilter;
  };
  const auto sink = std::make_shared<RecordingLogSink>();
  {
    const ScopedLogSink scope(sink);
    const Level guard(level);
    call();
  }
  std::string lines;
  for (const LogRecord& record : sink->records()) {
    lines += record.kind == RecordKind::entry ? "> " : record.kind == RecordKind::exit ? "< " : "";
    lines += record.function;
    const char* separator = ": ";
    for (const std::string& insert : record.inserts) {
      lines += separator + insert;
      separator = "|";
    }
    lines += '\n';
  }
  return lines;
}

// The members of DataCnv that `call` enters, in order, as a debug trace shows them; enteredWords() in one text, without
// its making and its end.
template <class F>
std::vector<std::string> enteredMembers(F call) {
  std::vector<std::string> names;
  std::istringstream lines(tracedAt(4, call));
  for (std::string line; std::getline(lines, line);)
    if (line.starts_with("> DataCnv::")) names.push_back(line.substr(11));
  return names;
}
template <class F>
std::string enteredWords(F call) {
  std::string words;
  for (const std::string& name : enteredMembers(call))
    if (!name.ends_with("DataCnv")) words += (words.empty() ? "" : " ") + name;
  return words;
}

}  // namespace oxr::test
