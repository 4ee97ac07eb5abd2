// The members that take padding or an excess off texts, and tell texts that are padding alone.
//
// Trimming works on code units. White space is what ICU says it is, whatever the pad; the pad comes off the side that
// the justification leaves for it. Truncation to a number of bytes takes no character apart: it asks the code page for
// the bytes of each unit, from the end that stays, until the field is full.

#include <algorithm>
#include <cstring>

#include "core/padding.hpp"
#include "datacnv/padchar.hpp"
#include "datacnv/sourcepath.hpp"
#include "dataconv.hpp"
#include "support/support.hpp"

using namespace oxr;

namespace {

// How many units, taken one by one from an end, come to at most `maxBytes` bytes in the code page. Each is converted
// alone, so that the halves of a surrogate pair count as two substitution characters.
long unitsThatFit(const FailureSite& site, CPUnicodeConverter& converter, UnitView text, bool fromTheEnd,
                  long maxBytes) {
  long bytes = 0;
  long kept = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const unsigned short* source = text.data() + (fromTheEnd ? text.size() - 1 - i : i);
    char scratch[10];
    char* end = scratch;
    UErrorCode status = U_ZERO_ERROR;
    converter.fromUnicode(end, scratch + sizeof scratch, source, source + 1, nullptr, true, status);
    if (U_FAILURE(status)) raiseInternalError(site, "error converting from unicode", static_cast<int>(status));
    bytes += end - scratch;
    if (bytes > maxBytes) break;
    ++kept;
    if (bytes == maxBytes) break;
  }
  return kept;
}

// How many units of `text` a field of `maxLength` takes. The length is in bytes where `unit` and code page say so: with
// characters of one width it is divided, with several widths bytes are counted, which takes a code page to ask.
long unitsToKeep(const FailureSite& site, CPUnicodeConverter* converter, UnitView text, bool fromTheEnd, long maxLength,
                 LengthUnitType unit) {
  if (unit != eLengthBytes && unit != eLengthBytesIfVariable) return maxLength;
  if (converter == nullptr) raiseInternalError(site, "no valid converter");
  const int minBytes = converter->getMinBytesPerChar();
  const int maxBytes = converter->getMaxBytesPerChar();
  if (minBytes == maxBytes && minBytes >= 2 && unit == eLengthBytes) return maxLength / minBytes;
  if (maxBytes < 2 || minBytes != 1) return maxLength;
  return unitsThatFit(site, *converter, text, fromTheEnd, maxLength);
}

}  // namespace

int DataCnv::getNumLeadingPaddingChar(const KelWstring& text, const unsigned short* pad) {
  const FunctionTrace trace(this, "DataCnv::getNumLeadingPaddingChar", kDataCnvPath);
  return static_cast<int>(pad == nullptr ? core::leadingSpaces(text.view()) : core::leadingPads(text.view(), *pad));
}

int DataCnv::getNumTrailingPaddingChar(const KelWstring& text, const unsigned short* pad) {
  const FunctionTrace trace(this, "DataCnv::getNumTrailingPaddingChar", kDataCnvPath);
  return static_cast<int>(pad == nullptr ? core::trailingSpaces(text.view()) : core::trailingPads(text.view(), *pad));
}

void DataCnv::TrimFromTheLeft(KelWstring& text, int count) {
  if (count > 0) text.eraseInternal(0, static_cast<unsigned>(count));
}

void DataCnv::TrimFromTheRight(KelWstring& text, int count) {
  if (count <= 0) return;
  const unsigned length = text.length();
  text.eraseInternal(length - std::min(length, static_cast<unsigned>(count)), KelWstring::npos);
}

void DataCnv::TrimData(KelWstring& text, ETrimType trimType, EJustification justification, unsigned short padChar,
                       bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::TrimData", kDataCnvPath);
  // A bad pad is refused even where it is not used: Trimming.RefusesABadPadForEveryTrimType.
  const unsigned short pad = padCharIsUnicode ? padChar : checkedPadUnit(*this, padChar, trace.site());
  const bool leadingSpace = trimType == eTrimSpaceLeading || trimType == eTrimSpaceBoth;
  const bool trailingSpace = trimType == eTrimSpaceTrailing || trimType == eTrimSpaceBoth;
  if (leadingSpace) TrimFromTheLeft(text, getNumLeadingPaddingChar(text, nullptr));
  if (trailingSpace) TrimFromTheRight(text, getNumTrailingPaddingChar(text, nullptr));
  if (trimType != eTrimPadding) return;
  if (justification == eJustifyRight) TrimFromTheLeft(text, getNumLeadingPaddingChar(text, &pad));
  if (justification == eJustifyLeft) TrimFromTheRight(text, getNumTrailingPaddingChar(text, &pad));
}

int DataCnv::TrimString(unsigned short* buffer, int length, unsigned short padChar, EJustification justification,
                        ETrimType trimType, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::TrimString", kDataCnvPath);
  if (buffer == nullptr) raiseInternalError(trace.site(), "Null input pointer");
  if (length < 0) raiseInternalError(trace.site(), numbered("Invalid input length: ", length));
  // The caller's units change only once nothing can fail any more.
  KelBufferedWstring<16u> text(buffer, static_cast<unsigned>(length));
  TrimData(text, trimType, justification, padChar, padCharIsUnicode);
  std::fill_n(std::copy_n(text.characters(), text.length(), buffer), static_cast<unsigned>(length) - text.length(),
              static_cast<unsigned short>(0));
  return static_cast<int>(text.length());
}

bool DataCnv::TruncateData(KelWstring& text, long maxLength, EJustification justification, LengthUnitType unit,
                           CPUnicodeConverter* codePage) {
  const FunctionTrace trace(this, "DataCnv::TruncateData", kDataCnvPath);
  if (justification == eJustifyNone) return false;
  // Any other justification keeps the end.
  const bool keepsTheFront = justification == eJustifyLeft;
  const unsigned length = text.length();
  const long kept = unitsToKeep(trace.site(), codePage, text.view(), !keepsTheFront, maxLength, unit);
  if (kept >= static_cast<long>(length)) return false;
  const auto rest = static_cast<unsigned>(std::max(kept, 0L));
  if (keepsTheFront)
    text.eraseInternal(rest, KelWstring::npos);
  else
    text.eraseInternal(0, length - rest);
  return true;
}

bool DataCnv::isAllDataPadding(KelWstring& text, unsigned short padChar, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::isAllDataPadding", kDataCnvPath);
  const unsigned short pad = padCharIsUnicode ? padChar : checkedPadUnit(*this, padChar, trace.site());
  return getNumLeadingPaddingChar(text, &pad) == static_cast<int>(text.length());
}

// Unlike isAllDataPadding() this does not refuse a pad that the code page's bytes do not hold:
// Trimming.TellsNullStrings.
bool DataCnv::IsNullString(const KelWstring& text, unsigned short padChar, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::IsNullString", kDataCnvPath);
  const unsigned short pad = padCharIsUnicode ? padChar : uncheckedPadUnit(*this, padChar);
  return core::leadingPads(text.view(), pad) == text.length();
}

bool DataCnv::IsNullString(const PWFData& value, unsigned short padChar, bool padCharIsUnicode) {
  const FunctionTrace trace(this, "DataCnv::IsNullString", kDataCnvPath);
  return IsNullString(value.getPWFStringValue(), padChar, padCharIsUnicode);
}
