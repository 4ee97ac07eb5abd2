#pragma once

#include <unicode/ucnv.h>

#include <string>

#include "kelheader.hpp"
#include "kelwstring.hpp"
#include "oxrexport.hpp"
#include "pwftypes.hpp"

// What converters have in common: a status and a name for messages. The name opens nothing.
class OXR_EXPORT CPBaseUnicodeConverter {
 public:
  CPBaseUnicodeConverter(int ccsid, EEndian endian);

 protected:
  ~CPBaseUnicodeConverter() = default;

  objectHeader baseHeader{"QVTB", 0, 8240};
  UErrorCode status = U_ZERO_ERROR;
  std::string name;
};

// The one way from bytes in a code page, named by its CCSID, to UTF-16 and back.
//
// Each object owns a private clone of the host's shared ICU converter. An unmappable byte becomes ICU's substitution
// character and an unmappable character the code page's substitution byte; fallback mappings are used both ways. Only
// input that ends inside a character and a target that is too small come out as errors.
// An object holds conversion state and serves one thread at a time.
class OXR_EXPORT CPUnicodeConverter : public CPBaseUnicodeConverter {
 public:
  // True for 1200, 13488 and 17584.
  static bool IsUnicode(int ccsid);

  // `endian` counts for the Unicode CCSIDs. KelRecoverableException: 0xC0000854 (OXR2132) when the code page has no
  // table, 0xC0000852 (OXR2130) when ICU cannot make or set up the converter.
  CPUnicodeConverter(int ccsid, EEndian endian);
  CPUnicodeConverter(const CPUnicodeConverter&) = delete;
  CPUnicodeConverter& operator=(const CPUnicodeConverter&) = delete;
  ~CPUnicodeConverter();

  // ucnv_toUnicode and ucnv_fromUnicode, unchanged: the pointers move, `conversionStatus` is ICU's.
  void toUnicode(unsigned short*& target, const unsigned short* targetLimit, const char*& source,
                 const char* sourceLimit, int* offsets, signed char flush, UErrorCode& conversionStatus);
  void fromUnicode(char*& target, const char* targetLimit, const unsigned short*& source,
                   const unsigned short* sourceLimit, int* offsets, signed char flush, UErrorCode& conversionStatus);

  // One whole conversion. `*targetLength`: room in, written out, in bytes or, for fromLocalToUnicode, code units. The
  // local code page is UTF-8, whatever this object's is. Any error, too small a target too, raises internal error
  // 0xC000157E (OXR5502) and leaves `*targetLength`.
  void fromUnicode(char* target, int* targetLength, const unsigned short* source, int sourceLength);
  void fromLocalToUnicode(unsigned short* target, int* targetLength, const char* source, int sourceLength);
  void fromUnicodeToLocal(char* target, int* targetLength, const unsigned short* source, int sourceLength);

  int getMinBytesPerChar() const;
  int getMaxBytesPerChar() const;
  UConverterType getType() const;
  const char* getName(UErrorCode& nameStatus) const;
  void resetToUnicode();

  // Whole strings. toUnicodeString replaces `target`; a length of 0 or less is U_ILLEGAL_ARGUMENT_ERROR and leaves it.
  // fromUnicodeString: `targetLength` is room in, bytes out; it adds to the status that it is given.
  void toUnicodeString(KelWstring& target, const char* source, int length, UErrorCode& conversionStatus) const;
  void fromUnicodeString(char* target, int& targetLength, const KelWstring& source, UErrorCode& conversionStatus) const;

 private:
  UConverter* converter = nullptr;  // lies in cloneBuffer when it fits
  int cloneSize = 1024;             // bytes of cloneBuffer offered to ICU
  alignas(16) char cloneBuffer[8192];
  objectHeader header{"QVTC", 8240, 8256};
};
