#pragma once

#include <cstdint>
#include <string>

#include "records/options/options.hpp"

namespace oxr::rec {

enum class LayoutForm : std::uint8_t { table, jsonSchema, sql };

struct LayoutOptions {
  RecordOptions record;
  LayoutForm form = LayoutForm::table;
  bool pointsAsText = false;
  std::string output = kStandardStream;  // path, or kStandardStream
};

void addLayoutOptions(CLI::App& command, LayoutOptions& options);

// Writes how a copybook lays its records out. Needs no record file.
int layout(const LayoutOptions& options, const Console& console);

}  // namespace oxr::rec
