#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "oxrrec/badfields.hpp"
#include "records/options/options.hpp"

namespace oxr::rec {

struct EncodeOptions {
  RecordOptions record;
  std::string input;  // path, or kStandardStream
  // Framing, filler and what becomes of lines of no kind.
  RecordWorker::Settings records{.form = {}, .onUnknown = OnUnknown::isRaw};
  std::string output = kStandardStream;  // path, or kStandardStream
  OnError onError = OnError::stop;       // not null
  std::vector<std::string> nest;         // "CHILD:PARENT"
  std::uint64_t longestLine = JsonLines::kUsualLongest;
};

// How lines and blocks are written.
void addWritingOptions(CLI::App& command, RecordForm& form);
// All that tells what is written and how, whatever the records come from.
void addRecordWritingOptions(CLI::App& command, EncodeOptions& options);
void addEncodeOptions(CLI::App& command, EncodeOptions& options);

// Turns JSON lines into a record file: the way back of decode. Failures are told in `console.messages`; the result is
// the exit code. All records before a failure are written. Throws, as a command does, before the output is touched.
int encode(const EncodeOptions& options, const Console& console);

}  // namespace oxr::rec
