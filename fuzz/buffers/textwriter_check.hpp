#pragma once

#include <unicode/utf16.h>

#include <algorithm>
#include <string>

#include "fuzz/codepage/icupage.hpp"
#include "fuzz/harness/generalway.hpp"
#include "growingbytebuffer.hpp"
#include "kelexception.hpp"
#include "textbffr.hpp"

namespace oxr::fuzz {
namespace textwriter {

// The message as it ought to be.
class Model {
 public:
  explicit Model(const IcuPage& page) : converter_(openByIcu(page)) {}
  std::string encoded(const std::u16string& text) {
    std::string result(8 * text.size() + 16, '\0');
    const char16_t* source = text.data();
    char* target = result.data();
    UErrorCode status = U_ZERO_ERROR;
    ucnv_fromUnicode(converter_.getAlias(), &target, result.data() + result.size(), &source, source + text.size(),
                     nullptr, true, &status);
    require(U_SUCCESS(status), "the model has no room");
    result.resize(static_cast<std::size_t>(target - result.data()));
    return result;
  }
  void append(const std::u16string& text) { bytes += encoded(text); }
  bool write(const std::u16string& text, std::size_t offset) {
    const std::string written = encoded(text);
    const auto longest = static_cast<std::size_t>(ucnv_getMaxCharSize(converter_.getAlias()));
    if (written.size() > longest * text.size()) return false;
    flush();
    bytes.resize(std::max(bytes.size(), offset + written.size()));
    bytes.replace(offset, written.size(), written);
    return true;
  }
  void queue(const std::u16string& text) {
    if (queued_.size() + text.size() > 1024 && !text.empty()) {
      const bool pair = !queued_.empty() && U16_IS_LEAD(queued_.back()) && U16_IS_TRAIL(text[0]);
      const std::u16string rest = pair ? queued_.substr(queued_.size() - 1) : u"";
      queued_.resize(queued_.size() - rest.size());
      flush();
      queued_ = rest;
    }
    queued_ += text;
  }
  void flush() {
    if (!queued_.empty()) append(queued_);  // even the empty text has bytes where a code page begins with a mark
    queued_.clear();
  }
  std::string bytes;

 private:
  icu::LocalUConverterPointer converter_;
  std::u16string queued_;
};

// A stretch of the message itself, which is in the writer's own code page, or of the same bytes read as EBCDIC.
inline void copy(TextBufferWriter& writer, Model& model, GrowingByteBuffer& message, const IcuPage& page, bool same,
                 std::size_t from, std::size_t length) {
  writer.flush();
  model.flush();
  const int total = message.getLength();
  const int start = total > 0 ? static_cast<int>(from % static_cast<std::size_t>(total)) : 0,
            end = start + static_cast<int>(length);
  TextBufferReader reader(&message, same ? page.ccsid : 284, page.endian, nullptr);
  bool refused = false;
  try {
    writer.appendBuf(&reader, start, end);
  } catch (const KelConversionException&) {
    refused = true;
  }
  requireEqual(refused, end >= total, "a stretch was refused");
  if (refused || start == end) return;
  const std::string bytes = model.bytes.substr(static_cast<std::size_t>(start), length);
  if (same) {
    model.bytes += bytes;
    return;
  }
  KelWstring text;
  UErrorCode status = U_ZERO_ERROR;
  CPUnicodeConverter(284, eEndianBig).toUnicodeString(text, bytes.data(), static_cast<int>(bytes.size()), status);
  model.append(std::u16string(text.characters(), text.characters() + text.length()));
}

// Each of 256 units alone and among others of one byte, where shifts and marks take the most room in proportion: it
// must find room.
inline void appendBlock(TextBufferWriter& writer, Model& model, unsigned block) {
  for (unsigned low = 0; low < 0x100; ++low) {
    const auto unit = static_cast<char16_t>(block << 8 | low);
    const std::u16string text{unit, u'A', 0xD83D, unit};
    for (const int length : {1, 2, 4}) {
      writer.appendStr(reinterpret_cast<const unsigned short*>(text.data()), length);
      model.append(text.substr(0, static_cast<std::size_t>(length)));
    }
  }
}

}  // namespace textwriter

// A writer in any code page, in every way that it has, in lock step with a plain ICU converter whose output goes into a
// string.
inline void checkTextWriter(Choices& choices) {
  const IcuPage& page = choices.oneOf(kIcuPages);
  const GeneralWay general(choices.upTo(2) == 0);
  GrowingByteBuffer message;
  TextBufferWriter writer(&message, page.ccsid, page.endian);
  textwriter::Model model(page);
  for (int steps = 0; steps < 200 && !choices.isEmpty() && model.bytes.size() < 1 << 16; ++steps) {
    const std::size_t operation = choices.upTo(29) == 0 ? 10 : choices.upTo(9);
    if (operation == 10) {
      textwriter::appendBlock(writer, model, choices.any<unsigned char>());
      require(message.bytes() == model.bytes, "the bytes of a block");
      continue;
    }
    std::u16string text = drawPageText(choices);
    if (choices.upTo(15) == 0)
      for (int i = 0; i < 5; ++i)
        text += text.substr(0, 500);
    const KelWstring units(reinterpret_cast<const unsigned short*>(text.data()), static_cast<unsigned>(text.size()));
    const int length = static_cast<int>(text.size());
    switch (operation) {
      case 0:
      case 1:
        writer.appendStr(units.characters(), length);
        model.append(text);
        break;
      case 2:
        writer.appendStrAfterFlushed(units.characters(), length);
        model.append(text);
        break;
      case 3:
      case 4:
        writer.queueStr(units.characters(), length);
        model.queue(text);
        break;
      case 5:
      case 6: {
        const std::size_t offset = choices.upTo(160);
        bool written = true;
        try {
          writer.writeStr(units.characters(), length, static_cast<int>(offset));
        } catch (const KelConversionException&) {
          written = false;
        }
        requireEqual(written, model.write(text, offset), "written over");
        break;
      }
      case 7:
        writer.flush();
        model.flush();
        break;
      default: {
        const std::size_t from = choices.any<std::uint16_t>();
        textwriter::copy(writer, model, message, page, operation == 8, from, choices.upTo(100));
      }
    }
    require(message.bytes() == model.bytes, "the bytes after operation " + std::to_string(operation));
  }
}

}  // namespace oxr::fuzz
