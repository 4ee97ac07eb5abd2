#include "oxrrec/reading.hpp"

namespace oxr::rec {

Description::Description(const RecordOptions& options, const Console&)
    : layout_(readCopybookFile(options.copybook.path, options.copybook.options)), plan_(layout_, options.plan) {}

RecordWorker::Owner makeWorker(const RecordPlan& plan, const InputOptions& input, FaultListener& listener) {
  try {
    return RecordWorker::make(plan, input.records, listener);
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
