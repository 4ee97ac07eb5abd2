#pragma once

#include "records/framing/recordform.hpp"

namespace oxr::rec {

// Sets the characters of `lines` to those of a code page. Throws ToolError for a code page without a line end of one
// byte, KelRecoverableException for one that is not known; in other framings, where only hints look at them, they then
// stay as they are.
void setLineCharacters(RecordForm& form, int ccsid);

}  // namespace oxr::rec
