#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "oxrrec/badfields.hpp"
#include "oxrrec/progress.hpp"
#include "records/options/options.hpp"

namespace oxr::rec {

enum class LineFormat : std::uint8_t { json, csv };

struct DecodeOptions {
  RecordOptions record;
  InputOptions input;
  std::string output = kStandardStream;  // path, or kStandardStream
  LineFormat format = LineFormat::json;
  bool pointsAsText = false;
  std::vector<std::string> nest;  // "CHILD:PARENT"; see Nesting
  OnError onError = OnError::stop;
  std::string errors;  // path for the records that have a bad field; empty for none
  bool check = false;  // each record's events are held to the order that handlers expect
  unsigned jobs = 1;   // threads that make lines
  // Nothing: shown on a terminal once the work has taken a second. False: never. True: on a terminal at once.
  std::optional<bool> progress;
};

// The parts of the command that each of its ways needs.
std::unique_ptr<LineHandler> makeHandler(const RecordPlan& plan, const DecodeOptions& options);
Progress makeProgress(const DecodeOptions& options, const Console& console, const FileInput& input);

// Those that tell what records are read and what is in them, whatever is made of them.
void addReadingOptions(CLI::App& command, DecodeOptions& options);
// These and all that is about lines.
void addDecodeOptions(CLI::App& command, DecodeOptions& options);

// Turns a record file into lines. Failures are told in `console.messages`; the result is the exit code. Lines of
// all records before a failure are written, and no part of another. Throws, as a command does, before the output is
// touched.
int decode(const DecodeOptions& options, const Console& console);

}  // namespace oxr::rec
