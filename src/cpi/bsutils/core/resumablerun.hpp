#pragma once

#include <unicode/utypes.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <span>

// A run of characters in a mixed code page, read where the data ends for now: more bytes may or may not come.
namespace oxr::core {

// Sums and products of lengths, cut to what a length can say.
constexpr int toLength(std::int64_t length) {
  constexpr std::int64_t kMost = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(length, -kMost, kMost));
}

// What a conversion did: units written, bytes passed over, ICU's status.
struct Decoded {
  int units = 0;
  int bytes = 0;
  UErrorCode status = U_ZERO_ERROR;
};

// Fills `target` from the run that `window` shows:
//   std::span<const char> window.bytes()            the run from its start to the window's end
//   bool window.extend(int more, bool acceptShorter)
//   Decoded decode(std::span<const char> bytes, std::span<unsigned short> target)
//   void restart()                                  the converter begins anew
// A character that is cut off at the window's end is no failure while the window can grow. The result's units are all
// that was written, its bytes those of the last conversion, its status the failure or U_ZERO_ERROR.
//
// Once grown, the run is read again from its start, and its units follow those that are already there. Meant:
// ResumableRun.ReadsFromTheStartAgainAfterWhatItHas.
template <class Window, class Decode, class Restart>
Decoded readResumableRun(Window& window, std::span<unsigned short> target, int minBytes, int maxBytes, Decode decode,
                         Restart restart) {
  Decoded run;
  for (;;) {
    const Decoded pass = decode(window.bytes(), target.subspan(static_cast<std::size_t>(run.units)));
    run.units += pass.units;
    run.bytes = pass.bytes;
    const int missing = static_cast<int>(target.size()) - run.units;
    const bool truncated = pass.status == U_TRUNCATED_CHAR_FOUND;
    if (pass.status == U_BUFFER_OVERFLOW_ERROR || (U_SUCCESS(pass.status) && missing == 0)) return run;
    run.status = U_FAILURE(pass.status) ? pass.status : U_ZERO_ERROR;
    if (U_FAILURE(pass.status) && !truncated) return run;
    if (truncated) restart();
    if (missing < 1 || !window.extend(toLength(std::int64_t{missing} * minBytes), false)) return run;
    const std::int64_t wanted = std::int64_t{maxBytes} * static_cast<std::int64_t>(target.size());
    const auto shown = static_cast<std::int64_t>(window.bytes().size());
    if (wanted > shown) window.extend(toLength(wanted - shown), true);
    run.status = U_ZERO_ERROR;
  }
}

}  // namespace oxr::core
