#pragma once

#include <string>

#include "records/options/options.hpp"

namespace oxr::rec {

struct VerifyOptions {
  RecordOptions record;
  InputOptions input;  // a file: it is read twice
  bool keepsFiller = false;
  bool pointsAsText = false;
};

void addVerifyOptions(CLI::App& command, VerifyOptions& options);

// Decodes a record file and encodes it again in memory, and tells on standard output whether all bytes are equal, or
// which are not. The result is the exit code: kDone only if they are. Throws as a command does.
int verify(const VerifyOptions& options, const Console& console);

}  // namespace oxr::rec
