#pragma once

namespace oxr {

// Whether `count` elements from `begin` on can be given to ICU, which would read and write through a null pointer.
inline bool isValidRange(const void* begin, int count) {
  return count == 0 || (count > 0 && begin != nullptr);
}

}  // namespace oxr
