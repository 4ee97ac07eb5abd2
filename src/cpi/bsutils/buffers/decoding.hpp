#pragma once

#include <span>

#include "core/resumablerun.hpp"
#include "core/singlebyte.hpp"
#include "cpunicodeconverter.hpp"
#include "kelbuffer.hpp"

namespace oxr {

using core::Decoded;
using core::toLength;

// Room for what a converter may hold back: ICU keeps no more units.
inline constexpr int kMostHeldUnits = 32;

// Bytes that are shown behind those that a number of characters should take: the last character may be longer than ICU
// says, or behind a byte-order mark, and ICU counts bytes best when it sees all of a character at once.
inline constexpr int kCharacterSlack = 16;

// One conversion of the bytes from `source` up to `end`, through the table where the code page is one. `offsets` may be
// null. Without `flush` the converter may keep a half character and its shift state.
Decoded decode(CPUnicodeConverter& converter, const char* source, const char* end, std::span<unsigned short> target,
               int* offsets, bool flush);

// Fills `target` with the text at the absolute offset `start`, which `window` shows. While the text goes on behind the
// window, the window grows by the longest characters that may still be missing: there may be any number of shifts
// between two. So U_TRUNCATED_CHAR_FOUND means the end of the data.
Decoded decodeOnward(KelBufferPointer& window, CPUnicodeConverter& converter, int start,
                     std::span<unsigned short> target, int maxBytes);

// Puts the converter into its initial state.
void restart(CPUnicodeConverter& converter);

// Throws away the units for which the last conversion had no room. Shift states stay.
void dropHeldUnits(CPUnicodeConverter& converter);

// What the window shows in a single-byte code page: a unit for each byte to `units`.
inline void decodeShownBytes(const KelBufferPointer& window, const core::SingleByteTable& table,
                             unsigned short* units) {
  const char* const source = window.getOffsetPointer(window.windowOffset());
  core::decodeSingleBytes(
      {reinterpret_cast<const unsigned char*>(source), static_cast<std::size_t>(window.windowLength())}, table, units);
}

// Whether the window ends where the data does.
inline bool showsEnd(const KelBufferPointer& window) {
  return !window.offsetAvailable(window.windowOffset() + window.windowLength());
}

}  // namespace oxr
