#pragma once

#include <cstdint>
#include <string>

#include "records/options/options.hpp"

namespace oxr::rec {

struct ExplainOptions {
  std::uint64_t number = 0;  // of the record, from 1
  RecordOptions record;
  InputOptions input;
  std::string page;  // path of the page for a browser; empty for the table
};

void addExplainOptions(CLI::App& command, ExplainOptions& options);

// Shows one record, field by field. The exit code is kBadField if it has a bad field.
int explain(const ExplainOptions& options, const Console& console);

}  // namespace oxr::rec
