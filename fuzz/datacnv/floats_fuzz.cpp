// Floats of both formats against slow routines, and fields of any bytes.

#include "fuzz/datacnv/floats_check.hpp"
#include "fuzz/harness/target.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return oxr::fuzz::runTarget(
      [](oxr::fuzz::Choices& choices) {
        oxr::fuzz::checkFloatFormats(choices);
        oxr::fuzz::checkFloatFields(choices);
      },
      data, size);
}
