// Counted and zero-terminated stretches of text. A count of characters is no count of bytes: where the code page has
// characters of several lengths, the window first shows as many bytes as the shortest take and then grows.

#include <unicode/ustring.h>

#include <algorithm>
#include <array>

#include "buffers/decoding.hpp"
#include "buffers/textsourcepath.hpp"
#include "support/scratch.hpp"
#include "support/support.hpp"
#include "textbffr.hpp"
#include "values/textinplace.hpp"

using namespace oxr;

namespace {

// A terminated text is converted in chunks of this many units: it is never converted twice, and a short one is not made
// to pay for the whole buffer.
constexpr int kChunkUnits = 1024;

// No code page gives more units for a byte than ICU's longest mapping has.
constexpr std::int64_t kMostUnitsPerByte = 19;

class Trace : public FunctionTrace {
 public:
  explicit Trace(const char* function) : FunctionTrace(nullptr, function, kTextBufferPath) {}

  bool nothingToDo() {
    const bool result = true;
    exit([&](KelLog::FastItem& item) { item << "Zero target length, no work to do! Return: " << result; });
    return result;
  }
};

[[noreturn]] void raiseConversionError(const FailureSite& site, UErrorCode status) {
  raiseBare<KelConversionException>(site, failures::kInternalError,
                                    numbered("Conversion to unicode error. Error code: ", status));
}

// The run of bytes from `start` up to the window's end.
struct Run {
  KelBufferPointer& window;
  int start;

  std::span<const char> bytes() const { return {window.getOffsetPointer(start), window.getEndPointer()}; }
  bool extend(int more, bool acceptShorter) { return window.extendLength(more, acceptShorter); }
};

// Reads a run after which the data ends, for now at least.
Decoded decodeAtEnd(KelBufferPointer& window, CPUnicodeConverter& converter, int start,
                    std::span<unsigned short> target, int minBytes, int maxBytes) {
  Run run{window, start};
  return core::readResumableRun(
      run, target, minBytes, maxBytes,
      [&](std::span<const char> bytes, std::span<unsigned short> room) {
        return decode(converter, bytes.data(), bytes.data() + bytes.size(), room, nullptr, true);
      },
      [&] { startReading(converter); });
}

// What the window shows from `start` on, and no more: a character that is not all there is cut off.
Decoded decodeShown(const KelBufferPointer& window, CPUnicodeConverter& converter, int start,
                    std::span<unsigned short> target) {
  const bool last = showsEnd(window);
  const char* const end = window.getEndPointer();
  Decoded run = decode(converter, window.getOffsetPointer(start), end, target, nullptr, last);
  if (last || run.status != U_ZERO_ERROR || run.units == static_cast<int>(target.size())) return run;
  // Not flushed, or the state would be lost for what follows; so ask what the converter still waits for.
  const Decoded rest = decode(converter, end, end, target.subspan(static_cast<std::size_t>(run.units)), nullptr, true);
  return {run.units + rest.units, run.bytes, rest.status};
}

// Reads the `size` bytes at `start` as a value, if the window shows them all and their units can be counted beforehand.
bool readSectionFast(const KelBufferPointer& window, const CPUnicodeConverter& converter, int start, std::int64_t size,
                     PWFData& target) {
  if (size > window.windowLength()) return false;
  const std::span bytes(window.getOffsetPointer(start), static_cast<std::size_t>(size));
  const std::size_t count = CodePage::unitCount(converter, bytes);
  if (count == 0) return false;
  bool served = false;
  const PWFData text = TextInPlace::make(
      STRING, count, [&](unsigned short* units) { served = CodePage::convertCountedFast(converter, bytes, units); });
  if (served) target = text;
  return served;
}

// The first units of a chunk, as many as can be had fast.
bool decodeChunkFast(const CPUnicodeConverter& converter, std::span<const char> bytes, std::span<unsigned short> units,
                     Decoded& chunk) {
  const core::Advance done = CodePage::convertFast(converter, bytes, units);
  chunk.units = static_cast<int>(done.written);
  chunk.bytes = static_cast<int>(done.read);
  return done.written != 0;
}

}  // namespace

bool TextBufferReader::getPWFStringSection(KelWstring& target, int charCount, bool moveOffset, int startOffset) {
  Trace trace("TextBufferReader::getPWFStringSection");
  if (charCount == 0) return trace.nothingToDo();
  const int start = resolved(startOffset);
  if (charCount < 0) {
    readTerminated(trace.site(), target, start, moveOffset);
    return true;
  }
  const int bytes = toLength(std::int64_t{minBytes} * charCount);
  if (!pointer->moveOffsetWindow(start, bytes, false)) return false;
  const std::span shortest(pointer->getOffsetPointer(start), static_cast<std::size_t>(bytes));
  if (wentFast([&] { return appendTextFast(*converter, shortest, target); })) {
    if (moveOffset) leaveAt(start + bytes);
    return true;
  }
  CodePage::KeptState kept(*converter, stateHeld);
  beginAt(start);
  Scratch<unsigned short, 256> work(static_cast<std::size_t>(charCount));
  const std::span units(work.data(), work.size());
  const int more = toLength(std::int64_t{maxBytes} * charCount) - bytes;
  const bool atEnd = minBytes != maxBytes && !pointer->extendLength(more, true);
  const Decoded run = atEnd ? decodeAtEnd(*pointer, *converter, start, units, minBytes, maxBytes)
                            : decodeOnward(*pointer, *converter, start, units, maxBytes);
  if (atEnd && U_FAILURE(run.status)) raiseConversionError(trace.site(), run.status);
  if (run.units != charCount) return false;
  target.appendInternal(units.data(), static_cast<unsigned>(charCount), 0);
  if (moveOffset) {
    kept.drop();
    moveTo(start + run.bytes, units.back());
  }
  return true;
}

bool TextBufferReader::getStringSection(PWFData& target, int charCount, bool moveOffset, int startOffset) {
  Trace trace("TextBufferReader::getStringSection");
  if (charCount == 0) return trace.nothingToDo();
  const int start = resolved(startOffset);
  if (!pointer->moveOffsetWindow(start, 1, false))
    raiseBare<KelConversionException>(
        trace.site(), failures::kInternalError,
        numbered("Invalid offset: ", start) +
            numbered(" for buffer length: ", pointer->buffer()->bytesAvailable(0, false)));
  if (charCount < 0) {
    KelBufferedWstring<16u> text;
    readTerminated(trace.site(), text, start, moveOffset);
    target = PWFData(text);
    return true;
  }
  pointer->setLength(toLength(std::int64_t{maxBytes} * charCount), true);
  const std::int64_t shortest = std::int64_t{minBytes} * charCount;
  if (wentFast([&] { return readSectionFast(*pointer, *converter, start, shortest, target); })) {
    if (moveOffset) leaveAt(start + static_cast<int>(shortest));
    return true;
  }
  // A count far beyond what is there must not ask for memory without need.
  const std::int64_t most = kMostUnitsPerByte * pointer->windowLength() + kMostHeldUnits;
  const int room = toLength(std::min<std::int64_t>(charCount, most));
  CodePage::KeptState kept(*converter, stateHeld);
  beginAt(start);
  Decoded run;
  const PWFData text = TextInPlace::make(STRING, static_cast<std::uint64_t>(room), [&](unsigned short* units) {
    run = decodeShown(*pointer, *converter, start, {units, static_cast<std::size_t>(room)});
  });
  if (U_FAILURE(run.status) && run.status != U_BUFFER_OVERFLOW_ERROR) raiseConversionError(trace.site(), run.status);
  if (run.units != charCount) return false;
  if (moveOffset) {
    kept.drop();
    moveTo(start + run.bytes, text.getStringValue()[charCount - 1]);
  }
  target = text;
  return true;
}

// Appends the text at `start` up to the next zero character, which is passed over.
void TextBufferReader::readTerminated(const FailureSite& site, KelWstring& target, int start, bool moveOffset) {
  if (!pointer->moveOffsetWindow(start, 1, false) || pointer->windowLength() == 0)
    raise<KelConversionException>(site, failures::kTextBufferTooShort, dump(), start, ">= 1");
  pointer->setLength(maxBytes * kChunkUnits, true);
  pointer->extendLength(kCharacterSlack, true);
  CodePage::KeptState kept(*converter, stateHeld);
  beginAt(start);
  std::array<unsigned short, kChunkUnits> units;
  std::array<int, kChunkUnits> offsets;
  for (int chunkStart = start;;) {
    const std::span bytes(pointer->getOffsetPointer(chunkStart), pointer->getEndPointer());
    if (bytes.empty()) raise<KelConversionException>(site, failures::kTerminatorNotFound, dump(), start);
    Decoded chunk;
    const bool isFast = wentFast([&] { return decodeChunkFast(*converter, bytes, units, chunk); });
    if (!isFast)
      chunk = decode(*converter, bytes.data(), bytes.data() + bytes.size(), units, offsets.data(), showsEnd(*pointer));
    const char16_t* const begin = toIcu(units.data());
    if (const char16_t* const zero = u_memchr(begin, 0, chunk.units)) {
      const auto length = static_cast<std::size_t>(zero - begin);
      target.appendInternal(units.data(), static_cast<unsigned>(length), 0);
      // A zero character is as short as any. What follows it is left where it is, with the shift before it.
      if (moveOffset) {
        kept.drop();
        const std::span before = std::span(units).first(length);
        leaveAt(chunkStart + minBytes +
                (isFast ? static_cast<int>(CodePage::convertFast(*converter, bytes, before).read)
                        : std::max(offsets[length], 0)));
      }
      return;
    }
    target.appendInternal(units.data(), static_cast<unsigned>(chunk.units), 0);
    chunkStart += chunk.bytes;
    pointer->extendLength(maxBytes * kChunkUnits, true);
    if (U_FAILURE(chunk.status) && chunk.status != U_BUFFER_OVERFLOW_ERROR) raiseConversionError(site, chunk.status);
  }
}
