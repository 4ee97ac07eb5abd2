#pragma once

#include <string>

#include "oxrrec/decode.hpp"
#include "records/options/options.hpp"

namespace oxr::rec {

struct ProfileOptions {
  RecordOptions record;
  InputOptions input;
  std::string output = kStandardStream;
  bool isJson = false;
};

void addProfileOptions(CLI::App& command, ProfileOptions& options);

// Reads a whole file and tells of each field what its bytes are. The exit code is kBadField if there is a bad field.
int profile(const ProfileOptions& options, const Console& console);

}  // namespace oxr::rec
