#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "harness/converter.hpp"
#include "harness/headers.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"
#include "kelmutex.hpp"

namespace oxr::test {
namespace {

TEST(Settings, ObjectsCarryTheirHeaders) {
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

// The owner is set with setOwner alone.
TEST(Settings, OwnerArgumentIsIgnored) {
  const KelNamedLogSource source(u"type"_k, u"name"_k, u"label"_k);
  DataCnv converter(37, eEndianBig, eEndianBig, eFloatIeeeBig, 53, nullptr, false, nullptr, 0, true, 12, false,
                    eMessageStandardDefault, &source);
  EXPECT_EQ(converter.owner(), nullptr);
  converter.setOwner(&source);
  EXPECT_EQ(converter.logName(), u"name"_k);
}

TEST(Settings, TraceShowsTheLifeOfAConverter) {
  const std::string lines = tracedAt(4, [] {
    DataCnv converter = converterFor(37);
    converter.getDecimalFormatter();
    converter.setDateTimeProperties(53, nullptr, nullptr, 0, true, false);  // untraced
  });
  EXPECT_EQ(lines,
            "> DataCnv::DataCnv\n< DataCnv::DataCnv\n> DataCnv::~DataCnv\n"
            "DataCnv::~DataCnv: Deleting decFormatter\n< DataCnv::~DataCnv\n");
}

}  // namespace
}  // namespace oxr::test
