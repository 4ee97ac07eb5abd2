// One step of decoding through a window, and the run of steps that fills a target: the window grows as long as the text
// goes on and units are missing, so that only the end of the data can cut a character off.

#include "buffers/decoding.hpp"

#include "support/support.hpp"

namespace oxr {

Decoded decode(CPUnicodeConverter& converter, const char* source, const char* end, std::span<unsigned short> target,
               int* offsets, bool flush) {
  Decoded result;
  unsigned short* written = target.data();
  const char* passed = source;
  converter.toUnicode(written, target.data() + target.size(), passed, end, offsets, flush, result.status);
  result.units = static_cast<int>(written - target.data());
  result.bytes = static_cast<int>(passed - source);
  return result;
}

namespace {

// Fills `target` from what the window shows already.
inline bool decodeShownFast(const KelBufferPointer& window, const CPUnicodeConverter& converter, int start,
                            std::span<unsigned short> target, Decoded& run) {
  const std::span shown(window.getOffsetPointer(start), window.getEndPointer());
  const core::Advance done = CodePage::convertFast(converter, shown, target);
  if (done.written != target.size() || target.empty()) return false;
  run.units = static_cast<int>(done.written);
  run.bytes = static_cast<int>(done.read);
  return true;
}

}  // namespace

Decoded decodeOnward(KelBufferPointer& window, CPUnicodeConverter& converter, int start,
                     std::span<unsigned short> target, int maxBytes) {
  Decoded run;
  if (wentFast([&] { return decodeShownFast(window, converter, start, target, run); })) [[likely]]
    return run;
  window.extendLength(kCharacterSlack, true);
  for (;;) {
    const bool last = showsEnd(window);
    const auto room = target.subspan(static_cast<std::size_t>(run.units));
    const Decoded pass =
        decode(converter, window.getOffsetPointer(start + run.bytes), window.getEndPointer(), room, nullptr, last);
    run = {run.units + pass.units, run.bytes + pass.bytes, pass.status};
    const std::size_t missing = room.size() - static_cast<std::size_t>(pass.units);
    if (last || missing == 0 || U_FAILURE(pass.status)) return run;
    window.extendLength(toLength(static_cast<std::int64_t>(missing) * maxBytes), true);
  }
}

void startReading(CPUnicodeConverter& converter) {
  if (!CodePage::isAtStart(converter)) converter.resetToUnicode();
}

void dropHeldUnits(CPUnicodeConverter& converter) {
  unsigned short units[kMostHeldUnits];
  const char* const nothing = "";
  decode(converter, nothing, nothing, units, nullptr, false);
}

}  // namespace oxr
