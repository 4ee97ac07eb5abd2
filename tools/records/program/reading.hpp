#pragma once

#include "records/options/options.hpp"

namespace oxr::rec {

// The records of a copybook, compiled as the options select them.
class Description {
 public:
  // Tells in the console's messages what was chosen that nobody asked for. Throws what the copybook and the plan do.
  Description(const RecordOptions& options, const Console& console);

  const RecordPlan& plan() const { return plan_; }

 private:
  const RecordPlan plan_;
};

// A worker for the input, of which nothing was read yet. If the options leave it to the program how the records lie,
// what it finds is told in the console's messages. Throws ToolError for an unknown code page.
RecordWorker::Owner makeWorker(const RecordPlan& plan, const InputOptions& options, FileInput& input,
                               FaultListener& listener, const Console& console);

// The layout that a step belongs to.
const Layout& layoutOf(const RecordPlan& plan, const Step& step);

}  // namespace oxr::rec
