#include "oxrrec/reading.hpp"

#include "oxrrec/framing.hpp"

namespace oxr::rec {

Description::Description(const RecordOptions& options, const Console&)
    : layout_(readCopybookFile(options.copybook.path, options.copybook.options)), plan_(layout_, options.plan) {}

RecordWorker::Owner makeWorker(const RecordPlan& plan, const InputOptions& options, FileInput& input,
                               FaultListener& listener, const Console& console) {
  try {
    return RecordWorker::make(plan, settledRecords(options, plan, input, console.messages), listener);
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
