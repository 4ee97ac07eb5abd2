#include "kelconverter.hpp"

#include <gtest/gtest.h>

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
      {37, 0, "C1", true},
      {273, -1, "C1", true},
      {1140, 1, "C1", true},
      {819, 0, "41", true},
      {1252, 0, "41", true},
      {367, 0, "41", true},
      {1208, 0, "41", false},
      {943, 0, "41", false},
      {930, 0, "C1", false},
      {1388, 0, "C1", false},
      {5488, 0, "41", false},
      {1200, -1, "4100", false},
      {1200, 1, "0041", false},
      {13488, -7, "4100", false},
      {17584, 7, "0041", false},
      {1200, 0, "4100", false},
      {1202, 1, "4100", false},
      {1204, 1, "FEFF0041", false},
      {1205, -1, "FFFE4100", false},
      {1232, 0, "00000041", false},
      {99999, 0, "", false},
      {4294967295u, 0, "", false},
      {0, 0, "", false},
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
  EXPECT_NE(KelConverter::createConverter(1200, -1, nullptr), KelConverter::createConverter(1200, 1, nullptr));
}

TEST(KelConverterThreads, AllThreadsShareOneConverterAPage) {
  std::vector<std::thread> threads;
  std::vector<const KelConverter*> pages(4);
  for (const KelConverter*& page : pages)
    threads.emplace_back([&page] {
      for (unsigned round = 0; round < 50; ++round) {
        for (const unsigned ccsid : {1141u, 1208u, 99999u + round, 1148u})
          page = KelConverter::createConverter(ccsid, 0, nullptr);
        ASSERT_EQ((*page->singleByteTable())[0xF0], u'0');
        ASSERT_EQ(letterA(*page), "C1");
      }
    });
  for (std::thread& thread : threads)
    thread.join();
  EXPECT_EQ(std::vector<const KelConverter*>(4, pages[0]), pages);
}

}  // namespace
}  // namespace oxr::test
