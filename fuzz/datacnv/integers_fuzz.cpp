// Binary integers of every width, read and written, against a model that goes byte by byte.

#include "fuzz/datacnv/integers_check.hpp"
#include "fuzz/harness/target.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return oxr::fuzz::runTarget(
      [](oxr::fuzz::Choices& choices) {
        oxr::fuzz::checkIntegerRead(choices);
        oxr::fuzz::checkIntegerWrite(choices);
      },
      data, size);
}
