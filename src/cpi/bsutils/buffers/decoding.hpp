#pragma once

#include <span>

#include "codepage/codepage.hpp"
#include "core/resumablerun.hpp"
#include "cpunicodeconverter.hpp"
#include "kelbuffer.hpp"

// What the members of the text readers are made of: conversions of what a window shows, which may end anywhere in a
// text. The code page is asked for a fast way before ICU gets its turn.

namespace oxr {

using core::Decoded;
using core::toLength;

// Room for what a converter may hold back: ICU keeps no more units.
inline constexpr int kMostHeldUnits = 32;

// Bytes that are shown after those that a number of characters should take: the last character may be longer than ICU
// says, or follow a byte-order mark, and ICU counts bytes best when it sees all of a character at once.
inline constexpr int kCharacterSlack = 16;

// One conversion of the bytes from `source` up to `end`. `offsets` may be null. Without `flush` the converter may keep
// a half character and its shift state.
Decoded decode(CPUnicodeConverter& converter, const char* source, const char* end, std::span<unsigned short> target,
               int* offsets, bool flush);

// Fills `target` with the text at the absolute offset `start`, which `window` shows. While the text goes on after the
// window, the window grows by the longest characters that may still be missing: there may be any number of shifts
// between two. So U_TRUNCATED_CHAR_FOUND means the end of the data.
Decoded decodeOnward(KelBufferPointer& window, CPUnicodeConverter& converter, int start,
                     std::span<unsigned short> target, int maxBytes);

// Puts the converter into the state in which a text begins.
void startReading(CPUnicodeConverter& converter);

// Throws away the units for which the last conversion had no room. Shift states stay.
void dropHeldUnits(CPUnicodeConverter& converter);

// Appends the text of `bytes` to `target` where its units can be counted beforehand; else leaves `target`.
[[gnu::always_inline]] inline bool appendTextFast(const CPUnicodeConverter& converter, std::span<const char> bytes,
                                                  KelWstring& target) {
  const std::size_t count = CodePage::unitCount(converter, bytes);
  if (count == 0) return false;
  const unsigned length = target.length();
  if (CodePage::convertCountedFast(converter, bytes, target.appendForOverwrite(static_cast<unsigned>(count))))
      [[likely]]
    return true;
  target.eraseInternal(length, KelWstring::npos);
  return false;
}

// Whether the window ends where the data does.
inline bool showsEnd(const KelBufferPointer& window) {
  return !window.offsetAvailable(window.windowOffset() + window.windowLength());
}

}  // namespace oxr
