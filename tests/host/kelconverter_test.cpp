#include "kelconverter.hpp"

#include <gtest/gtest.h>

#include <string>

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

}  // namespace
}  // namespace oxr::test
