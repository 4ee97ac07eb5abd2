#pragma once

#include "oxrrec/decode.hpp"
#include "records/program/reading.hpp"

namespace oxr::rec {

// decode() on options.jobs threads: the same lines, messages and exit code. Throws ToolError for options that need the
// records one after the other.
int decodeInJobs(const DecodeOptions& options, const Console& console, const Description& description);

}  // namespace oxr::rec
