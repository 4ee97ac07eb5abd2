// External decimals as text: what fills a field beside the digits comes off, and is put on.
//
// A pad that is a code unit is trimmed and filled by the members that do so for any text. A pad that is a byte of the
// code page is not a character of the text: the text goes to bytes, the pads are counted or put there, and the bytes
// become text again. So a pad may be half a character, and two such members may make one of what was two.

#include <algorithm>
#include <limits>
#include <span>

#include "core/padding.hpp"
#include "datacnv/padchar.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/sourcepath.hpp"
#include "datacnv/textedit.hpp"
#include "dataconv.hpp"
#include "support/scratch.hpp"
#include "support/support.hpp"

using namespace oxr;

namespace {

constexpr std::size_t kUsualField = 64;  // bytes of a field that need no heap

// A text in the code page of a converter.
class EncodedText {
 public:
  EncodedText(DataCnv& converter, const KelWstring& text)
      : scratch_(std::size_t{text.length()} * static_cast<unsigned>(converter.getConverter()->getMaxBytesPerChar()) +
                 1) {
    constexpr std::size_t kMaxSize = std::numeric_limits<int>::max();
    size_ = static_cast<int>(std::min(scratch_.size(), kMaxSize));
    converter.fromUnicodeString(text, scratch_.data(), size_);
  }
  std::span<const unsigned char> bytes() { return {scratch_.data(), static_cast<std::size_t>(size_)}; }

 private:
  Scratch<unsigned char, kUsualField> scratch_;
  int size_;
};

}  // namespace

void DataCnv::ExtDecTrimData(KelWstring& text, EJustification justification, unsigned short padChar,
                             bool padCharIsUnicode) {
  if (padCharIsUnicode) {
    TrimData(text, eTrimPadding, justification, padChar, true);
  } else {
    EncodedText encoded(*this, text);
    std::span<const unsigned char> bytes = encoded.bytes();
    const unsigned char pad = padCharBytes(padChar)[0];
    // Without a justification the front is trimmed, where TrimData trims nothing: ExternalDecimal.TrimsAndPadsFields.
    bytes = justification == eJustifyLeft ? bytes.first(bytes.size() - core::trailingPads(bytes, pad))
                                          : bytes.subspan(core::leadingPads(bytes, pad));
    text.eraseInternal(0, KelWstring::npos);
    if (!bytes.empty()) toUnicodeString(text, bytes.data(), static_cast<int>(bytes.size()));
  }
  if (text.length() == 0) setToZero(text);
}

void DataCnv::ExtDecPadData(KelWstring& text, int targetLength, int paddingBytes, EJustification justification,
                            unsigned short padChar, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::ExtDecPadData", kDataCnvPath);
  const std::int64_t missing = std::int64_t{targetLength} - text.length();
  if (missing == 0) return;
  const int padSize = GetPadCharLen(padChar);
  if (padSize == 0 || paddingBytes % padSize != 0)
    raise<KelParserException>(trace.site(), failures::kInvalidPaddingSize, padCharDump(padChar), padSize, targetLength,
                              ccsid);
  const int count = static_cast<int>(std::clamp<std::int64_t>(missing, 0, std::numeric_limits<int>::max()));
  if (padCharIsUnicode) {
    PadData(text, count, justification, padChar, true);
    return;
  }
  if (justification != eJustifyLeft && justification != eJustifyRight) {
    trace.fact("Possible internal error, eJustifyNone not handled");
    return;
  }
  EncodedText encoded(*this, text);
  const auto bytes = encoded.bytes();
  Scratch<unsigned char, kUsualField> field(bytes.size() + static_cast<std::size_t>(count));
  unsigned char* const data = justification == eJustifyLeft ? field.data() : field.data() + count;
  unsigned char* const pads = justification == eJustifyLeft ? field.data() + bytes.size() : field.data();
  std::copy(bytes.begin(), bytes.end(), data);
  std::fill_n(pads, count, padCharBytes(padChar)[0]);
  if (field.size() != 0) toUnicodeString(text, field.data(), static_cast<int>(field.size()));
}
