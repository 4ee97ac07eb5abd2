#pragma once

#include <cstdint>

namespace oxr::rec {

// What becomes of a record, or an area of one, that no condition has an alternative for.
enum class OnUnknown : std::uint8_t {
  isError,    // it is a fault; where the listener of a reader goes on, a record is shown as with isRaw, and an area not
              // at all; a writer refuses it
  isSkipped,  // it is left out; the bytes of an area that nobody gives are those that nobody gives elsewhere
  isRaw,      // its bytes are in hexadecimal, as the field RAW: of a record nothing else is; all others are refused
};

}  // namespace oxr::rec
