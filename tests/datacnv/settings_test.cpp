#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "dataconv.hpp"
#include "harness/converter.hpp"
#include "harness/failures.hpp"
#include "harness/headers.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"
#include "kelmutex.hpp"

namespace oxr::test {
namespace {

TEST(Frame, ObjectsCarryTheirHeaders) {
  const auto header = [](const char* tag) {
    return headerOfA<DataCnv>(tag, 37, eEndianBig, eEndianBig, eFloatIeeeBig, 53, nullptr, false, nullptr, 0, true,
                              char{12}, false, eMessageStandardDefault, nullptr);
  };
  EXPECT_EQ(header("QVDC"), "QVDC 32 320 / 0OXR QVDC 32 320");
  EXPECT_EQ(header("HSOL"), "HSOL 8 32 / 0OXR HSOL 8 32");
  EXPECT_EQ(header("HSMX"), "HSMX 8 144 / 0OXR HSMX 8 144");
  KelMutex mutex;
  EXPECT_EQ(headerOfA<KelMutex::Mutex>("HSMG", std::ref(mutex)), "HSMG 0 32 / 0OXR HSMG 0 32");
}

TEST(Frame, Statics) {
  EXPECT_EQ(DataCnv::UHEX_NUMBERS, u"0123456789abcdefABCDEF"_k);
  EXPECT_EQ(DataCnv::US_PLUS + DataCnv::US_MINUS + DataCnv::US_DECIMAL, u"+-."_k);
  EXPECT_EQ(DataCnv::TIMESTAMP_PATTERN, DataCnv::DATE_PATTERN + u" "_k + DataCnv::TIME_PATTERN);
  EXPECT_EQ(DataCnv::TIMESTAMP_PATTERN + DataCnv::MILLISEC_PATTERN, u"yyyy-MM-dd HH:mm:ss.SSS"_k);
}

// The owner is set with setOwner alone.
TEST(Frame, OwnerArgumentIsIgnored) {
  const KelNamedLogSource source(u"type"_k, u"name"_k, u"label"_k);
  DataCnv converter(37, eEndianBig, eEndianBig, eFloatIeeeBig, 53, nullptr, false, nullptr, 0, true, 12, false,
                    eMessageStandardDefault, &source);
  EXPECT_EQ(converter.owner(), nullptr);
  converter.setOwner(&source);
  EXPECT_EQ(converter.logName(), u"name"_k);
}

TEST(Frame, TracesItsLifeAndThePackedMembers) {
  const std::string lines = tracedAt(4, [] {
    DataCnv converter = converterFor(37);
    converter.getDecimalFormatter();
    const unsigned char field[] = {0x1C};
    converter.PckdDecToDec(field, 1, 0, eSignNone);
    EXPECT_EQ(raisedBy([&] { converter.PckdDecToDec(nullptr, 1, 0, eSignNone); }).number & 0xFFFF, 5502);
    converter.setDateTimeProperties(53, nullptr, nullptr, 0, true, false);  // untraced
  });
  EXPECT_EQ(lines.substr(0, lines.find("Throwing")),
            "> DataCnv::DataCnv\n< DataCnv::DataCnv\n"
            "> DataCnv::PckdDecToDec\n> DataCnv::ValidatePackedDecimal\n< DataCnv::ValidatePackedDecimal\n"
            "< DataCnv::PckdDecToDec\n> DataCnv::PckdDecToDec\nDataCnv::PckdDecToDec: ");
  EXPECT_EQ(lines.substr(lines.find("> DataCnv::~DataCnv")),
            "> DataCnv::~DataCnv\nDataCnv::~DataCnv: Deleting decFormatter\n< DataCnv::~DataCnv\n");
}

}  // namespace
}  // namespace oxr::test
