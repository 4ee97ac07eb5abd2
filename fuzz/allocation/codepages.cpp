#include <array>

#include "base64.hpp"
#include "cpunicodeconverter.hpp"
#include "fuzz/allocation/operations.hpp"
#include "growingbytebuffer.hpp"
#include "kelconverter.hpp"
#include "textbffr.hpp"
#include "textbffrwriter.hpp"

namespace oxr::test {
namespace {

// A single-byte page, Unicode ones, and pages that only ICU converts, one of them with shifts.
constexpr int kPages[] = {37, 1208, 1200, 1204, 943, 930, 5488};

// Text of more units than any room on the stack, with a character that few pages have.
KelWstring longText() {
  KelWstring text = u"\u4E9C"_k;
  for (int i = 0; i < 400; ++i)
    text.appendInternal(u"0"_k.characters(), 1, 0);
  return text;
}

std::string encodedBy(const CPUnicodeConverter& page, const KelWstring& text) {
  std::array<char, 4000> bytes;
  int size = bytes.size();
  UErrorCode status = U_ZERO_ERROR;
  page.fromUnicodeString(bytes.data(), size, text, status);
  return told(size) + " " + toldBytes(bytes.data(), std::min(size, 20)) + " " + told(static_cast<int>(status));
}
std::string decodedBy(const CPUnicodeConverter& page, const char* bytes, int size) {
  KelBufferedWstring<16u> text;
  UErrorCode status = U_ZERO_ERROR;
  page.toUnicodeString(text, bytes, size, status);
  return told(static_cast<const KelWstring&>(text)) + " " + told(static_cast<int>(status));
}

// A message in a code page, with what reads and writes it.
struct Page {
  explicit Page(int number) : ccsid(number) {
    TextBufferWriter writer(&bytes, ccsid, eEndianBig);
    const KelWstring text = longText();
    writer.appendStr(text.characters(), static_cast<int>(text.length()));
    constexpr unsigned short kEnd[1] = {};
    writer.appendStr(kEnd, 1);
  }
  int ccsid;
  oxr::GrowingByteBuffer bytes{0};
};

using Use = std::string (*)(Page&);
const struct {
  const char* name;
  Use use;
} kRows[] = {
    {"converter",
     [](Page& p) {
       const CPUnicodeConverter page(p.ccsid, eEndianBig);
       return told(page.getMaxBytesPerChar());
     }},
    {"texts",
     [](Page& p) {
       const CPUnicodeConverter page(p.ccsid, eEndianBig);
       return encodedBy(page, longText()) + decodedBy(page, p.bytes.getData(0), p.bytes.getLength());
     }},
    {"reader, getCharacter",
     [](Page& p) {
       TextBufferReader reader(&p.bytes, p.ccsid, eEndianBig, nullptr);
       unsigned short unit = 0;
       int used = 0, wide = 0;
       reader.getCharacter(&unit, false, &used, -1);
       reader.getCharacter32(&wide, true, &used, -1);
       return told(wide) + "+" + told(unit);
     }},
    {"reader, getPWFString",
     [](Page& p) {
       TextBufferReader reader(&p.bytes, p.ccsid, eEndianBig, nullptr);
       KelBufferedWstring<16u> text;
       reader.getPWFString(text, 0, p.bytes.getLength(), true);
       return told(static_cast<const KelWstring&>(text));
     }},
    {"reader, getString to the terminator",
     [](Page& p) {
       TextBufferReader reader(&p.bytes, p.ccsid, eEndianBig, nullptr);
       return told(reader.getString(0, -1, true));
     }},
    {"reader, getPWFStringSection",
     [](Page& p) {
       TextBufferReader reader(&p.bytes, p.ccsid, eEndianBig, nullptr);
       KelBufferedWstring<16u> text;
       PWFData value(STRING);
       reader.getPWFStringSection(text, 30, true, 0);
       reader.getStringSection(value, 300, true, -1);
       return told(static_cast<const KelWstring&>(text)) + told(value);
     }},
    {"reader, beyond the end",
     [](Page& p) {
       TextBufferReader reader(&p.bytes, p.ccsid, eEndianBig, nullptr);
       return reader.getString(0, 1 << 20, true), told("read");
     }},
    {"reader, moves",
     [](Page& p) {
       TextBufferReader reader(&p.bytes, p.ccsid, eEndianBig, nullptr);
       unsigned short unit = 0;
       int used = 0;
       reader.lockCurrentOffset();
       reader.moveOffsetChars(40);
       reader.setOffsetChars(3);
       reader.getCharacter(&unit, false, &used, -1);
       reader.unlockCurrentOffset();
       return told(unit);
     }},
    {"writer, appendStr",
     [](Page& p) {
       oxr::GrowingByteBuffer target(0);
       TextBufferWriter writer(&target, p.ccsid, eEndianBig);
       const KelWstring text = longText();
       writer.appendStr(text.characters(), static_cast<int>(text.length()));
       writer.writeStr(text.characters(), 30, 5);
       writer.queueStr(text.characters(), 401);
       for (int i = 0; i < 4; ++i)
         writer.queueStr(text.characters(), 300);
       writer.flush();
       return toldBytes(target.getData(0), std::min(target.getLength(), 40)) + told(target.getLength());
     }},
    {"writer, appendBuf",
     [](Page& p) {
       oxr::GrowingByteBuffer target(0);
       TextBufferWriter writer(&target, p.ccsid == 1208 ? 1200 : 1208, eEndianLittle);
       TextBufferReader reader(&p.bytes, p.ccsid, eEndianBig, nullptr);
       writer.appendBuf(&reader, 0, p.bytes.getLength() - 1);
       return toldBytes(target.getData(0), std::min(target.getLength(), 40)) + told(target.getLength());
     }},
    {"the host's converter",
     [](Page& p) {
       const KelConverter* const page = KelConverter::createConverter(static_cast<unsigned>(p.ccsid), 1, nullptr);
       return told(static_cast<int>(page->status())) + (page->singleByteTable() != nullptr ? " table" : " none");
     }},
};

}  // namespace

Operations codePageOperations() {
  Operations operations;
  for (const auto& row : kRows)
    for (const int ccsid : kPages) {
      const std::string name = std::to_string(ccsid) + ", " + row.name;
      // A message that is made opens the page's converter. So the first time is without a message.
      const std::string_view rowName = row.name;
      if (rowName == "converter" || rowName == "the host's converter")
        operations.push_back({name + ", first", [ccsid, use = row.use]() -> Call {
                                auto page = std::make_shared<Page>(819);
                                page->ccsid = ccsid;
                                return [page, use] { return use(*page); };
                              }});
      operations.push_back({name, [ccsid, use = row.use]() -> Call {
                              auto page = std::make_shared<Page>(ccsid);
                              return [page, use] { return use(*page); };
                            }});
    }
  for (const int ccsid : {0, 99999})
    operations.push_back({std::to_string(ccsid) + ", converter of no page", [ccsid]() -> Call {
                            return [ccsid] {
                              const CPUnicodeConverter page(ccsid, eEndianBig);
                              return told(page.getMaxBytesPerChar());
                            };
                          }});
  addBoth(
      operations, "local text", [] { return std::make_shared<CPUnicodeConverter>(37, eEndianBig); },
      [](CPUnicodeConverter& page) {
        const KelWstring text = longText();
        std::array<char, 2000> bytes;
        std::array<unsigned short, 2000> units;
        int size = bytes.size(), length = units.size();
        page.fromUnicodeToLocal(bytes.data(), &size, text.characters(), static_cast<int>(text.length()));
        page.fromLocalToUnicode(units.data(), &length, bytes.data(), size);
        return told(size) + " " + told(length);
      });
  return operations;
}

}  // namespace oxr::test
