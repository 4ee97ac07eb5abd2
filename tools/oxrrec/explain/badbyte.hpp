#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "records/records.hpp"

namespace oxr::rec {

// The first byte, from 0, that is neither a digit nor, where one belongs, a sign; nothing if all are, or if the kind of
// field tells no byte from another. `zero` is the byte of the digit 0.
std::optional<std::uint32_t> badByte(const Step& step, std::span<const unsigned char> bytes, unsigned char zero);

}  // namespace oxr::rec
