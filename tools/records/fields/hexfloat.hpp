#pragma once

#include <array>
#include <optional>
#include <span>

namespace oxr::rec {

using LongFloat = std::array<unsigned char, 8>;

// A hexadecimal float of four or eight bytes as the same number in eight, most significant byte first, whose fraction
// does not begin with a zero digit: so the library reads it exactly, short ones beyond the range of IEEE floats too.
// Nothing if it is smaller than any such number, and not zero.
std::optional<LongFloat> normalized(std::span<const unsigned char> bytes, bool isLittle);

}  // namespace oxr::rec
