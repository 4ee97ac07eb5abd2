#include "kelconverter.hpp"

#include <unicode/ucnv_err.h>
#include <unicode/uniset.h>
#include <unicode/uset.h>

#include <bit>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "heldoverforks.hpp"
#include "kelmemory.hpp"
#include "kelneverdestroyed.hpp"

namespace {

// ICU's UTF-16 with a mark writes the order of this machine and reads both.
constexpr const char* kMarkedLittleEndian =
    std::endian::native == std::endian::little ? "UTF-16" : "UTF-16LE,version=1";
constexpr const char* kMarkedBigEndian = "UTF-16,version=2";

// CCSIDs whose converter depends on the byte order, and one that ICU keeps under another name. ICU knows all others by
// their number. 1204 and 1205 write a byte-order mark.
struct NamedPage {
  unsigned ccsid;
  const char* littleEndian;
  const char* bigEndian;
};
constexpr NamedPage kNamedPages[] = {
    {1200, "UTF-16LE", "UTF-16BE"},
    {1204, kMarkedLittleEndian, kMarkedBigEndian},
    {1205, kMarkedLittleEndian, kMarkedBigEndian},
    {5488, "gb18030", "gb18030"},
    {13488, "UTF-16LE", "UTF-16BE"},
    {17584, "UTF-16LE", "UTF-16BE"},
};

const NamedPage* findNamedPage(unsigned ccsid) {
  for (const NamedPage& page : kNamedPages)
    if (page.ccsid == ccsid) return &page;
  return nullptr;
}

bool isBigEndian(int byteOrder) {
  return byteOrder != 0 ? byteOrder > 0 : std::endian::native == std::endian::big;
}

// ICU's name of a code page.
std::string pageName(unsigned ccsid, bool bigEndian) {
  const NamedPage* const page = findNamedPage(ccsid);
  if (page == nullptr) return "ibm-" + std::to_string(ccsid);
  return bigEndian ? page->bigEndian : page->littleEndian;
}

// Whether each byte is a character, whatever stands before it.
bool isSingleByte(const UConverter* converter) {
  const UConverterType type = ucnv_getType(converter);
  return (type == UCNV_SBCS || type == UCNV_LATIN_1 || type == UCNV_US_ASCII) && ucnv_getMinCharSize(converter) == 1 &&
         ucnv_getMaxCharSize(converter) == 1;
}

// A converter of our own with the settings that the tables are promised for; null when ICU cannot make it.
icu::LocalUConverterPointer cloneForTables(const UConverter* shared) {
  UErrorCode status = U_ZERO_ERROR;
  icu::LocalUConverterPointer converter(ucnv_clone(shared, &status));
  ucnv_setToUCallBack(converter.getAlias(), UCNV_TO_U_CALLBACK_SUBSTITUTE, nullptr, nullptr, nullptr, &status);
  ucnv_setFromUCallBack(converter.getAlias(), UCNV_FROM_U_CALLBACK_SUBSTITUTE, nullptr, nullptr, nullptr, &status);
  oxr::requireMemory(status);
  if (U_FAILURE(status)) return icu::LocalUConverterPointer();
  ucnv_setFallback(converter.getAlias(), true);
  return converter;
}

// The table of a single-byte code page; null when a byte does not give exactly one code unit.
std::unique_ptr<const KelConverter::SingleByteTable> makeTable(UConverter* converter) {
  auto table = std::make_unique<KelConverter::SingleByteTable>();
  for (std::size_t i = 0; i < table->size(); ++i) {
    const char byte = static_cast<char>(i);
    const char* source = &byte;
    char16_t units[4];  // room to see that there is more than one
    char16_t* target = units;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_toUnicode(converter, &target, units + 4, &source, source + 1, nullptr, true, &status);
    if (U_FAILURE(status) || target != units + 1) return nullptr;
    (*table)[i] = units[0];
  }
  return table;
}

// The byte that a code unit becomes in any text, or kNoByte. Without a flush the converter keeps a unit that may be the
// beginning of more, such as a leading surrogate.
unsigned short byteOf(UConverter* converter, char16_t unit) {
  char bytes[16];  // room to see that there is more than one
  char* target = bytes;
  const char16_t* source = &unit;
  UErrorCode status = U_ZERO_ERROR;
  ucnv_fromUnicode(converter, &target, bytes + sizeof bytes, &source, source + 1, nullptr, false, &status);
  const bool isWhole = target == bytes + 1 && ucnv_fromUCountPending(converter, &status) == 0 && U_SUCCESS(status);
  ucnv_resetFromUnicode(converter);
  return isWhole ? static_cast<unsigned char>(bytes[0]) : KelConverter::kNoByte;
}

// The way back. Only the characters of the code page are asked for, a few hundred out of all code units.
std::unique_ptr<const KelConverter::UnitTable> makeUnitTable(UConverter* converter) {
  icu::UnicodeSet characters;
  UErrorCode status = U_ZERO_ERROR;
  ucnv_getUnicodeSet(converter, characters.toUSet(), UCNV_ROUNDTRIP_AND_FALLBACK_SET, &status);
  characters.retain(0, 0xFFFF).remove(0xD800, 0xDFFF);
  oxr::requireMemory(status);
  if (characters.isBogus()) throw std::bad_alloc();
  auto table = std::make_unique<KelConverter::UnitTable>();
  table->fill(KelConverter::kNoByte);
  for (int i = 0; U_SUCCESS(status) && i < characters.getRangeCount(); ++i)
    for (UChar32 unit = characters.getRangeStart(i); unit <= characters.getRangeEnd(i); ++unit)
      (*table)[static_cast<std::size_t>(unit)] = byteOf(converter, static_cast<char16_t>(unit));
  return table;
}

// ICU tells of a want of memory as of a table that is not there, and will ever after where it had none for its list of
// names.
icu::LocalUConverterPointer openPage(const std::string& name, UErrorCode& status) {
  icu::LocalUConverterPointer opened(ucnv_open(name.c_str(), &status));
  if (U_SUCCESS(status)) return opened;
  oxr::requireMemory(status);
  oxr::requireMemory();
  status = U_ZERO_ERROR;
  opened.adoptInstead(ucnv_open(name.c_str(), &status));
  oxr::requireMemory(status);
  UErrorCode ofNames = U_ZERO_ERROR;
  if (U_FAILURE(status) && ucnv_countAliases("US-ASCII", &ofNames) == 0) throw std::bad_alloc();
  return opened;
}

}  // namespace

KelConverter::KelConverter(icu::LocalUConverterPointer converter, UErrorCode status)
    : status_(status), converter_(std::move(converter)) {
  if (converter_.isNull() || !isSingleByte(converter_.getAlias())) return;
  const icu::LocalUConverterPointer ours = cloneForTables(converter_.getAlias());
  if (ours.isNull()) return;
  table_ = makeTable(ours.getAlias());
  if (table_ != nullptr) unitTable_ = makeUnitTable(ours.getAlias());
}

KelConverter::~KelConverter() = default;

namespace {

// Of the cache. A child that forks finds it free.
constinit std::mutex cacheMutex;
[[gnu::constructor(oxr::kNotedFirst)]] void holdCacheOverForks() {
  oxr::holdOverForks<cacheMutex>();
}

}  // namespace

// Failures are kept by their status alone: a caller that asks for many unknown CCSIDs must not fill the memory.
class KelConverter::Cache {
 public:
  // The lock is held.
  KelConverter* get(unsigned ccsid, bool bigEndian) {
    const bool orderCounts = findNamedPage(ccsid) != nullptr;
    const std::pair key(ccsid, orderCounts && bigEndian);
    const auto known = pages_.find(key);
    if (known != pages_.end()) return known->second.get();
    UErrorCode status = U_ZERO_ERROR;
    icu::LocalUConverterPointer opened = openPage(pageName(ccsid, bigEndian), status);
    const bool isPage = opened.isValid();
    // Made before it has a place: when there is no memory, the next call must not find an empty one.
    std::unique_ptr<KelConverter> made(new KelConverter(std::move(opened), status));
    return (isPage ? pages_.emplace(key, std::move(made)).first->second
                   : failures_.emplace(status, std::move(made)).first->second)
        .get();
  }

 private:
  std::map<std::pair<unsigned, bool>, std::unique_ptr<KelConverter>> pages_;
  std::map<UErrorCode, std::unique_ptr<KelConverter>> failures_;
};

KelConverter* KelConverter::createConverter(unsigned ccsid, int byteOrder, KelThreadContext*) {
  const std::lock_guard lock(cacheMutex);
  static oxr::NeverDestroyed<Cache> cache;
  return cache.get().get(ccsid, isBigEndian(byteOrder));
}
