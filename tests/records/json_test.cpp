// Values in JSON lines are held against models in fuzz/records/jsonvalue_check.hpp.

#include "records/json/json.hpp"

#include <gtest/gtest.h>

#include "harness/text.hpp"
#include "kelwstringconvertor.hpp"

namespace oxr::rec::test {
namespace {

using oxr::test::k;

const WorkerInfoPtr kNone;
const std::vector<unsigned short> kNames = {'A', 0};
const unsigned short* const kA = kNames.data();

TEST(JsonHandler, WritesUnknownNamesAndDiscards) {
  JsonHandler json(kNames, {});
  json.startMessage(kNone, kNone);
  json.startElement(k("Ä\"").characters(), kFieldElement, kNone, -1, -1);  // without a value
  json.endElement(nullptr, kNone);
  json.startElement(nullptr, kFieldElement, kNone, -1, -1);
  json.data(PWFData(k("x \t  ")), kNone, -1, -1);
  json.endElement(nullptr, kNone);
  json.endMessage(kNone);
  const std::string first = "{\"Ä\\\"\":null,\"\":\"x \\t\"}\n";
  // Only what was begun last can be discarded.
  json.startMessage(kNone, kNone);
  json.discardUnfinished();
  json.discardUnfinished();
  json.startMessage(kNone, kNone);
  json.endMessage(kNone);
  json.discardUnfinished();
  EXPECT_EQ(json.lines(), first + "{}\n");
  json.discard();
  EXPECT_EQ(json.lines(), first);
}

TEST(JsonHandler, RefusesEventsThatDoNotFit) {
  JsonHandler json(kNames, {});
  const auto refusesElements = [&json] {
    EXPECT_THROW(json.startElement(kA, kGroupElement, kNone, -1, -1), FIHandlerException);
    EXPECT_THROW(json.field(kA, PWFData(STRING), -1), FIHandlerException);
  };
  refusesElements();
  EXPECT_THROW(json.endElement(kA, kNone), FIHandlerException);
  json.startMessage(kNone, kNone);
  EXPECT_THROW(json.endElement(kA, kNone), FIHandlerException);
  EXPECT_THROW(json.data(PWFData(STRING), kNone, -1, -1), FIHandlerException);
  EXPECT_THROW(json.startElement(kA, 9, kNone, -1, -1), FIHandlerException);
  EXPECT_THROW(json.startElement(1, kFieldElement, kNone, -1, -1, -1, -1, -1), FIHandlerException);
  json.startElement(kA, kFieldElement, kNone, -1, -1);
  refusesElements();
  EXPECT_THROW(json.data(PWFData(true), kNone, -1, -1), FIHandlerException);
  EXPECT_THROW(json.endMessage(kNone), FIHandlerException);
  json.startMessage(kNone, kNone);
  json.startElement(kA, kGroupElement, kNone, -1, -1);
  EXPECT_THROW(json.endMessage(kNone), FIHandlerException);
}

// A unit whose low byte alone would be a digit, a point or a minus, at each place of decimals of each length.
TEST(JsonHandler, TakesNoWideUnitForADigit) {
  for (std::size_t size = 1; size <= 18; ++size)
    for (std::size_t at = 0; at < size; ++at)
      for (const unsigned short odd : {0x137, 0x12E, 0x8030, 0x12D}) {
        std::basic_string<unsigned short> units(size, '7');
        units[at] = odd;
        JsonHandler json(kNames, {});
        json.startMessage(kNone, kNone);
        json.field(kA, PWFData(units.c_str(), DECIMAL), -1);
        json.endMessage(kNone);
        EXPECT_EQ(json.lines(), "{\"A\":\"" + oxr::toUtf8(units) + "\"}\n");
      }
}

}  // namespace
}  // namespace oxr::rec::test
