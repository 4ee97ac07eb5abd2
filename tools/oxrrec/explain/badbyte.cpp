#include "oxrrec/explain/badbyte.hpp"

namespace oxr::rec {

namespace {

constexpr unsigned kTen = 10;

// Two digits a byte; the last half byte is a sign in COMP-3, which is above the digits.
bool isPackedByte(Kind kind, unsigned byte, bool isLast) {
  const bool lowIsDigit = (byte & 15U) < kTen;
  return byte >> 4U < kTen && lowIsDigit != (isLast && kind == Kind::packed);
}

// A byte at the end where a sign may be is not looked at: signs have many forms.
bool mayBeSign(ESign sign, std::size_t at, std::size_t size) {
  if (sign == eSignLeadingIncluded || sign == eSignLeadingSeparate) return at == 0;
  return (sign == eSignTrailingIncluded || sign == eSignTrailingSeparate) && at + 1 == size;
}

}  // namespace

std::optional<std::uint32_t> badByte(const Step& step, std::span<const unsigned char> bytes, unsigned char zero) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bool isGood = true;
    if (step.kind == Kind::packed || step.kind == Kind::unsignedPacked)
      isGood = isPackedByte(step.kind, bytes[i], i + 1 == bytes.size());
    else if (step.kind == Kind::external)
      isGood = static_cast<unsigned>(bytes[i]) - zero < kTen || mayBeSign(step.sign, i, bytes.size());
    if (!isGood) return static_cast<std::uint32_t>(i);
  }
  return std::nullopt;
}

}  // namespace oxr::rec
