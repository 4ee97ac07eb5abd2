#pragma once

#include "kelwstring.hpp"

// The library's one empty string. Built by the compiler, so that statics of any source may use it.
inline constinit const KelWstring EMPTYSTRING;
