#pragma once

#include <string>

#include "fuzz/allocation/allocator.hpp"

// Who a stack of calls belongs to. The names are those that the dynamic linker knows: a function that a library hides
// shows as its place in the library.
namespace oxr::test {

struct CallSite {
  bool isIcu = false;     // whether ICU's own code was the innermost, but for the C and C++ libraries
  std::string innermost;  // that function
  std::string entry;      // ICU's outermost function, which our code had called; empty where it is none of ICU's
};

CallSite siteOf(const CallStack& stack);

// All of it, a line a call.
std::string linesOf(const CallStack& stack);

}  // namespace oxr::test
