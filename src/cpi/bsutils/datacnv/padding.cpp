// The members for padding. To plain runs (core/padding.hpp) they add what a pad character is: a code unit, which is
// used on text as it stands and converted for bytes, or a value in the code page, which is converted for text and used
// on bytes as it stands. On bytes it must fill the room without a rest.

#include <array>
#include <cstring>
#include <span>

#include "core/padding.hpp"
#include "cputils.hpp"
#include "datacnv/padchar.hpp"
#include "datacnv/parts.hpp"
#include "datacnv/sourcepath.hpp"
#include "datacnv/textedit.hpp"
#include "dataconv.hpp"
#include "support/scratch.hpp"
#include "support/support.hpp"

using namespace oxr;

namespace {

[[noreturn]] void raiseInvalidPadding(const FailureSite& site, unsigned short padChar, int ccsid) {
  raise<KelParserException>(site, failures::kInvalidPadding, padCharDump(padChar), ccsid);
}

// The bytes of one pad character. No code page makes more than 20 of a code unit.
struct PadSequence {
  std::array<unsigned char, 20> bytes;
  std::size_t count;
  std::span<const unsigned char> view() const { return {bytes.data(), count}; }
};

// The bytes of a pad that is a code unit.
PadSequence encodePad(const FailureSite& site, CPUnicodeConverter& converter, unsigned short padChar) {
  PadSequence pad;
  char* const begin = reinterpret_cast<char*>(pad.bytes.data());
  char* end = begin;
  const unsigned short* source = &padChar;
  UErrorCode status = U_ZERO_ERROR;
  converter.fromUnicode(end, begin + pad.bytes.size(), source, source + 1, nullptr, true, status);
  if (U_FAILURE(status)) raiseInternalError(site, "Error converting from unicode", static_cast<int>(status));
  pad.count = static_cast<std::size_t>(end - begin);
  return pad;
}

// The bytes of a pad that is a value in the code page, low byte first. It has 16 bits, and so is no pad where
// characters are wider.
PadSequence rawPad(const FailureSite& site, int minBytes, unsigned short padChar, int padLength, int ccsid) {
  const bool fits = minBytes == 1 ? padChar <= 0xFF : minBytes == 2 && padLength % minBytes == 0;
  if (!fits) raiseInvalidPadding(site, padChar, ccsid);
  return {padCharBytes(padChar), static_cast<std::size_t>(minBytes)};
}

}  // namespace

namespace oxr {

unsigned short checkedPadUnit(DataCnv& cnv, unsigned short padChar, const FailureSite& site) {
  const int minBytes = cnv.getConverter()->getMinBytesPerChar();
  if (minBytes > 2 || (minBytes == 1 && padChar > 0xFF)) raiseInvalidPadding(site, padChar, DataCnvParts::ccsid(cnv));
  KelBufferedWstring<16u> unit;
  cnv.toUnicodeString(unit, padCharBytes(padChar).data(), minBytes);
  return unit[0];
}

// Half a character gives no unit; the text is padded with zeros then.
unsigned short uncheckedPadUnit(DataCnv& cnv, unsigned short padChar) {
  KelBufferedWstring<16u> unit;
  cnv.toUnicodeString(unit, padCharBytes(padChar).data(), 1);
  return unit[0];
}

}  // namespace oxr

void DataCnv::PadData(KelWstring& text, int padLength, EJustification justification, unsigned short padChar,
                      bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::PadData", kDataCnvPath);
  if (padLength <= 0) return;
  const unsigned short pad = padCharIsUnicode ? padChar : uncheckedPadUnit(*this, padChar);
  // Without a justification a text is padded at its front, bytes at their end: Padding.ExtendsTexts,
  // Padding.ExtendsBytes.
  insertCopies(text, justification == eJustifyLeft ? text.length() : 0, static_cast<std::uint32_t>(padLength), pad);
}

void DataCnv::PadData(unsigned char* end, int padLength, int dataLength, EJustification justification,
                      unsigned short padChar, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::PadData", kDataCnvPath);
  if (end == nullptr || padLength < 0 || dataLength < 0)
    raiseInternalError(trace.site(), "Invalid argument for DataCnv::PadData");
  if (padLength == 0) return;
  const std::size_t room = static_cast<std::size_t>(padLength);
  const int minBytes = getConverter()->getMinBytesPerChar();
  const PadSequence pad = padCharIsUnicode ? encodePad(trace.site(), *getConverter(), padChar)
                                           : rawPad(trace.site(), minBytes, padChar, padLength, ccsid);
  // A character that the code page leaves out has no bytes, and so fills nothing.
  if (padCharIsUnicode && (pad.count == 0 || room % pad.count != 0))
    raise<KelParserException>(trace.site(), failures::kInvalidPaddingSize, padCharDump(padChar), padLength, minBytes,
                              ccsid);
  if (justification != eJustifyRight) {
    core::repeat({end, room}, pad.view());
    return;
  }
  unsigned char* const start = end - dataLength;
  std::memmove(start + padLength, start, static_cast<std::size_t>(dataLength));
  // Before the data a zero byte ends the padding and zeros follow; after the data it does not: Padding.ExtendsBytes.
  core::repeatUpToZero({start, room}, pad.view());
}

void DataCnv::PadString(KelWstring& text, int targetLength, int contentLength, unsigned short padChar,
                        EJustification justification, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::PadString", kDataCnvPath);
  if (targetLength < contentLength || targetLength < 0)
    raiseInternalError(trace.site(), numbered("Invalid input length: ", targetLength) +
                                         numbered(" Expected string length after padding: ", contentLength));
  // The content is cut, or filled up with zeros, before it is padded.
  if (contentLength >= 0) {
    const auto content = static_cast<unsigned>(contentLength);
    if (text.length() > content)
      text.eraseInternal(content, KelWstring::npos);
    else
      insertCopies(text, text.length(), content - text.length(), 0);
  }
  // A length below 0 leaves the text whole and adds to the padding, so that the text cannot come to the target length;
  // the test after it refuses that, even where the difference passes the range of an int.
  PadData(text, static_cast<int>(std::int64_t{targetLength} - contentLength), justification, padChar, padCharIsUnicode);
  if (text.length() != static_cast<unsigned>(targetLength)) raiseInternalError(trace.site(), "Data padding failed");
}

int DataCnv::GetPadCharLen(unsigned short padChar) {
  const FunctionTrace trace(this, "DataCnv::GetPadCharLen", kDataCnvPath);
  const KelBufferedWstring<16u> pad(&padChar, 1);
  // The longest character of the page; one that is shifted out and in may need more and is refused.
  const int capacity = getConverter()->getMaxBytesPerChar();
  Scratch<unsigned char, 16> bytes(static_cast<std::size_t>(capacity));
  int size = capacity;
  const UErrorCode status = fromUnicodeString(pad, bytes.data(), size);
  if (status == U_BUFFER_OVERFLOW_ERROR)
    raise<KelConversionException>(trace.site(), failures::kOutOfBounds, "integer",
                                  numbered("string (", capacity) + " bytes)", padChar);
  if (U_FAILURE(status))
    raiseInternalError(trace.site(), numbered("Conversion to unicode string failed. Error code: ", status));
  return size;
}
