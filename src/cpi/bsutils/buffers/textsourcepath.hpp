#pragma once

namespace oxr {

// The source path that goes out in trace and failures of the text buffers, whichever file a member stands in.
inline constexpr char kTextBufferPath[] = "src/cpi/bsutils/textbffr";

}  // namespace oxr
