#pragma once

#include <cstdlib>
#include <sstream>
#include <string>

#include "harness/failures.hpp"
#include "harness/text.hpp"
#include "textbffr.hpp"

namespace oxr::test {

// Bytes with a view of them.
struct BytesToRead : ReadOnlyByteBuffer {
  explicit BytesToRead(std::string text) : bytes(std::move(text)) {
    create(bytes.data(), static_cast<int>(bytes.size()));
  }
  const std::string bytes;
};

// A reader that takes its operations as text and tells as text what they did.
//
// An operation is a letter, in upper case when it must not move the current offset, and numbers:
//   c            getCharacter
//   s2  v2       getPWFStringSection, getStringSection of 2 characters
//   r3,5  g3,5   getPWFString, getString from 3 up to 5
//   m2  o2       moveOffsetChars, setOffsetChars
//   (5  )        spawn 5 bytes, unspawn
// "@3" after c, s or v is the offset, else -1. The result is the text, "true" or "false", or the number of a failure,
// followed by "@" and the current offset.
class ScriptedReader : public SpawnableTextBufferReader {
 public:
  ScriptedReader(const BitstreamBuffer& bytes, int codePage, EEndian byteOrder = eEndianBig,
                 CPUnicodeConverter* shared = nullptr)
      : SpawnableTextBufferReader(&bytes, codePage, byteOrder, shared) {}
  using TextBufferReader::ccsid, TextBufferReader::converter, TextBufferReader::endian, TextBufferReader::pointer;

  std::string run(const std::string& script) {
    std::istringstream operations(script);
    std::string results;
    for (std::string operation; operations >> operation;) {
      std::string result;
      const Raised raised = raisedBy([&] { result = runOne(operation); });
      if (!raised.kind.empty()) result = std::to_string(raised.number & 0xFFFF);
      results += (results.empty() ? "" : " ") + result + '@' + std::to_string(currentOffset);
    }
    return results;
  }

  // One operation without the offset; a failure passes through.
  std::string runOne(const std::string& operation) {
    char* next = nullptr;
    const int first = static_cast<int>(std::strtol(operation.c_str() + 1, &next, 10));
    const int second = *next != 0 ? std::atoi(next + 1) : -1;
    const bool move = std::islower(operation[0]) != 0;
    const auto answer = [](bool result) { return result ? "true" : "false"; };
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
        return answer(moveOffsetChars(first));
      case 'o':
        return answer(setOffsetChars(first));
      case '(':
        return spawnTextBufferReader(first), std::to_string(getLength());
      default:
        return unspawnTextBufferReader(), std::to_string(getLength());
    }
  }
};

}  // namespace oxr::test
