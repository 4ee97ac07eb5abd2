#pragma once

#include "records/framing/recordform.hpp"

namespace oxr::rec {

// Sets the characters of `lines` to those of a code page. Other framings need none: they stay as they are. Throws
// ToolError for a code page without a line end of one byte, KelRecoverableException for one that is not known.
void setLineCharacters(RecordForm& form, int ccsid);

}  // namespace oxr::rec
