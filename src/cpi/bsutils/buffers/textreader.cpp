// Characters and stretches of a message as UTF-16, and the offset that moves over them.
//
// Every read looks through a window over the host's buffer, which is asked to show the bytes first: they may have to
// come from elsewhere. The current offset is a number of bytes. Where the code page has shift states, or half a pair
// was handed out, what the converter holds belongs to that offset: it is kept while reading goes on from there, and
// given up as soon as anything else is read.

#include <unicode/utf16.h>

#include <algorithm>
#include <array>

#include "buffers/decoding.hpp"
#include "buffers/textsourcepath.hpp"
#include "codepage/codepage.hpp"
#include "cputils.hpp"
#include "support/scratch.hpp"
#include "support/support.hpp"
#include "textbffr.hpp"
#include "values/textinplace.hpp"

using namespace oxr;

namespace {

constexpr int kDefaultCcsid = 1208;  // UTF-8

class Trace : public FunctionTrace {
 public:
  explicit Trace(const char* function) : FunctionTrace(nullptr, function, kTextBufferPath) {}
};

// Whether a conversion ended between two characters.
bool isComplete(UErrorCode status) {
  return status == U_ZERO_ERROR || status == U_BUFFER_OVERFLOW_ERROR;
}

// Whether text in a code page may be in a state that its next bytes depend on.
bool mayHoldStates(UConverterType type) {
  switch (type) {
    case UCNV_SBCS:
    case UCNV_DBCS:
    case UCNV_MBCS:
    case UCNV_LATIN_1:
    case UCNV_UTF8:
    case UCNV_UTF16_BigEndian:
    case UCNV_UTF16_LittleEndian:
    case UCNV_UTF32_BigEndian:
    case UCNV_UTF32_LittleEndian:
    case UCNV_US_ASCII:
    case UCNV_CESU8:
      return false;
    default:
      return true;
  }
}

inline bool isShown(const KelBufferPointer& window, int offset) {
  return static_cast<unsigned>(offset) - static_cast<unsigned>(window.windowOffset()) <
         static_cast<unsigned>(window.windowLength());
}

}  // namespace

TextBufferReader::TextBufferReader(const BitstreamBuffer* source, int codePage, EEndian byteOrder,
                                   CPUnicodeConverter* shared)
    : buffer(source),
      pointer(std::make_unique<KelBufferPointer>(source->getBuffer())),
      ccsid(codePage < 1 ? kDefaultCcsid : codePage),
      endian(byteOrder < 0 ? eEndianLittle : byteOrder),
      ownConverter(shared == nullptr ? std::make_unique<CPUnicodeConverter>(ccsid, endian) : nullptr),
      converter(shared == nullptr ? ownConverter.get() : shared),
      minBytes(converter->getMinBytesPerChar()),
      maxBytes(converter->getMaxBytesPerChar()),
      hasStates(mayHoldStates(converter->getType())) {}

TextBufferReader::~TextBufferReader() = default;

int TextBufferReader::getLength() const {
  return buffer->getLength();
}

bool TextBufferReader::offsetAvailable(int offset) const {
  return pointer->offsetAvailable(offset);
}

bool TextBufferReader::offsetAvailable(int offset, int distance) const {
  return pointer->offsetAvailable(offset, distance);
}

void TextBufferReader::lockCurrentOffset() {
  pointer->buffer()->lockOffset(currentOffset);
}

void TextBufferReader::unlockCurrentOffset() {
  pointer->buffer()->unlockOffset(currentOffset);
}

// The whole input: whoever reads the failure sees what was parsed.
std::string TextBufferReader::dump() const {
  return CPUtils::binaryDump(reinterpret_cast<const unsigned char*>(buffer->getData(0)),
                             pointer->buffer()->bytesAvailable(0, false));
}

// Puts the converter into the state in which the text at `offset` is read.
void TextBufferReader::beginAt(int offset) const {
  if (!stateHeld || offset != currentOffset) startReading(*converter);
}

// Makes `offset` the current one, where the converter stopped. `lastUnit` is what it wrote last: after a leading
// surrogate it may hold the other half.
void TextBufferReader::moveTo(int offset, unsigned short lastUnit) {
  currentOffset = offset;
  stateHeld = hasStates || U16_IS_LEAD(lastUnit);
}

// Makes `offset`, where a text ended or one begins, the current one.
void TextBufferReader::leaveAt(int offset) {
  currentOffset = offset;
  stateHeld = false;
}

// A byte that the window shows and that is a character by itself: read without a call, so that no register need be
// saved.
inline bool TextBufferReader::getCharacterFast(unsigned short& target, bool moveOffset, int* bytesConsumed, int start) {
  if (!isShown(*pointer, start) || !CodePage::convertByteFast(*converter, *pointer->getOffsetPointer(start), target))
    return false;
  if (bytesConsumed != nullptr) *bytesConsumed = 1;
  if (moveOffset) currentOffset = toLength(std::int64_t{currentOffset} + 1);
  return true;
}

[[gnu::noinline]] bool TextBufferReader::getCharacterGeneral(unsigned short& target, bool moveOffset,
                                                             int* bytesConsumed, int start) {
  const Trace trace("TextBufferReader::getCharacter");
  const Decoded character = decodeCharacter(target, start, moveOffset);
  if (bytesConsumed != nullptr) *bytesConsumed = character.bytes;
  // The step goes onto the current offset, not onto `start`: TextBufferReader.ReadsAndMovesAsScripted.
  if (moveOffset) currentOffset = toLength(std::int64_t{currentOffset} + character.bytes);
  return character.bytes > 0 && isComplete(character.status) && character.units > 0;
}

bool TextBufferReader::getCharacter(unsigned short* target, bool moveOffset, int* bytesConsumed, int offset) {
  const int start = resolved(offset);
  if (wentFast([&] { return getCharacterFast(*target, moveOffset, bytesConsumed, start); })) [[likely]]
    return true;
  return getCharacterGeneral(*target, moveOffset, bytesConsumed, start);
}

// One character; nothing where there is no byte, else `target` is 0 when there is no character. The other half of a
// character above U+FFFF is thrown away, and so is one that was left at `start`.
Decoded TextBufferReader::decodeCharacter(unsigned short& target, int start, bool moveOffset) {
  // Where no state is carried on the window shows more bytes than the character's: the next are likely to be asked for
  // next, and are then read fast.
  constexpr int kAhead = 4096;
  if (!pointer->moveOffsetWindow(start, hasStates ? maxBytes : kAhead, true)) return {};
  const bool continues = start == currentOffset;
  const CodePage::KeptState kept(*converter, stateHeld && !moveOffset);
  beginAt(start);
  if (stateHeld) dropHeldUnits(*converter);
  const Decoded character = decodeOnward(*pointer, *converter, start, {&target, 1}, maxBytes);
  if (character.units == 0) target = 0;  // a conversion may write to room that it does not need
  if (character.status != U_ZERO_ERROR && U16_IS_SURROGATE(target)) dropHeldUnits(*converter);
  if (moveOffset) stateHeld = hasStates && continues && isComplete(character.status);
  return character;
}

bool TextBufferReader::getCharacter32(int* target, bool moveOffset, int* bytesConsumed, int offset) {
  const Trace trace("TextBufferReader::getCharacter32");
  auto unit = static_cast<unsigned short>(*target);
  const bool found = getCharacter(&unit, moveOffset, bytesConsumed, offset);
  // The upper half stays: TextBufferReader.Character32WritesTheLowHalfOnly.
  *target = static_cast<int>((static_cast<unsigned>(*target) & 0xFFFF0000u) | unit);
  return found;
}

bool TextBufferReader::moveOffsetChars(int count) {
  const Trace trace("TextBufferReader::moveOffsetChars");
  return skip(count);
}

bool TextBufferReader::setOffsetChars(int count) {
  const Trace trace("TextBufferReader::setOffsetChars");
  leaveAt(0);
  return skip(count);
}

// Moves over `count` units. They are converted piece by piece: a count may go far beyond what is there.
bool TextBufferReader::skip(int count) {
  const int start = currentOffset;
  if (count <= 0 || !pointer->moveOffsetWindow(start, toLength(std::int64_t{maxBytes} * count), true)) return false;
  beginAt(start);
  std::array<unsigned short, 256> units;
  Decoded run;
  bool filled;
  do {
    const std::span piece(units.data(), std::min(units.size(), static_cast<std::size_t>(count - run.units)));
    const Decoded pass = decodeOnward(*pointer, *converter, start + run.bytes, piece, maxBytes);
    run = {run.units + pass.units, run.bytes + pass.bytes, pass.status};
    filled = pass.units == static_cast<int>(piece.size());
    moveTo(start + run.bytes, pass.units > 0 ? piece[static_cast<std::size_t>(pass.units) - 1] : 0);
  } while (filled && run.units < count);
  if (!isComplete(run.status)) stateHeld = false;
  return run.bytes > 0 && isComplete(run.status) && run.units > 0;
}

bool TextBufferReader::getPWFString(KelWstring& target, int startOffset, int endOffset, bool moveOffset) {
  const Trace trace("TextBufferReader::getPWFString");
  const std::int64_t length = std::int64_t{endOffset} - startOffset;
  if (length <= 0) return length == 0;
  if (!pointer->moveOffsetWindow(startOffset, toLength(length), false)) return false;
  const std::span bytes(pointer->getOffsetPointer(startOffset), static_cast<std::size_t>(length));
  if (!wentFast([&] { return appendTextFast(*converter, bytes, target); })) {
    int units = toLength(2 * length);
    Scratch<unsigned short, 256> work(static_cast<std::size_t>(units));
    toUnicode(work.data(), &units, bytes.data(), toLength(length));
    target.appendInternal(work.data(), static_cast<unsigned>(units), 0);
  }
  if (moveOffset) leaveAt(endOffset);
  return true;
}

PWFData TextBufferReader::getString(int startOffset, int endOffset, bool moveOffset) {
  const Trace trace("TextBufferReader::getString");
  if (startOffset > endOffset)
    raiseBare<KelConversionException>(trace.site(), failures::kInternalError,
                                      numbered("Start offset greater than end offset. Start offset = ", startOffset) +
                                          numbered(" End offset = ", endOffset));
  const int length = toLength(std::int64_t{endOffset} - startOffset);
  if (!pointer->moveOffsetWindow(startOffset, length, false))
    raise<KelConversionException>(trace.site(), failures::kTextBufferTooShort, dump(), startOffset, endOffset);
  PWFData text = shownText();
  if (moveOffset) leaveAt(endOffset);
  return text;
}

// All that the window shows, as a text of its own.
PWFData TextBufferReader::shownText() const {
  const int length = pointer->windowLength();
  const char* const source = pointer->getOffsetPointer(pointer->windowOffset());
  const std::span bytes(source, static_cast<std::size_t>(length));
  if (const std::size_t count = CodePage::unitCount(*converter, bytes))
    return TextInPlace::make(STRING, count, [&](unsigned short* units) {
      if (wentFast([&] { return CodePage::convertCountedFast(*converter, bytes, units); })) [[likely]]
        return;
      int room = static_cast<int>(count);  // ICU gives as many, a substitute for what is not well formed
      toUnicode(units, &room, source, length);
    });
  int units = toLength(std::int64_t{2} * length);
  Scratch<unsigned short, 256> work(static_cast<std::size_t>(units));
  toUnicode(work.data(), &units, source, length);
  return PWFData(work.data(), units);
}

void TextBufferReader::toUnicode(unsigned short* target, int* targetLength, const char* source,
                                 int sourceLength) const {
  const Trace trace("TextBufferReader::toUnicode");
  if (converter == nullptr)
    raiseBare<KelConversionException>(trace.site(), failures::kInternalError, "no valid converter");
  const CodePage::KeptState kept(*converter, stateHeld);
  startReading(*converter);
  Decoded text{0, 0, U_ILLEGAL_ARGUMENT_ERROR};
  if (*targetLength >= 0 && sourceLength >= 0)
    text = decode(*converter, source, source + sourceLength, {target, static_cast<std::size_t>(*targetLength)}, nullptr,
                  true);
  if (U_FAILURE(text.status))
    raiseBare<KelConversionException>(trace.site(), failures::kInternalError, "error convering to unicode",
                                      static_cast<int>(text.status));
  *targetLength = text.units;
}
