#include "kelconverter.hpp"

#include <unicode/ucnv_err.h>

#include <bit>
#include <map>
#include <mutex>
#include <string>
#include <utility>

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

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using OwnedConverter = std::unique_ptr<UConverter, CloseConverter>;

// Whether each byte is a character, whatever stands before it.
bool isSingleByte(const UConverter* converter) {
  const UConverterType type = ucnv_getType(converter);
  return (type == UCNV_SBCS || type == UCNV_LATIN_1 || type == UCNV_US_ASCII) && ucnv_getMinCharSize(converter) == 1 &&
         ucnv_getMaxCharSize(converter) == 1;
}

// The table of a single-byte code page; null when a byte does not give exactly one code unit.
std::unique_ptr<const KelConverter::SingleByteTable> makeTable(const UConverter* shared) {
  if (!isSingleByte(shared)) return nullptr;
  UErrorCode status = U_ZERO_ERROR;
  const OwnedConverter converter(ucnv_clone(shared, &status));
  ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_SUBSTITUTE, nullptr, nullptr, nullptr, &status);
  if (U_FAILURE(status)) return nullptr;
  ucnv_setFallback(converter.get(), true);
  auto table = std::make_unique<KelConverter::SingleByteTable>();
  for (std::size_t i = 0; i < table->size(); ++i) {
    const char byte = static_cast<char>(i);
    const char* source = &byte;
    char16_t units[4];  // room to see that there is more than one
    char16_t* target = units;
    ucnv_toUnicode(converter.get(), &target, units + 4, &source, source + 1, nullptr, true, &status);
    if (U_FAILURE(status) || target != units + 1) return nullptr;
    (*table)[i] = units[0];
  }
  return table;
}

}  // namespace

KelConverter::KelConverter(UConverter* converter, UErrorCode status) : status_(status), converter_(converter) {
  if (converter_ != nullptr) table_ = makeTable(converter_);
}

KelConverter::~KelConverter() {
  ucnv_close(converter_);
}

// Failures are kept by their status alone: whoever asks for one CCSID after the other must not fill the memory.
class KelConverter::Cache {
 public:
  KelConverter* get(unsigned ccsid, bool bigEndian) {
    const bool orderCounts = findNamedPage(ccsid) != nullptr;
    const std::pair key(ccsid, orderCounts && bigEndian);
    const std::lock_guard lock(mutex_);
    const auto known = pages_.find(key);
    if (known != pages_.end()) return known->second.get();
    UErrorCode status = U_ZERO_ERROR;
    OwnedConverter opened(ucnv_open(pageName(ccsid, bigEndian).c_str(), &status));
    std::unique_ptr<KelConverter>& place = opened != nullptr ? pages_[key] : failures_[status];
    if (place == nullptr) place.reset(new KelConverter(opened.release(), status));
    return place.get();
  }

 private:
  std::mutex mutex_;
  std::map<std::pair<unsigned, bool>, std::unique_ptr<KelConverter>> pages_;
  std::map<UErrorCode, std::unique_ptr<KelConverter>> failures_;
};

KelConverter* KelConverter::createConverter(unsigned ccsid, int byteOrder, KelThreadContext*) {
  static oxr::NeverDestroyed<Cache> cache;
  return cache.get().get(ccsid, isBigEndian(byteOrder));
}
