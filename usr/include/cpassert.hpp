#pragma once

#include "oxrexport.hpp"

// Reports an assertion that does not hold, and returns: it neither raises nor ends the process.
//
// `expression` and `file` are zero-terminated texts (const char*), what was asserted and where; null shows as an empty
// one. At a trace level of 0 and above the host's log gets an error event 0xC000157D (OXR5501) with the inserts
// "CPAssertion failed", expression, file and line; above 2 trace shows the call.
//
// Any thread may call at any time.
//
// Example:
//   if (count < 0) cpAssert(const_cast<char*>("count >= 0"), const_cast<char*>(__FILE__), __LINE__);
OXR_EXPORT void cpAssert(void* expression, void* file, unsigned int line);
