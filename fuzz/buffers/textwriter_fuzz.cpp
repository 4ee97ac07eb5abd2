// Random texts in random code pages, written in every way the writer has, in lock step with a plain ICU converter whose
// output goes into a string.

#include <unicode/ucnv_err.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>

#include "growingbytebuffer.hpp"
#include "kelexception.hpp"
#include "textbffr.hpp"

namespace {

struct Page {
  int ccsid;
  EEndian endian;
  const char* name;
};
constexpr Page kPages[] = {
    {37, eEndianBig, "ibm-37"},        {500, eEndianBig, "ibm-500"},
    {1047, eEndianBig, "ibm-1047"},    {1140, eEndianBig, "ibm-1140"},
    {819, eEndianBig, "ibm-819"},      {1252, eEndianBig, "ibm-1252"},
    {850, eEndianBig, "ibm-850"},      {367, eEndianBig, "ibm-367"},
    {1208, eEndianBig, "UTF-8"},       {1200, eEndianBig, "UTF-16BE"},
    {1200, eEndianLittle, "UTF-16LE"}, {943, eEndianBig, "ibm-943"},
    {930, eEndianBig, "ibm-930"},      {939, eEndianBig, "ibm-939"},
    {1388, eEndianBig, "ibm-1388"},    {1390, eEndianBig, "ibm-1390"},
    {5488, eEndianBig, "gb18030"},     {1232, eEndianBig, "UTF-32BE"},
    {1204, eEndianLittle, "UTF-16"},   {1236, eEndianLittle, "UTF-32"},
    {5054, eEndianBig, "ibm-5054"},    {1204, eEndianBig, "UTF-16,version=2"},
};

void require(bool holds) {
  if (!holds) std::abort();
}

// The message as it ought to be.
class Model {
 public:
  explicit Model(const Page& page) {
    UErrorCode status = U_ZERO_ERROR;
    converter_.adoptInstead(ucnv_open(page.name, &status));
    ucnv_setFromUCallBack(converter_.getAlias(), UCNV_FROM_U_CALLBACK_SUBSTITUTE, nullptr, nullptr, nullptr, &status);
    ucnv_setFallback(converter_.getAlias(), true);
    require(U_SUCCESS(status));
  }
  std::string encoded(const std::u16string& text) {
    std::string result(8 * text.size() + 16, '\0');
    const char16_t* source = text.data();
    char* target = result.data();
    UErrorCode status = U_ZERO_ERROR;
    ucnv_fromUnicode(converter_.getAlias(), &target, result.data() + result.size(), &source, source + text.size(),
                     nullptr, true, &status);
    require(U_SUCCESS(status));
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
    append(queued_);
    queued_.clear();
  }
  std::string bytes;

 private:
  icu::LocalUConverterPointer converter_;
  std::u16string queued_;
};

// Up to 31 units from the input, of kinds that texts are made of.
std::u16string textFrom(std::span<const std::uint8_t>& input) {
  std::u16string text;
  if (input.empty()) return text;
  const std::size_t wanted = input[0] & 31u;
  const unsigned kind = input[0] >> 5;
  input = input.subspan(1);
  while (text.size() < wanted && input.size() >= 2) {
    const unsigned value = input[0] | unsigned{input[1]} << 8;
    input = input.subspan(2);
    switch (kind == 7 ? value % 7 : kind) {
      case 0:
      case 1:
        text += static_cast<char16_t>(value & 0x7F);
        break;
      case 2:
        text += static_cast<char16_t>(0x80 + value % 0x280);
        break;
      case 3:
        text += static_cast<char16_t>(0x3000 + value % 0x7000);
        break;
      case 4:
        text += static_cast<char16_t>(0xD800 + value % 0x800);
        break;
      case 5:
        text += {static_cast<char16_t>(0xD800 + value % 0x400), static_cast<char16_t>(0xDC00 + value / 64)};
        break;
      default:
        text += static_cast<char16_t>(value);
    }
  }
  return text;
}

// A stretch of the message itself, which is in the writer's own code page, or of the same bytes read as EBCDIC.
void copy(TextBufferWriter& writer, Model& model, oxr::GrowingByteBuffer& message, const Page& page, bool same,
          unsigned from, unsigned length) {
  writer.flush();
  model.flush();
  const int total = message.getLength();
  const int start = total > 0 ? static_cast<int>(from) % total : 0, end = start + static_cast<int>(length);
  TextBufferReader reader(&message, same ? page.ccsid : 284, page.endian, nullptr);
  bool refused = false;
  try {
    writer.appendBuf(&reader, start, end);
  } catch (const KelConversionException&) {
    refused = true;
  }
  require(refused == (end >= total));
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const Page& page = kPages[data[0] % std::size(kPages)];
  oxr::GrowingByteBuffer message;
  TextBufferWriter writer(&message, page.ccsid, page.endian);
  Model model(page);
  std::span<const std::uint8_t> input(data + 1, size - 1);
  while (!input.empty() && model.bytes.size() < 1 << 16) {
    const unsigned operation = input[0];
    input = input.subspan(1);
    std::u16string text = textFrom(input);
    if (operation >= 240)
      for (int i = 0; i < 5; ++i)
        text += text.substr(0, 500);
    const KelWstring units(reinterpret_cast<const unsigned short*>(text.data()), static_cast<unsigned>(text.size()));
    const int length = static_cast<int>(text.size());
    switch (operation % 8) {
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
      case 5: {
        const int offset = static_cast<int>(operation) / 8 * 5;
        bool written = true;
        try {
          writer.writeStr(units.characters(), length, offset);
        } catch (const KelConversionException&) {
          written = false;
        }
        require(written == model.write(text, static_cast<std::size_t>(offset)));
        break;
      }
      case 6:
        writer.flush();
        model.flush();
        break;
      default:
        copy(writer, model, message, page, operation % 16 == 7, operation * 7, static_cast<unsigned>(length) * 3);
    }
    require(message.bytes() == model.bytes);
  }
  return 0;
}
