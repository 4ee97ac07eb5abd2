#pragma once

#include "oxrrec/options/options.hpp"

namespace oxr::rec {

// The options, with `--records auto` replaced by the form that the input's first 64 KiB have, which is told in
// `messages` together with the reason. Throws ToolError if they have none, or several. To be called before anything of
// the input is read.
RecordWorker::Settings settledRecords(const InputOptions& options, const RecordPlan& plan, FileInput& input,
                                      std::ostream& messages);

}  // namespace oxr::rec
