#include "records/program/settledrecords.hpp"

namespace oxr::rec {

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
  Reading reading;
  try {
    reading = onlyReading(start, layout);
  } catch (const ToolError& error) {
    throw ToolError(input.name() + ": " + error.what());
  }
  console.messages << console.program << ": " << input.name() << ": " << reading.description() << " ("
                   << reading.options() << ")\n";
  settings.form.framing = reading.framing;
  settings.form.countsHeader = reading.countsHeader;
  return settings;
}

}  // namespace oxr::rec
