#include "oxrrec/index.hpp"

#include <CLI/CLI.hpp>

#include "records/json/jsontext.hpp"
#include "records/options/choice.hpp"
#include "records/parallel/recordwalk.hpp"
#include "records/program/reading.hpp"
#include "records/program/settledrecords.hpp"

namespace oxr::rec {

namespace {

// Writes the ranges as the walk goes along. The result is the number of records.
std::uint64_t putRanges(RecordWalk& walk, const Origin& origin, std::uint64_t every, JsonText& json) {
  bool isAtEnd = false;
  while (!isAtEnd) {
    const std::uint64_t begin = walk.position();
    const std::uint64_t before = walk.records();
    while (!isAtEnd && (walk.position() - begin < every || !walk.isAtStart()))
      isAtEnd = !walk.step();
    if (walk.records() == before) break;
    json.writer().StartObject();
    json.put("begin", origin.bytes + begin);
    json.put("end", origin.bytes + walk.position());
    json.put("firstRecord", origin.records + before + 1);
    json.put("records", walk.records() - before);
    json.writer().EndObject();
  }
  return walk.records();
}

std::string indexOf(const IndexOptions& options, const RecordPlan& plan, FileInput& input, const Console& console) {
  RecordWalk walk(plan, settledRecords(options.input, plan, input, console), input);
  JsonText json;
  json.writer().StartObject();
  json.writer().Key("ranges");
  json.writer().StartArray();
  const std::uint64_t records = putRanges(walk, input.origin(), options.every, json);
  json.writer().EndArray();
  json.put("records", records);
  json.writer().EndObject();
  json.endLine();
  return std::string(json.text());
}

}  // namespace

void addIndexOptions(CLI::App& command, IndexOptions& options) {
  addInputOptions(command, options.input);
  addRecordOptions(command, options.record);
  addOutputOption(command, options.output);
  command
      .add_option("--every", options.every,
                  "a range ends with the first record after so many bytes, such as 64MiB [64MiB]")
      ->transform(sizeInBytes())
      ->type_name("BYTES")
      ->group("Output");
}

int index(const IndexOptions& options, const Console& console) {
  RecordOptions silent = options.record;
  silent.plan.isSilent = true;
  const Description description(silent, console);
  FileInput input = openInput(options.input.path, options.input.window, console);
  FileOutput output = description.openOutput(options.output, input, console);
  try {
    output.write(indexOf(options, description.plan(), input, console));
  } catch (const FrameError& error) {
    throw ToolError(input.name() + ": " + error.what());
  }
  output.close();
  return kDone;
}

}  // namespace oxr::rec
