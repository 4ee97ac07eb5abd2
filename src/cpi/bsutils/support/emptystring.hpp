#pragma once

#include "kelwstring.hpp"

// The library's one empty string. The compiler builds it, so that statics of any source may use it.
inline constinit const KelWstring EMPTYSTRING;
