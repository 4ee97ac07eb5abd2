#include "buffers/decoding.hpp"

#include <algorithm>

#include "codepage/codepage.hpp"
#include "codepage/directpath.hpp"

namespace oxr {

namespace {

Decoded decodeTable(const core::SingleByteTable& table, const char* source, const char* end,
                    std::span<unsigned short> target, int* offsets) {
  const auto size = static_cast<std::size_t>(end - source);
  const std::size_t count = std::min(size, target.size());
  core::decodeSingleBytes({reinterpret_cast<const unsigned char*>(source), count}, table, target.data());
  if (offsets != nullptr)
    for (std::size_t i = 0; i < count; ++i)
      offsets[i] = static_cast<int>(i);
  const int done = static_cast<int>(count);
  return {done, done, count < size ? U_BUFFER_OVERFLOW_ERROR : U_ZERO_ERROR};
}

}  // namespace

Decoded decode(CPUnicodeConverter& converter, const char* source, const char* end, std::span<unsigned short> target,
               int* offsets, bool flush) {
  if (const core::SingleByteTable* const table = CodePage::byteTable(converter))
    return decodeTable(*table, source, end, target, offsets);
  Decoded result;
  unsigned short* written = target.data();
  const char* passed = source;
  converter.toUnicode(written, target.data() + target.size(), passed, end, offsets, flush, result.status);
  result.units = static_cast<int>(written - target.data());
  result.bytes = static_cast<int>(passed - source);
  return result;
}

Decoded decodeOnward(KelBufferPointer& window, CPUnicodeConverter& converter, int start,
                     std::span<unsigned short> target, int maxBytes) {
  const std::span shown(window.getOffsetPointer(start), window.getEndPointer());
  const core::Progress direct = DirectPath::convert(converter, shown, target);
  if (direct.written == target.size() && !target.empty())
    return {static_cast<int>(direct.written), static_cast<int>(direct.read), U_ZERO_ERROR};
  window.extendLength(kCharacterSlack, true);
  Decoded run;
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

void restart(CPUnicodeConverter& converter) {
  if (!DirectPath::isAtStart(converter)) converter.resetToUnicode();
}

void dropHeldUnits(CPUnicodeConverter& converter) {
  unsigned short units[kMostHeldUnits];
  const char* const nothing = "";
  decode(converter, nothing, nothing, units, nullptr, false);
}

}  // namespace oxr
