#include "records/program/reading.hpp"

#include <algorithm>

#include "records/program/settledrecords.hpp"

namespace oxr::rec {

namespace {

// Of several records in a copybook one was taken that nobody named.
void tellRecordTaken(const RecordPlan& plan, const Console& console) {
  if (plan.recordsNotTaken().empty()) return;
  console.messages << console.program << ": " << plan.layout().fileName << ": all records are read as "
                   << plan.kinds().front().name
                   << "; --record or --when chooses others: " << listOf(plan.recordsNotTaken()) << '\n';
}

}  // namespace

std::string listOf(const std::vector<std::string>& names) {
  constexpr std::size_t kShown = 20;
  std::string list;
  for (std::size_t i = 0; i < std::min(names.size(), kShown); ++i)
    list += (i == 0 ? "" : ", ") + names[i];
  return names.size() <= kShown ? list : list + " and " + std::to_string(names.size() - kShown) + " more";
}

Description::Description(const RecordOptions& options, const Console& console)
    : plan_(Copybook::readFile(options.copybook.path, options.copybook.options), options.copybook.options.record,
            options.plan),
      files_(plan_.layout().fileNames) {
  files_.insert(files_.end(), options.settingFiles.begin(), options.settingFiles.end());
  tellRecordTaken(plan_, console);
}

FileOutput Description::openOutput(const std::string& path, const FileInput& input, const Console& console) const {
  return rec::openOutput(path, files_, input.descriptor(), console);
}

RecordWorker::Owner makeWorker(const RecordPlan& plan, const InputOptions& options, FileInput& input,
                               FaultListener& listener, const Console& console) {
  try {
    return RecordWorker::make(plan, settledRecords(options, plan, input, console), listener);
  } catch (const KelException& failure) {
    throw ToolError("CCSID " + std::to_string(plan.forms().front().ccsid) + ": " + faultText(failure));
  }
}

const Layout& layoutOf(const RecordPlan& plan, const Step& step) {
  const auto index = static_cast<std::uint32_t>(&step - plan.steps().data());
  for (const RecordKind& kind : plan.kinds())
    if (index >= kind.begin && index < kind.end) return *kind.layout;
  return plan.layout();
}

}  // namespace oxr::rec
