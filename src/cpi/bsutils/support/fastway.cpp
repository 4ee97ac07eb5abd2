#include "support/fastway.hpp"

#if defined(OXR_COUNT_GENERAL_WAYS)
namespace oxr {

constinit std::atomic<std::uint64_t> generalWayCount = 0;

std::uint64_t generalWaysTaken() {
  return generalWayCount.load(std::memory_order_relaxed);
}

}  // namespace oxr
#endif
