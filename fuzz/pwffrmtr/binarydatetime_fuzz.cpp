// Date-times as binary fields: any pattern, any bytes.

#include "fuzz/pwffrmtr/binarydatetime_check.hpp"

#include "fuzz/harness/target.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return oxr::fuzz::runTarget(oxr::fuzz::checkBinaryDateTime, data, size);
}
