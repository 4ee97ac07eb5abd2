#pragma once

#include <cstdint>
#include <string>

#include "records/options/options.hpp"

namespace oxr::rec {

struct IndexOptions {
  RecordOptions record;
  InputOptions input;
  std::string output = kStandardStream;           // path, or kStandardStream
  std::uint64_t every = std::uint64_t{64} << 20;  // bytes of a range
};

void addIndexOptions(CLI::App& command, IndexOptions& options);

// Writes the ranges that a file can be read in, one by one, as JSON:
//
//   {"ranges":[{"begin":0,"end":620,"firstRecord":1,"records":20},...],"records":30}
//
// Each is what `decode --range begin-end` takes, and what that writes of all of them equals what it writes of the
// whole.
int index(const IndexOptions& options, const Console& console);

}  // namespace oxr::rec
