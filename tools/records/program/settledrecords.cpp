#include "records/program/settledrecords.hpp"

#include "records/parallel/recordcutter.hpp"

namespace oxr::rec {

namespace {

// Reads records that follow each other without headers, each as long as its counts say. What is wrong with a record
// that the start does not hold as a whole may be that.
CountedRecords walkAlongCounts(const RecordPlan& plan, RecordWorker::Settings settings, const InputStart& start) {
  settings.form = {.framing = Framing::fixed};
  Chunk chunk;
  chunk.bytes.assign(start.bytes.begin(), start.bytes.end());
  ChunkSource source(chunk, start);
  RecordWalk walk(plan, settings, source);
  try {
    while (walk.step())
      continue;
    return {walk.records()};
  } catch (const FrameError& error) {
    const bool isWhole = start.size && *start.size <= start.bytes.size();
    const bool isCut = !isWhole && start.bytes.size() - walk.position() < plan.maxSize();
    return {walk.records(), isCut ? "" : error.what()};
  }
}

}  // namespace

RecordWorker::Settings settledRecords(const InputOptions& options, const RecordPlan& plan, FileInput& input,
                                      const Console& console) {
  RecordWorker::Settings settings = options.records;
  if (settings.form.framing != Framing::automatic) return settings;
  const RecordForm layout = recordForm(plan, settings.form);
  int size = 0;
  const char* const bytes = input.slide(0, kDetectBytes)->getData(&size, 0);
  InputStart start{{reinterpret_cast<const unsigned char*>(bytes), static_cast<std::size_t>(size)}, input.totalSize()};
  if (size < static_cast<int>(kDetectBytes)) start.size = start.bytes.size();
  start.bytes = start.bytes.first(std::min<std::size_t>(start.bytes.size(), kDetectBytes));
  if (layout.isVariable) start.counted = walkAlongCounts(plan, settings, start);
  Reading reading;
  try {
    reading = onlyReading(start, layout);
  } catch (const ToolError& error) {
    throw ToolError(input.name() + ": " + error.what());
  }
  console.messages << console.program << ": " << input.name() << ": "
                   << (start.bytes.empty() ? "no byte, so no record in any form" : reading.description()) << " ("
                   << reading.options() << ")\n";
  settings.form.framing = reading.framing;
  settings.form.countsHeader = reading.countsHeader;
  return settings;
}

}  // namespace oxr::rec
