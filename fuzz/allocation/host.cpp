// The host's stand-in: its log, which never changes what the function does that writes to it; texts; locks.

#include "cpassert.hpp"
#include "dataconv.hpp"
#include "fuzz/allocation/operations.hpp"
#include "harness/converter.hpp"
#include "kelabend.hpp"
#include "kelbuffer.hpp"
#include "kellocale.hpp"
#include "kellog.hpp"
#include "kelmutex.hpp"
#include "kelwstringconvertor.hpp"

namespace oxr::test {
namespace {

const std::string kText = "a text \xE4\xB8\xAD of more characters than stay inside";

const struct {
  const char* name;
  int level;
  std::string (*use)();
} kRows[] = {
    {"toUtf8", 0, [] { return told(toUtf8(u"a text \u4E2D of more characters than stay inside"_k)); }},
    {"fromUtf8", 0, [] { return told(fromUtf8(kText)); }},
    {"toKelWstring", 0,
     [] { return told(KelWstringConvertor::toKelWstring(L"a text \u4E2D of more than some units")); }},
    {"locale", 0,
     [] {
       KelLocale::initialiseExtendedInformation();
       return told(KelLocale::iSymbols);
     }},
    {"cpAssert", 0,
     [] {
       cpAssert(const_cast<char*>("an expression of some length"), const_cast<char*>("a file of some length"), 7);
       return told("returned");
     }},
    {"cpAssert, traced", 4,
     [] {
       cpAssert(const_cast<char*>("an expression of some length"), const_cast<char*>("a file of some length"), 7);
       return told("returned");
     }},
    {"entry and exit", 4,
     [] {
       long handle = KelLog::writeEntry(nullptr, "a function of a name that is long");
       KelLog::writeTrace(nullptr, "a function of a name that is long", kText.c_str(), handle);
       KelLog::writeExit(nullptr, "a function of a name that is long", handle);
       return told("written");
     }},
    {"trace items", 4,
     [] {
       long handle = 0;
       KelLog::FastEntryItem(nullptr, "a function of a name that is long", &handle, true)
           << kText.c_str() << u"a text of some more units"_k << handle << 1.5 << KelLog::endOfInserts;
       KelLog::FastDebugTraceItem(nullptr, "a function of a name that is long", handle, true)
           << kText.c_str() << KelLog::endOfInserts;
       return told("written");
     }},
    {"traced conversion", 4,
     [] {
       DataCnv converter = converterFor(37);
       const unsigned char field[] = {0x12, 0x34, 0x5D};
       return told(converter.PckdDecToDec(field, 3, 2, eSignLeadingIncluded));
     }},
    {"traced conversion that fails", 4,
     [] {
       DataCnv converter = converterFor(37);
       const unsigned char field[] = {0x12, 0x34, 0x56};
       return told(converter.PckdDecToDec(field, 3, 2, eSignLeadingIncluded));
     }},
    {"traced value", 4,
     [] {
       KelLog::iCurrentSubComponent = 1;
       return told(PWFData(u"a text of some more units"_k));
     }},
    {"unlock by another", 0,
     [] {
       KelMutex mutex;
       return told(mutex.unlock());
     }},
    {"system error", 0,
     [] {
       KelAbend::logSystemErrorInternal("a file of a long name", 7, "", "a text of some length", 7, {}, {}, {}, {},
                                        nullptr, false);
       KelAbend::newHandler();
       return told("written");
     }},
    {"lock of an offset", 0,
     [] {
       KelBuffer buffer("bytes", 5);
       const KelBufferPointer window(&buffer, 1, 3, true);
       const std::string text = told(buffer.isLocked(1));
       buffer.unlockOffset(1);
       return text;
     }},
};

}  // namespace

Operations hostOperations() {
  Operations operations;
  for (const auto& row : kRows)
    addBoth(
        operations, row.name, [] { return std::make_shared<int>(); },
        [row](int) {
          KelLog::iEffectiveLogFilter = row.level;
          return row.use();
        });
  return operations;
}

}  // namespace oxr::test
