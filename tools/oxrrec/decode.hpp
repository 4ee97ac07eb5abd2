#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "oxrrec/options/options.hpp"

namespace oxr::rec {

// What becomes of a record with a field that cannot be read.
enum class OnError : std::uint8_t {
  stop,  // it ends the work
  null,  // the field is null
  skip,  // the record is left out
};

struct DecodeOptions {
  RecordOptions record;
  InputOptions input;
  std::string output = kStandardStream;  // path, or kStandardStream
  bool pointsAsText = false;
  OnError onError = OnError::stop;
  bool check = false;  // each record's events are held to the order that handlers expect
  // Nothing: shown on a terminal once the work has taken a second. False: never. True: on a terminal at once.
  std::optional<bool> progress;
};

void addDecodeOptions(CLI::App& command, DecodeOptions& options);

// Turns a record file into JSON lines. Failures are told in `console.messages`; the result is the exit code. Lines of
// all records before a failure are written, and no part of another. Throws, as a command does, before the output is
// touched.
int decode(const DecodeOptions& options, const Console& console);

}  // namespace oxr::rec
