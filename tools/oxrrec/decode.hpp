#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>

#include "records/copybook/copybook.hpp"
#include "records/fields/fieldconverter.hpp"
#include "records/recordworker.hpp"

namespace oxr::rec {

// What becomes of a record with a field that cannot be read.
enum class OnError : std::uint8_t {
  stop,  // it ends the work
  null,  // the field is null
  skip,  // the record is left out
};

struct DecodeOptions {
  std::string copybook;  // path
  CopybookOptions copybookOptions;
  std::string input;         // path, "-" for standard input
  std::string output = "-";  // path, "-" for standard output
  PhysicalForm form;
  RecordPlan::Options plan;
  RecordWorker::Settings records;
  bool pointsAsText = false;
  OnError onError = OnError::stop;
  // Nothing: shown on a terminal once the work has taken a second. False: never. True: on a terminal at once.
  std::optional<bool> progress;
};

// The process around the program, as far as it matters: tests have one of their own.
struct Console {
  int input = 0;  // descriptors of the standard streams
  int output = 1;
  std::ostream& messages;           // one line each
  bool messagesOnTerminal = false;  // progress may be shown among them
};

// Exit codes of the program.
inline constexpr int kDone = 0;
inline constexpr int kBadField = 1;  // a field cannot be read
inline constexpr int kFailed = 2;    // all else: the request, the copybook, the input's records, the output

// Turns a record file into JSON lines. Failures are told in `console.messages`; the result is the exit code. Lines of
// all records in front of a failure are written, and no part of another.
int decode(const DecodeOptions& options, const Console& console);

}  // namespace oxr::rec
