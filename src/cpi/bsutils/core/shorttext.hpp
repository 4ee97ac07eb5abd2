#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "kelunits.hpp"

namespace oxr::core {

// Text that is put together from short pieces, in place. REQUIRES: all that is appended fits N units.
template <std::size_t N>
class ShortText {
 public:
  void append(unsigned short unit) { units_[size_++] = unit; }
  void append(UnitView text) {
    for (const unsigned short unit : text)
      append(unit);
  }
  // Text of ASCII characters.
  void append(std::string_view text) {
    for (const char character : text)
      append(static_cast<unsigned short>(character));
  }

  bool empty() const { return size_ == 0; }
  UnitView view() const { return {units_.data(), size_}; }

 private:
  std::array<unsigned short, N> units_;
  std::size_t size_ = 0;
};

// Tells whether a text is this one of ASCII characters.
inline bool isText(UnitView text, std::string_view ascii) {
  if (text.size() != ascii.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i)
    if (text[i] != static_cast<unsigned short>(ascii[i])) return false;
  return true;
}

}  // namespace oxr::core
