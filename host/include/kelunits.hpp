#pragma once

#include <unicode/char16ptr.h>

#include <string_view>

// What is this system's own, beside the names that brokers know.
namespace oxr {

// A view of UTF-16 code units, not zero-terminated. A count of characters in this system is a count of code units.
// The host's code unit is `unsigned short`, for which libstdc++ supplies the general character traits.
using UnitView = std::basic_string_view<unsigned short>;

// ICU's code unit is char16_t. These two are the only crossing: they carry ICU's barrier against type-based aliasing.
inline const char16_t* toIcu(const unsigned short* units) {
  return icu::ConstChar16Ptr(units).get();
}
inline char16_t* toIcu(unsigned short* units) {
  return icu::Char16Ptr(units).get();
}

}  // namespace oxr
