#pragma once

#include <unicode/ucnv.h>

#include <array>
#include <memory>

#include "kelexport.hpp"
#include "kelthreadcontext.hpp"

// A code page's ICU converter as the host shares it with all threads.
//
// Nobody converts with the shared converter: it is cloned, and a clone serves one thread. The objects are kept in one
// cache and live to the end of the process.
//
// Example:
//   const KelConverter* page = KelConverter::createConverter(37, 0, nullptr);
//   UConverter* mine = ucnv_clone(page->converter(), &status);  // a null converter: status() why
class KELHOST_EXPORT KelConverter {
 public:
  // Holds the code unit of each byte of a single-byte code page.
  using SingleByteTable = std::array<unsigned short, 256>;
  // Holds the byte of each code unit of a single-byte code page; kNoByte for a unit that has none by itself.
  using UnitTable = std::array<unsigned short, 65536>;
  static constexpr unsigned short kNoByte = 0x100;  // no byte is so great

  // Gives the converter of the code page `ccsid`, which is never null and never to be deleted. `byteOrder` counts for
  // the CCSIDs of UTF-16 only: below 0 is little-endian, above 0 big-endian, 0 the order of this machine.
  // A code page that has no table gives an object with a status above zero and without a converter.
  static KelConverter* createConverter(unsigned ccsid, int byteOrder, KelThreadContext* context);

  KelConverter(const KelConverter&) = delete;
  KelConverter& operator=(const KelConverter&) = delete;
  ~KelConverter();

  // ICU's answer to the opening of the converter: U_ZERO_ERROR or a warning (below zero), else the failure.
  UErrorCode status() const { return status_; }
  // The shared converter, with ICU's default settings; null when it could not be opened.
  UConverter* converter() const { return converter_.getAlias(); }
  // What a converter with the substitute callback and fallbacks makes of each byte by itself, which for these code
  // pages is what it makes of it in any text. Null for a code page where a byte is not always one character.
  const SingleByteTable* singleByteTable() const { return table_.get(); }
  // The way back: what such a converter writes for each code unit that the code page has, fallbacks among them,
  // whatever stands around it. Not held are surrogates, units that the code page lacks (ICU substitutes or leaves them
  // out) and units that may begin a character of several. Null exactly when singleByteTable() is.
  const UnitTable* unitTable() const { return unitTable_.get(); }

 private:
  class Cache;

  KelConverter(icu::LocalUConverterPointer converter, UErrorCode status);

  UErrorCode status_;
  icu::LocalUConverterPointer converter_;
  std::unique_ptr<const SingleByteTable> table_;
  std::unique_ptr<const UnitTable> unitTable_;
};
