#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "kelwstring.hpp"

// Small edits of host strings that the text members share, in terms of units and not of zero-terminated texts.
namespace oxr {

// The position of the first ".", or KelWstring::npos.
inline unsigned findPoint(const KelWstring& text) {
  return text.find(u'.', 0);
}
inline void insertUnit(KelWstring& text, unsigned position, unsigned short unit) {
  text.insertInternal(position, &unit, 1, 0);
}
inline void appendUnit(KelWstring& text, unsigned short unit) {
  insertUnit(text, text.length(), unit);
}
inline void setToZero(KelWstring& text) {
  constexpr unsigned short kZero = '0';
  text.assignInternal(&kZero, 1, 0);
}

// Inserts `count` copies of a unit before `position`. A text that no string can hold is a std::length_error.
inline void insertCopies(KelWstring& text, unsigned position, std::uint32_t count, unsigned short unit) {
  unsigned short few[64];
  if (count <= std::size(few)) {
    std::fill_n(few, count, unit);
    text.insertInternal(position, few, count, 0);
    return;
  }
  // Many copies are written where they stay, in a string that replaces the old one.
  const UnitView old = text.view();
  if (std::uint64_t{count} + old.size() >= KelWstring::npos) throw std::length_error("KelWstring");
  KelWstring grown;
  unsigned short* const units = grown.resizeForOverwrite(text.length() + count);
  unsigned short* const copies = std::copy_n(old.data(), position, units);
  std::copy(old.begin() + position, old.end(), std::fill_n(copies, count, unit));
  text = std::move(grown);
}

}  // namespace oxr
