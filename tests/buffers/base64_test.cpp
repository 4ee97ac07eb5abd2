#include "base64.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "harness/failures.hpp"
#include "harness/rows.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"

namespace oxr::test {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string read(const KelWstring& text) {
  const PWFData value = CPBase64Converter::binFromBase64(text.characters(), static_cast<int>(text.length()));
  int length = -1;
  const auto* const bytes = static_cast<const char*>(value.getBinaryValue(length));
  return value.isNull() ? "null" : std::string(bytes, static_cast<std::size_t>(length));
}

TEST(CPBase64Converter, ReadsAndWritesText) {
  // The bytes, their text, and what else reads as the same.
  for (const Row& row : rows("'' '' _ \r\n_-.; A QQ== Q_Q_=_= QQ=A QQ==QUJD QQ==Q; AB QUI= QUI=QQ QU\nI=;"
                             "ABC QUJD Q\r\nU_J.D QUJD-; ABCA QUJDQQ== QUJD\r\nQQ==\r\n; k\xC3\xBF> a8O/Pg==")) {
    const KelWstring start = u"what is there, and shared"_k;
    KelWstring text = start;
    CPBase64Converter::binToBase64(nullptr, -1, text);
    CPBase64Converter::binToBase64(reinterpret_cast<const unsigned char*>(row[0].data()),
                                   static_cast<int>(row[0].size()), text);
    EXPECT_EQ(text, k(toUtf8(start) + row[1]));
    EXPECT_EQ(start, u"what is there, and shared"_k);
    for (std::size_t form = 1; form < row.size(); ++form)
      EXPECT_EQ(read(k(row[form])), row[0]) << row[form];
  }
  EXPECT_EQ(read(u"Q=QQ"_k), std::string("@\x04\x10"));
  EXPECT_EQ(CPBase64Converter::binFromBase64(u"QUJD"_k.characters(), -4).getDataLength(), 0);
}

TEST(CPBase64Converter, RefusesACutGroup) {
  for (const char* text : {"Q", "QU", "QUJ", "QUJDQ", "QUJD Q=\n", "=", "Q=Q"})
    EXPECT_EQ(raisedBy([&] { read(k(text)); }), conversionFailure(5502, {"Input data incomplete"})) << text;
  const std::string traced = tracedAt(3, [] { raisedBy([] { read(u"QUJ"_k); }); });
  EXPECT_EQ(traced.find("CPBase64Converter::binFromBase64: Throwing exception|src/cpi/bsutils/base64|"), 0u);
  EXPECT_TRUE(traced.ends_with("|CP_INTERNAL_ERROR|Input data incomplete\n")) << traced;
}

TEST(CPBase64Converter, ShowsItsTables) {
  CPBase64Converter::initEncodeTable();
  CPBase64Converter::initDecodeTable();
  EXPECT_TRUE(std::equal(kAlphabet, kAlphabet + 64, CPBase64Converter::encodeTable.begin()));
  const auto& values = CPBase64Converter::decodeTable;
  for (unsigned value = 0; value < 64; ++value)
    EXPECT_EQ(values[static_cast<unsigned char>(kAlphabet[value])], value);
  EXPECT_TRUE(values['='] == 0 && std::count(values.begin(), values.end(), 128) == 0x10000 - 65);
}

}  // namespace
}  // namespace oxr::test
