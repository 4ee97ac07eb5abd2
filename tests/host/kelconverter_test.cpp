#include "kelconverter.hpp"

#include <gtest/gtest.h>

#include <barrier>
#include <string>
#include <thread>
#include <vector>

#include "harness/hex.hpp"

namespace oxr::test {
namespace {

// "A" in the code page, as hexadecimal digits; empty without a table.
std::string letterA(const KelConverter& page) {
  if (page.converter() == nullptr) return "";
  UErrorCode status = U_ZERO_ERROR;
  const icu::LocalUConverterPointer clone(ucnv_clone(page.converter(), &status));
  char bytes[32];
  const int length = ucnv_fromUChars(clone.getAlias(), bytes, 32, u"A", 1, &status);
  return toHex({bytes, static_cast<std::size_t>(length)});
}

// That the tables of the single-byte pages hold nothing wrong is seen where CPUnicodeConverter is compared with ICU.
TEST(KelConverter, OpensCodePagesByNumberAndByteOrder) {
  const struct {
    unsigned ccsid;
    int byteOrder;
    const char* letter;
    bool hasTable;
  } rows[] = {
      {37, 0, "C1", true},           {367, 0, "41", true},     {5488, 0, "41", false},   {13488, -7, "4100", false},
      {17584, 7, "0041", false},     {1200, 0, "4100", false}, {1202, 1, "4100", false}, {1204, 1, "FEFF0041", false},
      {1205, -1, "FFFE4100", false}, {99999, 0, "", false},
  };
  for (const auto& [ccsid, byteOrder, letter, hasTable] : rows) {
    SCOPED_TRACE(ccsid);
    const KelConverter* const page = KelConverter::createConverter(ccsid, byteOrder, nullptr);
    EXPECT_EQ(letterA(*page), letter);
    EXPECT_TRUE((page->singleByteTable() != nullptr) == hasTable && (page->unitTable() != nullptr) == hasTable);
    EXPECT_EQ(page->status() == U_FILE_ACCESS_ERROR, page->converter() == nullptr);
  }
  const KelConverter* const latin = KelConverter::createConverter(37, 0, nullptr);
  for (std::size_t byte = 0; byte < 256; ++byte)  // the tables lack nothing: each byte has a character of its own
    EXPECT_EQ((*latin->unitTable())[(*latin->singleByteTable())[byte]], byte);
  EXPECT_EQ(KelConverter::createConverter(37, -1, nullptr), KelConverter::createConverter(37, 1, nullptr));
}

// The numbers of all code pages that ICU knows by one.
std::vector<unsigned> allPages() {
  std::vector<unsigned> pages;
  for (int i = 0; i < ucnv_countAvailable(); ++i) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::LocalUConverterPointer page(ucnv_open(ucnv_getAvailableName(i), &status));
    const int ccsid = U_SUCCESS(status) ? ucnv_getCCSID(page.getAlias(), &status) : 0;
    if (ccsid > 0) pages.push_back(static_cast<unsigned>(ccsid));
  }
  return pages;
}

// Each thread begins somewhere else, so that all pages are made at once.
TEST(KelConverterThreads, MakeAllCodePagesAtOnce) {
  const std::vector<unsigned> pages = allPages();
  ASSERT_GT(pages.size(), 100U);
  constexpr std::size_t kThreads = 64;
  std::vector<std::vector<const KelConverter*>> made(kThreads, std::vector<const KelConverter*>(pages.size()));
  std::barrier start(kThreads);
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      start.arrive_and_wait();
      for (std::size_t i = 0; i < pages.size(); ++i) {
        const std::size_t at = (i + t * pages.size() / kThreads) % pages.size();
        made[t][at] = KelConverter::createConverter(pages[at], 0, nullptr);
      }
    });
  for (std::thread& thread : threads)
    thread.join();
  for (const auto& each : made)
    EXPECT_EQ(each, made.front());
  for (std::size_t i = 0; i < pages.size(); ++i)
    EXPECT_EQ(letterA(*made.front()[i]), letterA(*KelConverter::createConverter(pages[i], 0, nullptr))) << pages[i];
}

}  // namespace
}  // namespace oxr::test
