#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/blocks.hpp"
#include "kelunits.hpp"

// The first units of a text in registers, as many as there is room for, however long the text is. What comes after the
// text's end is anything.
//
// Real files hold numbers of any length, and a processor that is to copy just so many units foresees that seldom: the
// misprediction would cost more than all of a conversion. So the registers are filled from memory as it is, beyond the
// end of the text too. A machine protects memory by pages, and the loads stay in the page where the text begins: they
// can't fail, and what they bring has no influence on a result. The language knows no such load, so it is an
// instruction of its own. A text that lies across the end of a page is copied first, and so is each one on other
// machines.
namespace oxr::core {

template <std::size_t kVectors>
using TextStart = std::array<UnitVector, kVectors>;

#ifdef __x86_64__
inline constexpr bool kLoadsPastEnd = true;
inline UnitVector loadPastEnd(const unsigned short* from) {
  using LooseUnits [[gnu::vector_size(16), gnu::aligned(2), gnu::may_alias]] = unsigned short;
  UnitVector units;
  asm("movdqu %1, %0" : "=x"(units) : "m"(*reinterpret_cast<const LooseUnits*>(from)));
  return units;
}
#else
inline constexpr bool kLoadsPastEnd = false;
UnitVector loadPastEnd(const unsigned short* from);  // never called
#endif

// Whether so many bytes from an address on lie in one page. No machine has smaller ones.
inline bool isWithinPage(const void* address, std::size_t bytes) {
  constexpr std::uintptr_t kPage = 4096;
  return std::bit_cast<std::uintptr_t>(address) % kPage <= kPage - bytes;
}

template <std::size_t kVectors>
[[gnu::noinline, gnu::cold]] TextStart<kVectors> copiedStart(UnitView text) {
  TextStart<kVectors> start = {};
  std::memcpy(start.data(), text.data(), std::min(sizeof start, text.size() * sizeof text[0]));
  return start;
}

// Loads the start of a text that lies in one page. False where it has to be copied.
template <std::size_t kVectors>
[[gnu::always_inline]] inline bool loadStart(const unsigned short* text, TextStart<kVectors>& start) {
  if constexpr (kLoadsPastEnd)
    if (isWithinPage(text, sizeof start)) [[likely]] {
      for (std::size_t i = 0; i < kVectors; ++i)
        start[i] = loadPastEnd(text + 8 * i);
      return true;
    }
  return false;
}

// Calls for the copy only where there has to be one. REQUIRES, like all below: the text has a unit, or a terminator.
// Where an empty one ends its page nothing may be loaded.
template <std::size_t kVectors, class Copy>
[[gnu::always_inline]] inline TextStart<kVectors> textStart(const unsigned short* text, Copy copy) {
  TextStart<kVectors> start;
  if (loadStart(text, start)) [[likely]]
    return start;
  return copy();
}

template <std::size_t kVectors>
[[gnu::always_inline]] inline TextStart<kVectors> textStart(UnitView text) {
  return textStart<kVectors>(text.data(), [text] { return copiedStart<kVectors>(text); });
}
// Of a text that is terminated by a zero.
template <std::size_t kVectors>
[[gnu::always_inline]] inline TextStart<kVectors> textStart(const unsigned short* text) {
  return textStart<kVectors>(text, [text] {
    std::size_t length = 0;
    while (length < 8 * kVectors && text[length] != 0)
      ++length;
    return copiedStart<kVectors>(UnitView(text, length));
  });
}

}  // namespace oxr::core
