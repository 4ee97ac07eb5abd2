#pragma once

#include <optional>
#include <string>
#include <vector>

#include "records/program/console.hpp"
#include "records/records.hpp"

// The options that commands share, a function a topic. A command's options are a struct of its own that holds those of
// the topics it has, and a function that adds them all to its part of the command line.

namespace CLI {
class App;
}

namespace oxr::rec {

// Where the layout comes from.
struct CopybookSource {
  std::string path;
  CopybookOptions options;
};

// What a record holds: needed to read one and to write one.
struct RecordOptions {
  CopybookSource copybook;
  RecordPlan::Options plan;
  std::vector<std::string> settingFiles{};  // those that settings of fields were read from
};

// Who knows how records lie: he who says so; or nobody, until an input is looked at.
enum class FormIs : std::uint8_t { said, saidOrFound };

// A record file, and how its records lie.
struct InputOptions {
  std::string path;  // or kStandardStream
  InputWindow window;
  RecordWorker::Settings records;
};

// Topic "copybook": the file, its form, the entry of it.
void addCopybookOptions(CLI::App& command, CopybookSource& copybook);
// Topic "fields": how fields are stored.
void addFieldOptions(CLI::App& command, RecordOptions& record);
// Topic "kinds of record": which record, or which of the items that share their bytes, is at hand.
void addKindOptions(CLI::App& command, RecordOptions& record);
void addUnknownOption(CLI::App& command, OnUnknown& onUnknown);
void addUnknownLineOption(CLI::App& command, OnUnknown& onUnknown);
// Topic "records": how records lie in a file. Those of the first function tell how long a record is.
void addLengthOptions(CLI::App& command, RecordOptions& record);
void addFramingOptions(CLI::App& command, RecordForm& form, FormIs known = FormIs::saidOrFound);
void addWindowOptions(CLI::App& command, InputWindow& window);
// Topic "fields", for writing: the byte that stands where no field gives one.
void addFillerOption(CLI::App& command, std::optional<unsigned char>& filler);

// What shows in the values of a record beside the copybook: kinds of record, and the topic "fields" without code pages.
void addValueOptions(CLI::App& command, RecordOptions& record);
// All that tells what a record holds: the topics copybook, kinds of record and fields, and the lengths.
void addRecordOptions(CLI::App& command, RecordOptions& record);
// The input as the argument INPUT, and how its records lie.
void addInputOptions(CLI::App& command, InputOptions& input);
// Where the result goes.
void addOutputOption(CLI::App& command, std::string& path);

}  // namespace oxr::rec
