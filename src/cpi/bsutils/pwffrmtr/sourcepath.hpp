#pragma once

namespace oxr {

// The source path that goes out in trace and failures of the formatter, whichever file a member stands in.
inline constexpr char kFormatterPath[] = "src/cpi/bsutils/pwffrmtr";

}  // namespace oxr
