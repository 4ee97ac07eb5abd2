#include "kelconverter.hpp"

#include <gtest/gtest.h>
#include <unicode/ucnv_err.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace oxr::test {
namespace {

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using OwnedConverter = std::unique_ptr<UConverter, CloseConverter>;

// A clone set up as the library's converters are.
OwnedConverter cloneOf(const KelConverter& page) {
  UErrorCode status = U_ZERO_ERROR;
  OwnedConverter clone(ucnv_clone(page.converter(), &status));
  ucnv_setToUCallBack(clone.get(), UCNV_TO_U_CALLBACK_SUBSTITUTE, nullptr, nullptr, nullptr, &status);
  ucnv_setFallback(clone.get(), true);
  EXPECT_TRUE(U_SUCCESS(status));
  return clone;
}

// "A" in the code page, as hexadecimal digits; "-" without a table.
std::string letterA(unsigned ccsid, int byteOrder) {
  const KelConverter* const page = KelConverter::createConverter(ccsid, byteOrder, nullptr);
  if (page->converter() == nullptr) return "-";
  UErrorCode status = U_ZERO_ERROR;
  char bytes[32];
  const int length = ucnv_fromUChars(cloneOf(*page).get(), bytes, 32, u"A", 1, &status);
  std::string digits;
  for (int i = 0; i < length; ++i) {
    char pair[3];
    std::snprintf(pair, sizeof pair, "%02x", static_cast<unsigned>(static_cast<unsigned char>(bytes[i])));
    digits += pair;
  }
  return digits;
}

TEST(KelConverter, OpensCodePagesByNumberAndByteOrder) {
  const struct {
    unsigned ccsid;
    int byteOrder;
    const char* letter;
    bool hasTable;
  } rows[] = {
      {37, 0, "c1", true},          {273, -1, "c1", true},         {285, 1, "c1", true},
      {500, 0, "c1", true},         {1047, 0, "c1", true},         {1140, 0, "c1", true},
      {819, 0, "41", true},         {1252, 0, "41", true},         {367, 0, "41", true},
      {1208, 0, "41", false},       {932, 0, "41", false},         {943, 0, "41", false},
      {930, 0, "c1", false},        {939, 0, "c1", false},         {1388, 0, "c1", false},
      {5488, 0, "41", false},       {1200, -1, "4100", false},     {1200, 1, "0041", false},
      {13488, -7, "4100", false},   {17584, 7, "0041", false},     {1202, 1, "4100", false},
      {1204, 1, "feff0041", false}, {1205, -1, "fffe4100", false}, {1232, 0, "00000041", false},
      {1234, 0, "41000000", false}, {99999, 0, "-", false},        {4294967295u, 0, "-", false},
      {0, 0, "-", false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.ccsid);
    const KelConverter* const page = KelConverter::createConverter(row.ccsid, row.byteOrder, nullptr);
    ASSERT_NE(page, nullptr);
    EXPECT_EQ(letterA(row.ccsid, row.byteOrder), row.letter);
    EXPECT_EQ(page->singleByteTable() != nullptr, row.hasTable);
    EXPECT_EQ(page->status() == U_FILE_ACCESS_ERROR, page->converter() == nullptr);
  }
  EXPECT_EQ(KelConverter::createConverter(37, -1, nullptr), KelConverter::createConverter(37, 1, nullptr));
  EXPECT_NE(KelConverter::createConverter(1200, -1, nullptr), KelConverter::createConverter(1200, 1, nullptr));
}

// The table must give what ICU gives for any text, not only for single bytes: each pair of bytes is looked at.
TEST(KelConverter, TableOfASingleBytePageEqualsIcusConversion) {
  std::string pairs;
  for (int first = 0; first < 256; ++first)
    for (int second = 0; second < 256; ++second)
      pairs += {static_cast<char>(first), static_cast<char>(second)};
  std::vector<char16_t> units(pairs.size());
  for (const unsigned ccsid : {37u, 273u, 285u, 500u, 1047u, 1140u, 819u, 1252u, 367u, 437u, 424u, 874u}) {
    SCOPED_TRACE(ccsid);
    const KelConverter* const page = KelConverter::createConverter(ccsid, 0, nullptr);
    ASSERT_NE(page->singleByteTable(), nullptr);
    UErrorCode status = U_ZERO_ERROR;
    const int count = ucnv_toUChars(cloneOf(*page).get(), units.data(), static_cast<int>(units.size()), pairs.data(),
                                    static_cast<int>(pairs.size()), &status);
    ASSERT_EQ(static_cast<std::size_t>(count), pairs.size());
    for (std::size_t i = 0; i < pairs.size(); ++i)
      ASSERT_EQ(units[i], (*page->singleByteTable())[static_cast<unsigned char>(pairs[i])]) << i;
  }
}

// The way back holds exactly what the code page has: each character of a byte, and no unit that ICU substitutes, leaves
// out or waits behind.
TEST(KelConverter, UnitTableOfASingleBytePageEqualsIcusConversion) {
  for (const unsigned ccsid : {37u, 500u, 1047u, 1140u, 819u, 1252u, 367u, 437u, 424u, 850u}) {
    SCOPED_TRACE(ccsid);
    const KelConverter* const page = KelConverter::createConverter(ccsid, 0, nullptr);
    ASSERT_NE(page->unitTable(), nullptr);
    const OwnedConverter clone = cloneOf(*page);
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setFromUCallBack(clone.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
      const char16_t text[] = {static_cast<char16_t>(unit), u'A'};
      char bytes[8] = {};
      status = U_ZERO_ERROR;
      const int length = ucnv_fromUChars(clone.get(), bytes, sizeof bytes, text, 2, &status);
      const bool has = U_SUCCESS(status) && length == 2;
      ASSERT_EQ((*page->unitTable())[unit], has ? static_cast<unsigned char>(bytes[0]) : KelConverter::kNoByte) << unit;
    }
  }
}

TEST(KelConverterThreads, AllThreadsShareOneConverterAPage) {
  std::vector<std::thread> threads;
  std::vector<const KelConverter*> pages(4);
  for (std::size_t i = 0; i < pages.size(); ++i)
    threads.emplace_back([&page = pages[i]] {
      for (unsigned round = 0; round < 50; ++round) {
        for (const unsigned ccsid : {1141u, 1208u, 99999u + round})
          page = KelConverter::createConverter(ccsid, 0, nullptr);
        page = KelConverter::createConverter(1148, 0, nullptr);
        ASSERT_EQ((*page->singleByteTable())[0xF0], u'0');
        char16_t unit = 0;
        UErrorCode status = U_ZERO_ERROR;
        ucnv_toUChars(cloneOf(*page).get(), &unit, 1, "\xF1", 1, &status);
        ASSERT_EQ(unit, u'1');
      }
    });
  for (std::thread& thread : threads)
    thread.join();
  for (const KelConverter* page : pages)
    EXPECT_EQ(page, pages[0]);
}

}  // namespace
}  // namespace oxr::test
