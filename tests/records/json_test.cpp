// Values in JSON lines are held against models in fuzz/records/jsonvalue_check.hpp.

#include "records/json/json.hpp"

#include <gtest/gtest.h>

#include "harness/text.hpp"

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
  json.startMessage(kNone, kNone);
  EXPECT_THROW(json.endElement(kA, kNone), FIHandlerException);
  EXPECT_THROW(json.data(PWFData(STRING), kNone, -1, -1), FIHandlerException);
  EXPECT_THROW(json.startElement(kA, 9, kNone, -1, -1), FIHandlerException);
  EXPECT_THROW(json.startElement(1, kFieldElement, kNone, -1, -1, -1, -1, -1), FIHandlerException);
  json.startElement(kA, kFieldElement, kNone, -1, -1);
  EXPECT_THROW(json.startElement(kA, kFieldElement, kNone, -1, -1), FIHandlerException);
  EXPECT_THROW(json.data(PWFData(true), kNone, -1, -1), FIHandlerException);
  EXPECT_THROW(json.endMessage(kNone), FIHandlerException);
  json.startMessage(kNone, kNone);
  json.startElement(kA, kGroupElement, kNone, -1, -1);
  EXPECT_THROW(json.endMessage(kNone), FIHandlerException);
}

}  // namespace
}  // namespace oxr::rec::test
