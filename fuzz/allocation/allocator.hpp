#pragma once

#include <array>

// The allocators of this process, of which one allocation can be made to fail.
//
// `operator new` and `malloc` are the program's own, for all libraries that it loads, and ICU is handed functions of
// its own by u_setMemoryFunctions. So it is known of each allocation by which of the three ways it was asked for. The
// program has one thread.
namespace oxr::test {

// The ways, as bits.
enum AllocationWay : unsigned { kNew = 1, kMalloc = 2, kIcu = 4 };

// The addresses of the calls that led somewhere, the innermost first.
struct CallStack {
  std::array<void*, 64> calls{};
  int depth = 0;

  // Takes the present one; it needs no memory.
  void take();
};

// Which allocation is to fail.
struct FailurePlan {
  unsigned ways = 0;     // that count
  long point = 0;        // the number of the failing allocation, from 1
  bool lasting = false;  // whether all later ones fail, too
};

// What came of a plan.
struct FailureCount {
  long allocations = 0;  // that counted
  bool failed = false;   // whether the point was reached
  CallStack where;       // of the first failure
};

// Gives ICU its functions. Must come before any call of ICU.
void giveIcuItsMemory();
// From here on allocations count and fail as planned, until stopFailing().
void startFailing(const FailurePlan& plan);
const FailureCount& stopFailing();
// How many blocks are allocated now: by ICU, and by all others.
struct LivingBlocks {
  long icu = 0, others = 0;
};
LivingBlocks livingBlocks();

// Lets no allocation fail, and counts none, to the end of a scope.
class Unfailing {
 public:
  Unfailing();
  Unfailing(const Unfailing&) = delete;
  Unfailing& operator=(const Unfailing&) = delete;
  ~Unfailing();

 private:
  bool wasFailing_;
};

}  // namespace oxr::test
