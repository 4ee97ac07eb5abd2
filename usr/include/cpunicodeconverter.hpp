#pragma once

#include <unicode/ucnv.h>

#include <array>
#include <string>

#include "kelheader.hpp"
#include "kelwstring.hpp"
#include "oxrexport.hpp"
#include "pwftypes.hpp"

class KelConverter;
namespace oxr {
struct CodePage;
}  // namespace oxr

// What converters have in common: a status and a name for messages. The name opens nothing.
class OXR_EXPORT CPBaseUnicodeConverter {
 public:
  // The name is "utf-16le" or "utf-16be" for a Unicode CCSID, which takes no other `endian` than these two (the name
  // stays empty), else ICU's alias of the numbered code page.
  CPBaseUnicodeConverter(int ccsid, EEndian endian);

 protected:
  ~CPBaseUnicodeConverter() = default;

  // The object's mark in a dump.
  objectHeader baseHeader{"QVTB", 0, 8240};
  UErrorCode status = U_ZERO_ERROR;  // of the constructor's calls of ICU
  std::string name;                  // ICU's, or that of a Unicode CCSID; empty where there is none
};

// The one way from bytes in a code page, named by its CCSID, to UTF-16 and back.
//
// Each object owns a private clone of the host's shared ICU converter, which lies inside the object as a rule. An
// unmappable byte becomes ICU's substitution character and an unmappable character the code page's substitution byte;
// fallback mappings are used both ways. Only bytes that end inside a character (status 11, U_TRUNCATED_CHAR_FOUND) and
// a target that is too small (status 15, U_BUFFER_OVERFLOW_ERROR) come out as errors.
// An object holds conversion state and serves one thread at a time; objects share nothing.
//
// Example:
//   CPUnicodeConverter page(37, eEndianUnset);
//   KelWstring text;
//   UErrorCode status = U_ZERO_ERROR;
//   page.toUnicodeString(text, "\xC1\xC2", 2, status);  // "AB", status U_ZERO_ERROR
class OXR_EXPORT CPUnicodeConverter : public CPBaseUnicodeConverter {
 public:
  // True for 1200, 13488 and 17584 and for no other, UTF-8 (1208) neither.
  static bool IsUnicode(int ccsid);

  // `endian` counts for UTF-16; eEndianUnset is this machine's order. KelRecoverableException: 0xC0000854 (OXR2132)
  // "Invalid codepage (or missing table)", `ccsid`, the name; 0xC0000852 (OXR2130) when ICU cannot make or set up the
  // converter, `ccsid`, the status.
  CPUnicodeConverter(int ccsid, EEndian endian);
  CPUnicodeConverter(const CPUnicodeConverter&) = delete;
  CPUnicodeConverter& operator=(const CPUnicodeConverter&) = delete;
  ~CPUnicodeConverter();

  // As ucnv_toUnicode and ucnv_fromUnicode: the pointers move; `conversionStatus`, the result too, is ICU's; room after
  // the text may be overwritten. `offsets`: null or as many as the room. What found no room comes out first next time.
  int toUnicode(unsigned short*& target, const unsigned short* targetLimit, const char*& source,
                const char* sourceLimit, int* offsets, signed char flush, UErrorCode& conversionStatus);
  int fromUnicode(char*& target, const char* targetLimit, const unsigned short*& source,
                  const unsigned short* sourceLimit, int* offsets, signed char flush, UErrorCode& conversionStatus);

  // One whole conversion. `*targetLength`: room in, written out, in bytes or, for fromLocalToUnicode, code units. The
  // local code page is UTF-8, whatever this object's is. Any error, too small a target too, raises internal error
  // 0xC000157E (OXR5502) with what failed and the status, and leaves `*targetLength`; nothing is held back.
  void fromUnicode(char* target, int* targetLength, const unsigned short* source, int sourceLength);
  void fromLocalToUnicode(unsigned short* target, int* targetLength, const char* source, int sourceLength);
  void fromUnicodeToLocal(char* target, int* targetLength, const unsigned short* source, int sourceLength);

  // Bytes of the shortest and the longest character, as ICU counts them: 3 at most in UTF-8 and 2 in UTF-16, where a
  // supplementary character takes 4.
  int getMinBytesPerChar() const;
  int getMaxBytesPerChar() const;
  // ICU's kind of converter.
  UConverterType getType() const;
  // ICU's name of the converter. It stays ICU's.
  const char* getName(UErrorCode& nameStatus) const;
  // Forgets what toUnicode() held back.
  void resetToUnicode();

  // Whole strings. toUnicodeString replaces `target` by the text of `length` bytes; after an error by the text up to
  // there. A length of 0 or less is U_ILLEGAL_ARGUMENT_ERROR and leaves `target`.
  // fromUnicodeString: `targetLength` is room in, bytes written out, also after an error. It does nothing when
  // `conversionStatus` tells of an error already; no room is U_ILLEGAL_ARGUMENT_ERROR and leaves `targetLength`.
  void toUnicodeString(KelWstring& target, const char* source, int length, UErrorCode& conversionStatus) const;
  void fromUnicodeString(char* target, int& targetLength, const KelWstring& source, UErrorCode& conversionStatus) const;

 private:
  friend struct oxr::CodePage;  // all that the library does with a converter beyond these members

  icu::LocalUConverterPointer converter;  // lies in cloneBuffer when it fits
  int cloneSize = 1024;                   // bytes of cloneBuffer offered to ICU
  alignas(16) char cloneBuffer[8192];
  const std::array<unsigned short, 256>* byteTable = nullptr;    // the host's; null unless a byte is always a character
  const std::array<unsigned short, 65536>* unitTable = nullptr;  // the way back
  unsigned char form;                                            // the code page's form among those of oxr::CodePage
  signed char minBytesPerChar = 0;
  signed char maxBytesPerChar = 0;
  // ICU may owe units, or bytes, from before or be in the middle of a character: the next conversion is ICU's.
  mutable bool holdsUnitsBack = false;
  mutable bool holdsBytesBack = false;
  objectHeader header{"QVTC", 8240, 8256};
};
