#pragma once

#include <array>
#include <functional>
#include <string>

#include "fuzz/allocation/allocator.hpp"

// One operation with one failing allocation, in a process of its own: it may crash, and much of what allocates does so
// once a process.
namespace oxr::test {

// Does the operation once and tells what came of it, so that two runs can be compared. It lets the failures out that it
// does not expect.
using Call = std::function<std::string()>;

struct Operation {
  std::string name;
  std::function<Call()> prepare;  // makes what the call works on; no allocation fails in it
  std::string stated = {};        // numbers of failures that stand for any failure, a want of memory among them
};

// What a child tells of itself; it lies in memory that parent and child share.
struct Trial {
  FailureCount count;
  std::array<char, 1000> outcome;   // "= text", or what was raised
  std::array<char, 1000> repeated;  // the same of a second call, with all the memory that there is
  LivingBlocks left;                // that the two calls left allocated
  int signal;                       // that ended the child; 0 for none
  CallStack crash;
};

// Runs `operation` in a child and fills `trial`, which lies in shared memory.
void runTrial(const Operation& operation, const FailurePlan& plan, Trial& trial);
// Memory that children share.
Trial& sharedTrial();

}  // namespace oxr::test
