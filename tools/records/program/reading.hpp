#pragma once

#include <string>
#include <vector>

#include "records/options/options.hpp"

namespace oxr::rec {

// The first of these names, for a message.
std::string listOf(const std::vector<std::string>& names);

// The records of a copybook, compiled as the options select them.
class Description {
 public:
  // Tells in the console's messages what was chosen that nobody asked for. Throws what the copybook and the plan do.
  Description(const RecordOptions& options, const Console& console);

  const RecordPlan& plan() const { return plan_; }
  // What was read for it: the copybook, texts that it copies, settings of fields.
  const std::vector<std::string>& files() const { return files_; }
  // Where a result goes. Throws OutputError if that is a file which the command reads: the input, the copybook, a text
  // that it copies, settings of fields.
  FileOutput openOutput(const std::string& path, const FileInput& input, const Console& console) const;

 private:
  const RecordPlan plan_;
  std::vector<std::string> files_;  // that it was made of
};

// A worker for the input, of which nothing was read yet. If the options leave it to the program how the records lie,
// what it finds is told in the console's messages. Throws ToolError for an unknown code page.
RecordWorker::Owner makeWorker(const RecordPlan& plan, const InputOptions& options, FileInput& input,
                               FaultListener& listener, const Console& console);

// The layout that a step belongs to.
const Layout& layoutOf(const RecordPlan& plan, const Step& step);

}  // namespace oxr::rec
