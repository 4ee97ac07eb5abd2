#pragma once

#include <unicode/utf16.h>

#include <cstdlib>
#include <sstream>
#include <string>

#include "harness/failures.hpp"
#include "harness/hex.hpp"
#include "harness/text.hpp"
#include "textbffr.hpp"

namespace oxr::test {

// UTF-8, with half a character above U+FFFF as "{d834}".
inline std::string shown(const KelWstring& text) {
  std::string result;
  for (unsigned i = 0; i < text.length(); ++i) {
    const bool pair = U16_IS_LEAD(text[i]) && U16_IS_TRAIL(text[i + 1]);
    char half[8];
    std::snprintf(half, sizeof half, "{%04x}", unsigned{text[i]});
    result += U16_IS_SURROGATE(text[i]) && !pair ? half : toUtf8(text.substr(i, 1 + pair));
    i += pair;
  }
  return result;
}

// A reader with its bytes that takes its operations as text and tells as text what they did.
//
// An operation is a letter, in upper case when it must not move the current offset, and numbers:
//   c            getCharacter: "A/1", the bytes consumed after the stroke
//   s2  v2       getPWFStringSection, getStringSection of 2 characters
//   r3,5  g3,5   getPWFString, getString from 3 up to 5
//   m2  o2       moveOffsetChars, setOffsetChars
//   (5  )        spawn 5 bytes, unspawn
// "@3" after c, s or v is the offset, else -1. The result is the text, "true" or "false", "5502:11" for a failure and
// the end of its last insert, followed by "@" and the current offset.
class ScriptedReader : public SpawnableTextBufferReader {
 public:
  ScriptedReader(const BitstreamBuffer& bytes, int codePage, EEndian byteOrder = eEndianBig,
                 CPUnicodeConverter* shared = nullptr)
      : SpawnableTextBufferReader(&bytes, codePage, byteOrder, shared) {}
  using TextBufferReader::ccsid, TextBufferReader::converter, TextBufferReader::currentOffset, TextBufferReader::endian;
  using TextBufferReader::pointer;

  std::string run(const std::string& script) {
    std::istringstream operations(script);
    std::string results;
    for (std::string operation; operations >> operation;) {
      std::string result;
      const Raised raised = raisedBy([&] { result = runOne(operation); });
      if (!raised.kind.empty()) {
        const std::string& last = raised.inserts.back();
        result = std::to_string(raised.number & 0xFFFF) + ':' + last.substr(last.rfind(' ') + 1);
      }
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
    KelWstring text;
    PWFData value(u"old"_k);
    unsigned short unit = 0;
    int consumed = 0;
    switch (std::tolower(operation[0])) {
      case 'c': {
        const bool found = getCharacter(&unit, move, &consumed, second);
        return (found ? shown(KelWstring(&unit, 1)) : "false") + '/' + std::to_string(consumed);
      }
      case 's':
        return getPWFStringSection(text, first, move, second) ? shown(text) : "false";
      case 'v':
        return getStringSection(value, first, move, second) ? shown(value.getPWFStringValue()) : "false";
      case 'r':
        return getPWFString(text, first, second, move) ? shown(text) : "false";
      case 'g':
        return shown(getString(first, second, move).getPWFStringValue());
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

// What a script does with bytes given in hexadecimal.
inline std::string ran(int codePage, const std::string& hex, const std::string& script) {
  const std::string bytes = fromHex(hex);
  ReadOnlyByteBuffer buffer;
  buffer.create(bytes.data(), static_cast<int>(bytes.size()));
  return ScriptedReader(buffer, codePage).run(script);
}

}  // namespace oxr::test
