#pragma once

#include <cstddef>
#include <span>

#include "kelunits.hpp"

// Padding as plain runs: how many equal units or bytes there are at an end, and how to fill room with bytes of them.
// What a pad character is, and in which code page, is decided above.
namespace oxr::core {

// How many units at an end are `pad`, or are white space as ICU sees it. A text of nothing else gives its length.
std::size_t leadingPads(UnitView text, unsigned short pad);
std::size_t trailingPads(UnitView text, unsigned short pad);
std::size_t leadingSpaces(UnitView text);
std::size_t trailingSpaces(UnitView text);

// The same for bytes.
std::size_t leadingPads(std::span<const unsigned char> bytes, unsigned char pad);
std::size_t trailingPads(std::span<const unsigned char> bytes, unsigned char pad);

// Fills `room` with the sequence over and over. REQUIRES: the sequence isn't empty.
void repeat(std::span<unsigned char> room, std::span<const unsigned char> sequence);

// The same as a string copy of the padding would do it: from the first zero byte on, all is zero.
void repeatUpToZero(std::span<unsigned char> room, std::span<const unsigned char> sequence);

}  // namespace oxr::core
