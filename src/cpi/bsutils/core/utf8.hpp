#pragma once

#include <span>

#include "core/advance.hpp"

// UTF-8 and UTF-16 in this machine's order, one into the other, as far as the text is well formed. Several times faster
// than a converter, which has to be ready for any code page, state and fault.
//
// Both stop before what is not a whole, well-formed character and before a character that finds no room. The rest of
// the output may be overwritten, up to its end.
namespace oxr::core {

Advance decodeUtf8(std::span<const unsigned char> bytes, std::span<unsigned short> units);
Advance encodeUtf8(std::span<const unsigned short> units, std::span<unsigned char> bytes);

}  // namespace oxr::core
