#pragma once

#include <ostream>
#include <string>

#include "kelwstring.hpp"
#include "kelwstringconvertor.hpp"

// Host strings in tests: written u"12.5"_k, shown as UTF-8 where an expectation fails.

namespace oxr::test {

inline KelWstring operator""_k(const char16_t* text, std::size_t length) {
  KelWstring result;
  unsigned short* const units = result.resizeForOverwrite(static_cast<unsigned>(length));
  for (std::size_t i = 0; i < length; ++i)
    units[i] = text[i];
  return result;
}
inline KelWstring k(std::string_view utf8) {
  return oxr::fromUtf8(utf8);
}

}  // namespace oxr::test

inline void PrintTo(const KelWstring& text, std::ostream* out) {
  *out << '"' << oxr::toUtf8(text) << '"';
}
