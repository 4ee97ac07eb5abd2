#pragma once

#include <cstddef>
#include <span>

#include "kelunits.hpp"

// Padding: how much of it there is at either end, and bytes of it.
namespace oxr::core {

// How many units at an end are `pad`; the white-space forms ask ICU. A text of nothing else gives its length.
std::size_t leadingPads(UnitView text, unsigned short pad);
std::size_t trailingPads(UnitView text, unsigned short pad);
std::size_t leadingSpaces(UnitView text);
std::size_t trailingSpaces(UnitView text);

// The same for bytes.
std::size_t leadingPads(std::span<const unsigned char> bytes, unsigned char pad);
std::size_t trailingPads(std::span<const unsigned char> bytes, unsigned char pad);

// Fills `room` with the sequence over and over. REQUIRES: the sequence isn't empty.
void repeat(std::span<unsigned char> room, std::span<const unsigned char> sequence);

// The same as a string copy would do it: from the first zero byte on all is zero.
void repeatUpToZero(std::span<unsigned char> room, std::span<const unsigned char> sequence);

}  // namespace oxr::core
