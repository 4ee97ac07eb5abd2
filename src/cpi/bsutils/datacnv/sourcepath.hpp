#pragma once

namespace oxr {

// The source path that goes out in trace and failures of DataCnv, whichever file a member stands in.
inline constexpr char kDataCnvPath[] = "src/cpi/bsutils/datacnv";
// That of the static members, which have no object to speak for.
inline constexpr char kDataCnvHeaderPath[] = "usr/include/dataconv";

}  // namespace oxr
