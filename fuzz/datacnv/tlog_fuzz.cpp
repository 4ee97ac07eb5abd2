// Transaction-log fields of any bytes, and texts of any kind written into fields of any size.

#include "fuzz/datacnv/tlog_check.hpp"
#include "fuzz/harness/target.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return oxr::fuzz::runTarget(
      [](oxr::fuzz::Choices& choices) {
        (choices.coin() ? oxr::fuzz::checkTlogRead : oxr::fuzz::checkTlogWrite)(choices);
      },
      data, size);
}
