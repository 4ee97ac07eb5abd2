#pragma once

#include <deque>
#include <memory>

#include "bytebffr.hpp"
#include "cpunicodeconverter.hpp"
#include "kelheader.hpp"
#include "kelwstring.hpp"
#include "oxrexport.hpp"
#include "pwfdata.hpp"
#include "textbffrwriter.hpp"

namespace oxr {
struct FailureSite;
namespace core {
struct Decoded;
}
}  // namespace oxr

// Reads text in any code page out of a message, as UTF-16, by byte offset.
//
// The reader never holds the whole text: it moves a window over the bytes and converts what the window shows. It keeps
// a current offset. Offsets are bytes from the start of the buffer; counts of characters are UTF-16 code units, so a
// character above U+FFFF counts as two. Where an offset is asked for, -1 is the current one.
//
// Shift states and halves of characters: what is read from the current offset on goes on in the state in which the last
// operation that moved the offset stopped, and a character that a count cut in two gives its other half first. What is
// read from elsewhere begins in the initial state. An operation that does not move leaves all of that as it is. Ranges
// (getPWFString, getString, toUnicode) are texts of their own: they begin in the initial state and leave none behind.
//
// Bytes that are no character become the substitution character. Bytes at the end of the data that only begin one are
// the cut one spoken of below. The failures are KelConversionException:
//   0xC000157E (OXR5502)  internal error, with the inserts given below
//   0xC000157F (OXR5503)  "CPI Text Buffer Input Data Too Short", dump of the whole input, offset, what was needed
//   0xC0001580 (OXR5504)  "CPI Text Buffer Null Terminator Not Found", dump of the whole input, offset
// After a failure, and after a range or a section with the result false, the reader is as before the call.
//
// An object serves one thread at a time. A converter that is handed in holds the state of the text between two calls,
// so nobody else may use it meanwhile.
//
// Example:
//   ReadOnlyByteBuffer message;
//   message.create("\xC1\xC2\xC3\x00\xF1", 5);
//   TextBufferReader reader(&message, 37, eEndianUnset, nullptr);
//   unsigned short unit = 0;
//   reader.getCharacter(&unit, true, nullptr, -1);         // 'A'; the current offset is now 1
//   KelWstring text;
//   reader.getPWFStringSection(text, -1, true, -1);        // "BC"; the current offset is now 4
//   PWFData digit = reader.getString(4, 5, false);         // STRING "1"
class OXR_EXPORT TextBufferReader {
 public:
  // Reads `source`, which stays the caller's and outlives the reader. A `codePage` below 1 is 1208 (UTF-8), a
  // `byteOrder` below 0 little-endian. `shared`, if not null, is used instead of a converter of the reader's own,
  // whatever the code page; it stays the caller's too.
  // A code page without a table: KelRecoverableException 0xC0000854 (OXR2132) of CPUnicodeConverter.
  TextBufferReader(const BitstreamBuffer* source, int codePage, EEndian byteOrder, CPUnicodeConverter* shared);
  TextBufferReader(const TextBufferReader&) = delete;
  TextBufferReader& operator=(const TextBufferReader&) = delete;
  virtual ~TextBufferReader();

  // The number of bytes of the whole buffer.
  virtual int getLength() const;

  // Whether there is a byte at `offset`, and whether there is one at each offset from there to `offset` + `distance`,
  // both included: a range of n bytes has the distance n - 1.
  bool offsetAvailable(int offset) const;
  bool offsetAvailable(int offset, int distance) const;

  // Ask the host to keep the bytes from the current offset on, and give that up again. Not to be moved in between.
  void lockCurrentOffset();
  void unlockCurrentOffset();

  // One character to `*target`: a character above U+FFFF as its leading surrogate, all of its bytes being consumed.
  // `*bytesConsumed`, if not null, becomes the bytes it takes with the shifts before it. `moveOffset` adds them to
  // the current offset, wherever the character was read and whatever the result is.
  // False at the end of the data: 0 bytes, `*target` stays. False for a cut one: its bytes, `*target` becomes 0.
  bool getCharacter(unsigned short* target, bool moveOffset, int* bytesConsumed, int offset);
  // The same; only the low 16 bits of `*target` are written, so clear it first. Surrogates are not combined.
  bool getCharacter32(int* target, bool moveOffset, int* bytesConsumed, int offset);

  // Moves the current offset over `count` characters, from where it stands or from the start of the buffer; with fewer
  // characters, to the end of the last one. False when it stays where it began, and when it moved over a cut one.
  bool moveOffsetChars(int count);
  bool setOffsetChars(int count);

  // Appends the text of the bytes from `startOffset` up to `endOffset`, which is not included, to `target`.
  // `moveOffset` makes `endOffset` the current offset, but not for an empty range. False when the range is negative or
  // not all there; an empty one is always true. Failures as for toUnicode().
  bool getPWFString(KelWstring& target, int startOffset, int endOffset, bool moveOffset);
  // The same as a STRING value, an empty range moving too. 0xC000157E "Start offset greater than end offset. Start
  // offset = 5 End offset = 3"; 0xC000157F with the offsets when the range is not all there.
  PWFData getString(int startOffset, int endOffset, bool moveOffset);

  // `charCount` characters from `startOffset` on, appended to `target` or as a STRING value assigned to it. A negative
  // count reads up to the next zero character, which is passed over and no part of the text. A count of 0 is true and
  // does nothing at all. `moveOffset` puts the current offset after what was read. False when there are fewer
  // characters. 0xC000157E "Conversion to unicode error. Error code: 11" for a cut one.
  // Up to a zero: 0xC000157F with `startOffset` and ">= 1" when there is no byte, 0xC0001580 when there is no zero.
  //
  // getPWFStringSection is false, too, when there are fewer bytes than that many of the shortest characters take, and
  // for a cut one when there are more.
  bool getPWFStringSection(KelWstring& target, int charCount, bool moveOffset, int startOffset);
  // getStringSection looks at no more bytes than that many of the longest characters take, as the converter counts
  // them; one that is not all among them counts as cut: in UTF-16 a supplementary one at the end. 0xC000157E "Invalid
  // offset: 9 for buffer length: 5" when there is no byte at `startOffset`, whatever the count.
  bool getStringSection(PWFData& target, int charCount, bool moveOffset, int startOffset);

  // The text of `sourceLength` bytes in the reader's code page, from anywhere. `*targetLength` is the room in code
  // units, and becomes the units written. 0xC000157E "error convering to unicode" and ICU's status when the text does
  // not fit (15) or ends inside a character (11); `*targetLength` then stays.
  void toUnicode(unsigned short* target, int* targetLength, const char* source, int sourceLength) const;

 protected:
  friend class TextBufferWriter;  // copies a stretch of a reader's text, by its own rules for code page and byte order

  // The object's mark in a dump.
  objectHeader header{"QVDR", 8, 192};
  const BitstreamBuffer* buffer;                     // the caller's
  std::unique_ptr<KelBufferPointer> pointer;         // the window; the innermost one where windows nest
  int ccsid;                                         // as given, or 1208
  EEndian endian;                                    // as given, or little-endian
  std::unique_ptr<CPUnicodeConverter> ownConverter;  // null when one was handed in
  CPUnicodeConverter* converter;                     // the reader's own or the one handed in
  int currentOffset = 0;                             // bytes
  int minBytes;                                      // of the shortest character in `converter`
  int maxBytes;                                      // of the longest one

 private:
  int resolved(int offset) const { return offset == -1 ? currentOffset : offset; }
  std::string dump() const;
  void beginAt(int offset) const;
  void moveTo(int offset, unsigned short lastUnit);
  void leaveAt(int offset);
  bool getCharacterFast(unsigned short& target, bool moveOffset, int* bytesConsumed, int start);
  bool getCharacterGeneral(unsigned short& target, bool moveOffset, int* bytesConsumed, int start);
  oxr::core::Decoded decodeCharacter(unsigned short& target, int start, bool moveOffset);
  bool skip(int count);
  PWFData shownText() const;
  void readTerminated(const oxr::FailureSite& site, KelWstring& target, int start, bool moveOffset);

  bool hasStates;          // text in the code page may be in a state that its next bytes depend on
  bool stateHeld = false;  // the converter stands at currentOffset and may not be in its initial state
};

// A TextBufferReader that confines itself to a stretch of its buffer and comes back from it, nested to any depth: what
// a parser does when it enters an embedded structure of known length.
//
// Offsets stay those of the whole buffer, and the current offset neither jumps when a spawn begins nor goes back when
// it ends. Within a spawn the stretch's end is the end of the data.
//
// Example:
//   reader.spawnTextBufferReader(20);  // the next 20 bytes
//   reader.getLength();                // the current offset + 20
//   parseBody(reader);
//   reader.unspawnTextBufferReader();
class OXR_EXPORT SpawnableTextBufferReader : public TextBufferReader {
 public:
  // As TextBufferReader, confined to nothing yet.
  SpawnableTextBufferReader(const BitstreamBuffer* source, int codePage, EEndian byteOrder, CPUnicodeConverter* shared);
  ~SpawnableTextBufferReader() override;

  // Confines the reader to `length` bytes from the current offset on, and locks that offset with the host.
  // KelConversionException 0xC000157E (OXR5502) "Trying to spawn buffer that extends beyond the length available to
  // it." when they are not all there, within the present limit; nothing has changed then.
  void spawnTextBufferReader(int length);
  // Back to what was before the last spawn, with its lock given up. Does nothing when there was none.
  void unspawnTextBufferReader();

  // The offset at which reading ends: the spawned stretch's end, the number of bytes of the buffer outside a spawn.
  int getLength() const override;

 private:
  std::deque<std::unique_ptr<KelBufferPointer>> windowStack;  // the suspended windows, the outermost first
};
