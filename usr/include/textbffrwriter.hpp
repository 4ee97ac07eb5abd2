#pragma once

#include <memory>

#include "bytebffr.hpp"
#include "cpunicodeconverter.hpp"
#include "kelheader.hpp"
#include "kelwstring.hpp"
#include "oxrexport.hpp"
#include "pwftypes.hpp"

class TextBufferReader;

// Writes UTF-16 text in any code page into a message.
//
// Lengths of text are UTF-16 code units, lengths and offsets in the message bytes. Each text is converted straight into
// the message's own storage and is whole in itself: shifts that it opens are closed at its end, and half a surrogate
// pair at one of its ends is no character. What the code page lacks becomes its substitution byte.
//
// CCSIDs 1204, 1205 (UTF-16) and 1236, 1237 (UTF-32) write a byte-order mark before every text. If the environment
// variable NVRA_INSTREAM_BOMS_OFF, of whatever value, is set when the library is loaded, appendStrAfterFlushed() and
// the queue keep the mark for the start of the message. In UTF-32 a mark and its text are in the order of this machine,
// a text without a mark in the caller's: leave marks out only where these are the same.
//
// Text may be put in a queue and is then written in larger pieces, before whatever writeStr() or appendBuf()
// writes. appendStr() doesn't care for the queue. Text that waits when the object ends is lost: flush() first.
//
// The failures are KelConversionException, internal error 0xC000157E (OXR5502) with the inserts given below. After one,
// nothing of the operation is in the message, but the queue may be. "error converting from unicode" comes with ICU's
// status: 1 for a negative length or null text, 15 for too little room.
//
// An object serves one thread at a time.
//
// Example:
//   TextBufferWriter writer(&message, 37, eEndianUnset);
//   writer.appendStr(text, 2);         // "AB": C1 C2
//   writer.appendBuf(&reader, 0, 80);  // 80 bytes of another message, as they are if they are in CCSID 37
class OXR_EXPORT TextBufferWriter {
 public:
  // Writes into `target`, which stays the caller's and outlives the writer. A `codePage` below 1 is 1208 (UTF-8), a
  // `byteOrder` below 0 little-endian.
  // A code page without a table: KelRecoverableException 0xC0000854 (OXR2132) of CPUnicodeConverter.
  TextBufferWriter(WritableBitstreamBuffer* target, int codePage, EEndian byteOrder);
  TextBufferWriter(const TextBufferWriter&) = delete;
  TextBufferWriter& operator=(const TextBufferWriter&) = delete;
  virtual ~TextBufferWriter();

  // The CCSID.
  int getCodepage() const;

  // Appends `length` units, or those up to the first zero (none for null). A mark is never left out.
  void appendStr(const unsigned short* text, int length);
  void appendStr(const unsigned short* text);
  // The same, without a mark if marks are off and the message has bytes already. Writes past what is queued.
  void appendStrAfterFlushed(const unsigned short* text, int length);

  // Puts the text at `offset` over what is there, once the queue is written. Its bytes must not be more than as many
  // of the longest characters take, as the converter counts them: marks find no room, and so does a single double-byte
  // character between shifts.
  void writeStr(const unsigned short* text, int length, int offset);

  // Adds text to the queue, which holds 1024 units: where they would become more, it is written first. A surrogate pair
  // that two calls bring stays a pair. A longer text waits too, and is written with the next.
  // A negative length or null is refused as appendStr() does.
  void queueStr(const unsigned short* text, int length);
  // Writes the queue, as appendStrAfterFlushed() does. It stays if that fails.
  void flush();

  // Appends the bytes of `reader` from `startOffset` up to `endOffset`, which is not included, once the queue is
  // written. The reader's current offset stays. "Cannot write past the end of buffer" for a range that is negative, or
  // begins before the data, or when there is no byte at `endOffset`: the reader's last byte cannot be copied.
  // The same code page on both sides copies bytes; others go through UTF-16, with failures as in
  // TextBufferReader::toUnicode(). Two cases are not what one would expect, and messages rely on them:
  //   UTF-16 (1200, 13488, 17584) on both sides in unlike byte orders: of each two bytes the second is written twice
  //   UTF-16 into another code page: the first eighth of the bytes, rounded down, is text in this machine's byte order
  void appendBuf(TextBufferReader* reader, int startOffset, int endOffset);

  // The bytes of a text, into memory of the caller's. `*targetLength` is the room in bytes, and becomes the bytes
  // written; it stays after a failure. `mayDropBom`: without a mark as in appendStrAfterFlushed().
  void fromUnicode(char* target, int* targetLength, const unsigned short* source, int sourceLength,
                   bool mayDropBom) const;

 protected:
  static const bool bomsAway;  // whether NVRA_INSTREAM_BOMS_OFF was set at load

  // The object's mark in a dump.
  objectHeader header{"QDVW", 8, 120};
  WritableBitstreamBuffer* buffer;                       // the caller's
  int ccsid;                                             // as given, or 1208
  EEndian endian;                                        // as given, or little-endian
  std::unique_ptr<CPUnicodeConverter> converter;         // writes marks where the code page has them
  std::unique_ptr<CPUnicodeConverter> bomlessConverter;  // null unless marks are off and the code page has one
  int minBytes;                                          // of the shortest character in `converter`
  int maxBytes;                                          // of the longest one
  KelWstring pending;                                    // the queue
  int pendingCapacity = 1024;                            // units

 private:
  CPUnicodeConverter& pageFor(bool mayDropBom) const;
  int roomFor(int length) const;
  void append(const char* function, const unsigned short* text, int length, bool mayDropBom);
  bool appendFast(char*& reserved, const unsigned short* text, int length, bool mayDropBom);
  void appendGeneral(const char* function, char* reserved, const unsigned short* text, int length, bool mayDropBom);
  void flushPending(bool keepsLead);
  void appendSwapped(const TextBufferReader& reader, int startOffset, int length);
  void appendConverted(const TextBufferReader& reader, const char* bytes, int length);

  int markRoom;  // bytes that a text may take in addition to its characters
};
