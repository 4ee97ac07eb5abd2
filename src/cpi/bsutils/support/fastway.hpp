#pragma once

#include <atomic>
#include <cstdint>

#include "oxrexport.hpp"
#include "support/trace.hpp"

namespace oxr {

#if defined(OXR_COUNT_GENERAL_WAYS)
// How often a guard sent a conversion of this process the general way. Only builds with tests count: a differential
// test of a fast way means nothing where the fast way was never taken.
OXR_EXPORT std::uint64_t generalWaysTaken();

extern std::atomic<std::uint64_t> generalWayCount;
#endif

// The one guard of all fast ways.
//
// A conversion has its general way, which is the whole of it: trace, argument tests in their order, every case, the
// failures. It may have one fast way beside it, for the fields that most messages are made of. A function named
// `...Fast` is such a way: inline, without trace, without a failure; it says whether it served and leaves no trace of
// itself where it did not. A function named `...General` is the other. The guard lets a conversion go the fast way
// while debug trace is off, and true says that it is done.
//
// Example:
//   PWFInt64 DataCnv::UStringToInt64(const KelWstring& digits) {
//     PWFInt64 value;
//     if (wentFast([&] { return readIntegerFast(digits.view(), value); })) [[likely]] return value;
//     return DataCnvParts::readIntegerGeneral(*this, digits);
//   }
template <class Fast>
[[gnu::always_inline]] inline bool wentFast(Fast fast) {
  if (!debugTraceOn() && fast()) [[likely]]
    return true;
#if defined(OXR_COUNT_GENERAL_WAYS)
  // Not an increment of one piece, which would cost more than some general ways: threads may lose counts, but not all.
  generalWayCount.store(generalWayCount.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
#endif
  return false;
}

}  // namespace oxr
