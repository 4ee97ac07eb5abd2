#pragma once

#include <string_view>

#include "fuzz/allocation/callsites.hpp"

// What ICU itself does wrong when memory fails. It is counted, not mended; anything else that goes wrong is ours and
// fails the test.
namespace oxr::test {

struct IcuFault {
  enum Kind {
    crashes,    // ends the process
    remembers,  // says ever after that there is no memory
    loses,      // gives another result and says nothing
    leaks,      // leaves blocks behind
  };
  Kind kind;
  std::string_view entry;   // the function of ICU that was called
  std::string_view reason;  // what happens in it
  // Whether a crash is in that very function. It would be there, too, where we had handed it a null.
  bool isInItself = false;
};

// Whether ICU is known to do so in the function that was called there.
bool isKnown(IcuFault::Kind kind, const CallSite& site);

}  // namespace oxr::test
