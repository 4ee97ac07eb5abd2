#pragma once

#include <cstdlib>
#include <string>

#include "growingbytebuffer.hpp"
#include "harness/failures.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"
#include "textbffr.hpp"

namespace oxr::test {

// Notes what is done to it: "r18 a3" for reserving and appending so many bytes.
struct Message : GrowingByteBuffer {
  explicit Message(std::string_view bytes = {}) {
    GrowingByteBuffer::appendBytes(bytes.data(), static_cast<int>(bytes.size()));
  }
  void note(const std::string& call) { calls += call + ' '; }
  char* reserveForAppend(int size) override {
    return note('r' + std::to_string(size)), GrowingByteBuffer::reserveForAppend(size);
  }
  void appendBytes(const char* bytes, int size) override {
    note('a' + std::to_string(size)), GrowingByteBuffer::appendBytes(bytes, size);
  }
  std::string calls;
};

// A reader that takes an operation as text and tells as text what it did.
//
// An operation is a letter, in upper case when it must not move the current offset, and numbers:
//   c            getCharacter
//   s2  v2       getPWFStringSection, getStringSection of 2 characters
//   r3,5  g3,5   getPWFString, getString from 3 up to 5
//   m2  o2       moveOffsetChars, setOffsetChars
//   (5  )        spawn 5 bytes, unspawn
// "@3" after c, s or v is the offset, else -1. The result is the text, "true" or "false", or the number and the
// inserts of a failure, followed by "@" and the current offset.
class ScriptedReader : public SpawnableTextBufferReader {
 public:
  ScriptedReader(const BitstreamBuffer& bytes, int codePage, EEndian byteOrder = eEndianBig,
                 CPUnicodeConverter* shared = nullptr)
      : SpawnableTextBufferReader(&bytes, codePage, byteOrder, shared) {}
  using TextBufferReader::ccsid, TextBufferReader::converter, TextBufferReader::endian, TextBufferReader::pointer;

  std::string run(const std::string& operation) {
    std::string result;
    const Raised raised = raisedBy([&] { result = runOne(operation); });
    if (!raised.kind.empty()) result = std::to_string(raised.number & 0xFFFF) + shown(raised.inserts);
    return result + '@' + std::to_string(currentOffset);
  }

 private:
  std::string runOne(const std::string& operation) {
    char* next = nullptr;
    const int first = static_cast<int>(std::strtol(operation.c_str() + 1, &next, 10));
    const int second = *next != 0 ? std::atoi(next + 1) : -1;
    const bool move = std::islower(operation[0]) != 0;
    unsigned short unit = 0;
    KelWstring text;
    PWFData value(u"old"_k);
    switch (std::tolower(operation[0])) {
      case 'c':
        return getCharacter(&unit, move, nullptr, second) ? toUtf8(UnitView(&unit, 1)) : "false";
      case 's':
        return getPWFStringSection(text, first, move, second) ? toUtf8(text) : "false";
      case 'v':
        return getStringSection(value, first, move, second) ? toUtf8(value.getPWFStringValue()) : "false";
      case 'r':
        return getPWFString(text, first, second, move) ? toUtf8(text) : "false";
      case 'g':
        return toUtf8(getString(first, second, move).getPWFStringValue());
      case 'm':
        return moveOffsetChars(first) ? "true" : "false";
      case 'o':
        return setOffsetChars(first) ? "true" : "false";
      case '(':
        return spawnTextBufferReader(first), std::to_string(getLength());
      default:
        return unspawnTextBufferReader(), std::to_string(getLength());
    }
  }
};

}  // namespace oxr::test
