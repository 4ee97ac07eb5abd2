#include "fuzz/records/framing_check.hpp"

#include "fuzz/harness/target.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return oxr::fuzz::runTarget(
      [](oxr::fuzz::Choices& choices) {
        choices.coin() ? oxr::fuzz::checkFraming(choices) : oxr::fuzz::checkAnyFraming(choices);
      },
      data, size);
}
