#pragma once

#include "records/options/options.hpp"

namespace oxr::rec {

// The options, with `--records auto` replaced by the form that the input's first 64 KiB have, which is told in
// the console's messages together with the reason. Throws ToolError if they have none, or several. To be called before
// anything of the input is read.
RecordWorker::Settings settledRecords(const InputOptions& options, const RecordPlan& plan, FileInput& input,
                                      const Console& console);

}  // namespace oxr::rec
