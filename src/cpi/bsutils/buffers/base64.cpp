#include "base64.hpp"

#include <algorithm>

#include "core/base64.hpp"
#include "kelalloc.hpp"
#include "support/support.hpp"

const std::array<unsigned short, 64>& CPBase64Converter::encodeTable = oxr::core::kBase64Alphabet;
const std::array<unsigned char, 0x10000>& CPBase64Converter::decodeTable = oxr::core::kBase64Values;

void CPBase64Converter::binToBase64(const unsigned char* data, int length, KelWstring& target) {
  if (length <= 0) return;
  const auto size = static_cast<std::uint64_t>(length);
  // More than is needed: callers that put line ends into the text find room for them.
  const std::uint64_t room = target.length() + size / 76 + size + 4 * size / 3;
  target.reserve(static_cast<unsigned>(std::min<std::uint64_t>(room, KelWstring::npos / 2)));
  unsigned short* const out = target.appendForOverwrite(static_cast<unsigned>(oxr::core::base64Length(size)));
  oxr::core::encodeBase64({data, size}, out);
}

PWFData CPBase64Converter::binFromBase64(const unsigned short* text, int length) {
  const auto units = static_cast<std::uint64_t>(std::max(length, 0));
  const std::uint64_t targetSize = units * 3 / 4;
  oxr::KelBlock<unsigned char> block = oxr::allocateBlock<unsigned char>(targetSize);
  const auto [used, fault] = oxr::core::decodeBase64({text, units}, {block.get(), targetSize});
  if (fault != oxr::core::Base64Fault::none) {
    block.reset();
    oxr::raiseBare<KelConversionException>(
        oxr::untracedSite(nullptr, "CPBase64Converter::binFromBase64", "src/cpi/bsutils/base64"),
        oxr::failures::kInternalError,
        fault == oxr::core::Base64Fault::incomplete ? "Input data incomplete"
                                                    : "A large enough target buffer was not allocated");
  }
  PWFData value(block.get(), static_cast<int>(used), BINARY, ADOPT);
  static_cast<void>(block.release());
  return value;
}
