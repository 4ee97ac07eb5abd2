#pragma once

#include "oxrrec/options/options.hpp"

namespace oxr::rec {

// The records of a copybook, compiled as the options select them.
class Description {
 public:
  // Tells in the console's messages what was chosen that nobody asked for. Throws what the copybook and the plan do.
  Description(const RecordOptions& options, const Console& console);

  const RecordPlan& plan() const { return plan_; }

 private:
  const Layout layout_;
  const RecordPlan plan_;
};

// A worker for the input. Throws ToolError for an unknown code page.
RecordWorker::Owner makeWorker(const RecordPlan& plan, const InputOptions& input, FaultListener& listener);

// The layout that a step belongs to.
const Layout& layoutOf(const RecordPlan& plan, const Step& step);

}  // namespace oxr::rec
