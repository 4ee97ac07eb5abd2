// Text into a message's buffer, and the queue before it.
//
// The buffer is asked for the room of the longest bytes that a text can have, the text is converted into that room, and
// what it took is committed: the bytes are written once, where they stay. A text that fails leaves nothing, neither in
// the buffer nor in the converter.

#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "buffers/textsourcepath.hpp"
#include "codepage/codepage.hpp"
#include "core/resumablerun.hpp"
#include "kelalloc.hpp"
#include "support/scratch.hpp"
#include "support/support.hpp"
#include "support/validrange.hpp"
#include "textbffr.hpp"
#include "textbffrwriter.hpp"

using namespace oxr;
using core::toLength;

// Read at load and never again: a message must not change its form in the middle.
const bool TextBufferWriter::bomsAway = std::getenv("NVRA_INSTREAM_BOMS_OFF") != nullptr;

namespace {

constexpr int kDefaultCcsid = 1208;  // UTF-8
constexpr char kFromUnicode[] = "TextBufferWriter::fromUnicode";

// The code pages that write a mark, and those that are the same without.
struct MarkedPage {
  int ccsid;
  int bomlessBig, bomlessOther;
};
constexpr MarkedPage kMarkedPages[] = {{1204, 1200, 1202}, {1205, 1200, 1202}, {1236, 1232, 1234}, {1237, 1232, 1234}};

std::unique_ptr<CPUnicodeConverter> makeBomless(int ccsid, EEndian endian) {
  for (const MarkedPage& page : kMarkedPages)
    if (page.ccsid == ccsid)
      return std::make_unique<CPUnicodeConverter>(endian == eEndianBig ? page.bomlessBig : page.bomlessOther, endian);
  return nullptr;
}

// The bytes of a text beyond those of its longest characters: a mark or a shift at its end. Two hold the mark of UTF-16
// and every shift but those of ISO 2022, which may switch twice for a single character; the mark of UTF-32 has four.
// Held by checkTextWriter() in fuzz/buffers.
int markRoomOf(const CPUnicodeConverter& page) {
  const UConverterType type = page.getType();
  return type == UCNV_UTF32 || type == UCNV_ISO_2022 ? 4 : 2;
}

[[noreturn]] void raiseNoConverter(const FailureSite& site) {
  raiseBare<KelConversionException>(site, failures::kInternalError, "no valid converter");
}

[[noreturn]] void raiseConversionError(const FailureSite& site, UErrorCode status) {
  raiseBare<KelConversionException>(site, failures::kInternalError, "error converting from unicode",
                                    static_cast<int>(status));
}

// Converts a whole text; the result is the number of bytes.
inline int convert(const FailureSite& site, CPUnicodeConverter& page, char* target, int room,
                   const unsigned short* source, int length) {
  if (!isValidRange(target, room) || !isValidRange(source, length))
    raiseConversionError(site, U_ILLEGAL_ARGUMENT_ERROR);
  char* end = target;
  UErrorCode status = U_ZERO_ERROR;
  page.fromUnicode(end, target + room, source, source + length, nullptr, true, status);
  if (U_FAILURE(status)) {
    CodePage::forgetHeldBytes(page);  // bytes that found no room, a shift state, half a pair
    raiseConversionError(site, status);
  }
  return static_cast<int>(end - target);
}

}  // namespace

TextBufferWriter::TextBufferWriter(WritableBitstreamBuffer* target, int codePage, EEndian byteOrder)
    : buffer(target),
      ccsid(codePage <= 0 ? kDefaultCcsid : codePage),
      endian(byteOrder < 0 ? eEndianLittle : byteOrder),
      converter(std::make_unique<CPUnicodeConverter>(ccsid, endian)),
      bomlessConverter(bomsAway ? makeBomless(ccsid, endian) : nullptr),
      minBytes(converter->getMinBytesPerChar()),
      maxBytes(converter->getMaxBytesPerChar()),
      markRoom(markRoomOf(*converter)) {
  const FunctionTrace trace(nullptr, "TextBufferWriter::TextBufferWriter", kTextBufferPath);
  pending.reserve(static_cast<unsigned>(pendingCapacity));
}

TextBufferWriter::~TextBufferWriter() = default;

int TextBufferWriter::getCodepage() const {
  return ccsid;
}

// The converter without marks where there is one and the message has begun.
inline CPUnicodeConverter& TextBufferWriter::pageFor(bool mayDropBom) const {
  const bool dropsBom = mayDropBom && bomlessConverter != nullptr && buffer->getLength() > 0;
  return dropsBom ? *bomlessConverter : *converter;
}

void TextBufferWriter::fromUnicode(char* target, int* targetLength, const unsigned short* source, int sourceLength,
                                   bool mayDropBom) const {
  const FunctionTrace trace(nullptr, kFromUnicode, kTextBufferPath);
  if (converter == nullptr) raiseNoConverter(trace.site());
  *targetLength = convert(trace.site(), pageFor(mayDropBom), target, *targetLength, source, sourceLength);
}

inline int TextBufferWriter::roomFor(int length) const {
  return toLength(std::int64_t{maxBytes} * std::max(length, 0) + markRoom);
}

// Writes a text without a failure or a mark. `reserved` becomes the room that the message gave, which is not to be
// asked for twice.
[[gnu::always_inline]] inline bool TextBufferWriter::appendFast(char*& reserved, const unsigned short* text, int length,
                                                                bool mayDropBom) {
  if (length <= 0 || text == nullptr || converter == nullptr || !CodePage::hasForm(*converter)) return false;
  const int room = roomFor(length);
  reserved = buffer->reserveForAppend(room);
  if (reserved == nullptr) return false;
  const auto count = static_cast<std::size_t>(length);
  const core::Advance done =
      CodePage::convertFast(pageFor(mayDropBom), std::span(text, count), {reserved, static_cast<std::size_t>(room)});
  if (done.read != count) return false;
  buffer->commitAppend(static_cast<int>(done.written));
  return true;
}

void TextBufferWriter::appendGeneral(const char* function, char* reserved, const unsigned short* text, int length,
                                     bool mayDropBom) {
  const FunctionTrace trace(nullptr, function, kTextBufferPath);
  if (converter == nullptr) raiseNoConverter(trace.site());
  const int room = roomFor(length);
  if (reserved == nullptr) reserved = buffer->reserveForAppend(room);
  int written = room;
  fromUnicode(reserved, &written, text, length, mayDropBom);
  buffer->commitAppend(written);
}

inline void TextBufferWriter::append(const char* function, const unsigned short* text, int length, bool mayDropBom) {
  char* reserved = nullptr;
  if (!wentFast([&]() __attribute__((always_inline)) { return appendFast(reserved, text, length, mayDropBom); }))
      [[unlikely]]
    appendGeneral(function, reserved, text, length, mayDropBom);
}

void TextBufferWriter::appendStr(const unsigned short* text, int length) {
  append("TextBufferWriter::appendStr", text, length, false);
}

void TextBufferWriter::appendStr(const unsigned short* text) {
  appendStr(text, text != nullptr ? u_strlen(toIcu(text)) : 0);
}

void TextBufferWriter::appendStrAfterFlushed(const unsigned short* text, int length) {
  append("TextBufferWriter::appendStrAfterFlushed", text, length, true);
}

void TextBufferWriter::writeStr(const unsigned short* text, int length, int offset) {
  const FunctionTrace trace(nullptr, "TextBufferWriter::writeStr", kTextBufferPath);
  if (converter == nullptr) raiseNoConverter(trace.site());
  // No room for a mark here, unlike append(). Kept: TextBufferWriter.WritesStraightIntoTheMessageAndOverIt.
  int size = toLength(std::int64_t{maxBytes} * std::max(length, 0));
  Scratch<char, 1024> work(static_cast<std::size_t>(size) + 1);
  fromUnicode(work.data(), &size, text, length, false);
  flushPending(false);
  buffer->writeBytesAt(work.data(), size, offset);
}

void TextBufferWriter::queueStr(const unsigned short* text, int length) {
  const FunctionTrace trace(nullptr, "TextBufferWriter::queueStr", kTextBufferPath);
  if (!isValidRange(text, length)) raiseConversionError(trace.site(), U_ILLEGAL_ARGUMENT_ERROR);
  if (length == 0) return;
  if (std::int64_t{pending.length()} + length > pendingCapacity) flushPending(U16_IS_TRAIL(text[0]));
  pending.appendInternal(text, static_cast<unsigned>(length), 0);
}

void TextBufferWriter::flush() {
  const FunctionTrace trace(nullptr, "TextBufferWriter::flush", kTextBufferPath);
  flushPending(false);
}

// Writes the queue. `keepsLead`: a leading surrogate at its end stays, for the other half comes next.
void TextBufferWriter::flushPending(bool keepsLead) {
  const unsigned length = pending.length();
  if (length == 0) return;
  const unsigned written = keepsLead && U16_IS_LEAD(pending[length - 1]) ? length - 1 : length;
  appendStrAfterFlushed(pending.characters(), static_cast<int>(written));
  pending.eraseInternal(0, written);
  pending.reserve(static_cast<unsigned>(pendingCapacity));
}

void TextBufferWriter::appendBuf(TextBufferReader* reader, int startOffset, int endOffset) {
  const FunctionTrace trace(nullptr, "TextBufferWriter::appendBuf", kTextBufferPath);
  flushPending(false);
  if (converter == nullptr) raiseNoConverter(trace.site());
  // The end must be there, not only what lies before it. Kept: TextBufferWriter.CopiesStretchesOfAReader.
  if (startOffset < 0 || endOffset < startOffset || !reader->offsetAvailable(endOffset))
    raiseBare<KelConversionException>(trace.site(), failures::kInternalError, "Cannot write past the end of buffer");
  const int length = endOffset - startOffset;
  if (length == 0) return;
  const char* const bytes = reader->buffer->getData(startOffset);
  if (reader->ccsid != ccsid)
    appendConverted(*reader, bytes, length);
  else if (!CPUnicodeConverter::IsUnicode(ccsid) || reader->endian == endian)
    buffer->appendBytes(bytes, length);
  else
    appendSwapped(*reader, startOffset, length);
}

// From one byte order of UTF-16 into the other. The first byte of a unit is lost, the second written twice; an odd byte
// at the end stays as it is. Kept: TextBufferWriter.CopiesStretchesOfAReader.
void TextBufferWriter::appendSwapped(const TextBufferReader& reader, int startOffset, int length) {
  char block[1024];
  for (int done = 0; done < length;) {
    const int size = std::min<int>(sizeof block, length - done);
    // Asked for anew each time: appending may move the bytes, where reader and writer share a buffer.
    const char* const bytes = reader.buffer->getData(startOffset + done);
    for (int i = 0; i + 1 < size; i += 2)
      block[i] = block[i + 1] = bytes[i + 1];
    if (size % 2 != 0) block[size - 1] = bytes[size - 1];
    buffer->appendBytes(block, size);
    done += size;
  }
}

void TextBufferWriter::appendConverted(const TextBufferReader& reader, const char* bytes, int length) {
  if (CPUnicodeConverter::IsUnicode(reader.ccsid)) {
    // An eighth, not half, and in whatever order the bytes are. Kept: TextBufferWriter.CopiesStretchesOfAReader.
    const int units = length / 8;
    Scratch<unsigned short, 512> text(static_cast<std::size_t>(units));  // the bytes may lie at an odd address
    std::memcpy(text.data(), bytes, static_cast<std::size_t>(units) * sizeof(unsigned short));
    appendStr(text.data(), units);
    return;
  }
  int units = toLength((std::int64_t{std::max(reader.maxBytes, 2)} * length + 1) / 2);
  const KelBlock<unsigned short> text = allocateBlock<unsigned short>(static_cast<unsigned long>(units));
  reader.toUnicode(text.get(), &units, bytes, length);
  appendStr(text.get(), units);
}
