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

PWFData read(const KelWstring& text) {
  return CPBase64Converter::binFromBase64(text.characters(), static_cast<int>(text.length()));
}
std::string bytesOf(const PWFData& value) {
  int length = -1;
  const auto* const bytes = static_cast<const char*>(value.getBinaryValue(length));
  return value.isNull() ? "null" : std::string(bytes, static_cast<std::size_t>(length));
}
void append(KelWstring& text, const std::string& bytes) {
  CPBase64Converter::binToBase64(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()),
                                 text);
}

TEST(CPBase64Converter, ReadsAndWritesText) {
  // The bytes, their text, and what else reads as the same.
  for (const Row& row : rows("'' '' _ \r\n_-.; A QQ== Q_Q_=_= QQ=A QQ==QUJD QQ==Q; AB QUI= QUI=QQ QU\nI=;"
                             "ABC QUJD Q\r\nU_J.D QUJD-; ABCA QUJDQQ== QUJD\r\nQQ==\r\n; k\xC3\xBF> a8O/Pg==")) {
    KelWstring text = u"[]"_k;
    append(text, row[0]);
    EXPECT_EQ(text, k("[]" + row[1]));
    for (std::size_t form = 1; form < row.size(); ++form)
      EXPECT_EQ(bytesOf(read(k(row[form]))), row[0]) << row[form];
  }
  EXPECT_EQ(bytesOf(read(u"Q=QQ"_k)), std::string("@\x04\x10"));
  EXPECT_EQ(bytesOf(CPBase64Converter::binFromBase64(nullptr, 0)), "");
  EXPECT_EQ(bytesOf(CPBase64Converter::binFromBase64(u"QUJD"_k.characters(), -4)), "");
}

TEST(CPBase64Converter, AppendsToItsTargetAlone) {
  KelWstring text = u"a text of more than sixteen units: "_k;
  const KelWstring copy = text;
  append(text, "");
  CPBase64Converter::binToBase64(nullptr, -1, text);
  EXPECT_EQ(text.characters(), copy.characters());
  const std::string bytes(1000, '\x5A');
  append(text, bytes);
  append(text, "Z");
  EXPECT_EQ(text.substr(0, 35) + text.substr(35 + 1336, 9), copy + u"Wg=="_k);
  EXPECT_EQ(bytesOf(read(text.substr(35, 9999))), bytes);
  EXPECT_EQ(copy, u"a text of more than sixteen units: "_k);
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
