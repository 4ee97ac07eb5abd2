#include "pwfdata.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "harness/failures.hpp"
#include "harness/text.hpp"

namespace oxr::test {
namespace {

constexpr char kInvalid[] = "CPI Internal error from invalid operation on PWFData";

Raised wrongUse(const char* text) {
  return conversionFailure(5522, {kInvalid, text});
}

const unsigned short kText[] = {'1', '2', '.', '5', 0};
constexpr auto kUnknownType = static_cast<ELogicalType>(7);

TEST(PwfData, MadeOfATypeIsNullButForNothing) {
  for (const ELogicalType type : {STRING, INTEGER, FLOAT, BINARY, BOOLEAN, INTERVAL, DATETIME, DECIMAL, kUnknownType}) {
    const PWFData value(type);
    EXPECT_EQ(value.getDataLogicalType(), type);
    EXPECT_TRUE(value.isNull() && !value.isNothing() && value.getDataLength() == 0 && value.getDataValue() == nullptr);
  }
  for (const ELogicalType type : {NOTHING, static_cast<ELogicalType>(-3)}) {
    const PWFData value(type);
    EXPECT_FALSE(value.isNull());
    EXPECT_EQ(value.isNothing(), type == NOTHING);
    EXPECT_TRUE(value.getDataLength() == 0 && value.getDataValue() == nullptr);
  }
}

TEST(PwfData, KeepsWhatItIsMadeFrom) {
  const PWFDateTime dateTime{2026, 11, 21, 2, 42, 0, 5, 6, nullptr, 1, 2};
  const PWFInterval interval{1, 2, 3, 1};
  const double number = 2.5;
  EXPECT_EQ(PWFData(PWFInt32{-5}, false).getInt64Value(), -5);
  EXPECT_EQ(PWFData(PWFInt64{1} << 40, false).getInt64Value(), PWFInt64{1} << 40);
  EXPECT_EQ(PWFData(-7, INTEGER).getInt32Value(), -7);
  EXPECT_EQ(PWFData(2, BOOLEAN).getBooleanValue(), 2);
  EXPECT_TRUE(PWFData(2, BOOLEAN).getBoolValue() && PWFData(true).getBoolValue() && !PWFData(false).getBoolValue());
  EXPECT_EQ(PWFData(number).getDoubleValue(), 2.5);
  EXPECT_EQ(PWFData(&number, -99, FLOAT, REFERENCE).getDoubleValue(), 2.5);  // the length counts for nothing
  const PWFDateTime readDateTime = PWFData(dateTime).getDateTimeValue();
  EXPECT_EQ(std::memcmp(&readDateTime, &dateTime, sizeof dateTime), 0);
  const PWFInterval readInterval = PWFData(interval).getIntervalValue();
  EXPECT_TRUE(readInterval._months == 2 && readInterval._microseconds == 3 && readInterval._sign == 1);
  EXPECT_EQ(PWFData(u"a text of more than sixteen units"_k).getPWFStringValue(),
            u"a text of more than sixteen units"_k);
  EXPECT_EQ(PWFData(kText, 3).getPWFStringValue(), u"12."_k);
  EXPECT_EQ(PWFData(kText, 5, STRING, COPY).getPWFStringValue(), u"12"_k);  // an odd length in bytes is cut
  EXPECT_EQ(PWFData(kText, -1).getStringLength(), 0);
  unsigned char odd[sizeof kText + 1];  // text may start at any address of a message
  std::memcpy(odd + 1, kText, sizeof kText);
  for (const int bytes : {-1, 2, 8})
    EXPECT_EQ(PWFData(odd + 1, bytes, STRING, COPY).getPWFStringValue(), KelWstring(kText, bytes == 2 ? 1 : 4));
  PWFInt32 length = 0;
  EXPECT_EQ(UnitView(PWFData(kText, STRING).getStringValue(length)), u"12.5"_k.view());
  EXPECT_EQ(length, 4);
  const PWFData decimal(kText, DECIMAL);
  EXPECT_EQ(UnitView(decimal.getDecimalValue()), u"12.5"_k.view());
  EXPECT_TRUE(decimal.getDecimalLength() == 4 && decimal.getStringLength() == 4);
}

TEST(PwfData, LengthAndBytesByType) {
  const struct {
    PWFData value;
    int length;
  } cases[] = {
      {PWFData(kText, STRING), 8},
      {PWFData(kText, DECIMAL), 8},
      {PWFData(PWFInt32{1}, false), 4},
      {PWFData(PWFInt64{1}, false), 8},
      {PWFData(1.0), 8},
      {PWFData("abc", 3, BINARY, COPY), 3},
      {PWFData(true), 4},
      {PWFData(PWFInterval{}), 24},
      {PWFData(PWFDateTime{}), 48},
      {PWFData(PWFInt32{1}, true), 0},
      {PWFData(nullptr, STRING), 0},
  };
  for (const auto& [value, length] : cases) {
    SCOPED_TRACE(value.getDataLogicalType());
    EXPECT_EQ(value.getDataLength(), length);
    EXPECT_EQ(value.getDataValue() == nullptr, value.isNull());
  }
  EXPECT_EQ(*static_cast<const PWFInt64*>(cases[3].value.getDataValue()), 1);
  EXPECT_EQ(PWFData(kText, 4, kUnknownType, COPY).getDataLength(), 0);
  EXPECT_EQ(PWFData("abc", -1, BINARY, COPY).getBinaryValue(), nullptr);
  EXPECT_EQ(PWFData("abc", 3, BINARY, static_cast<EOwnership>(9)).getBinaryValue(), nullptr);
}

TEST(PwfData, NullAndEmptyTextDiffer) {
  EXPECT_TRUE(PWFData(nullptr, STRING).isNull());
  EXPECT_EQ(PWFData(nullptr, STRING).getStringLength(), 0);
  const PWFData empty(kText, 0);
  EXPECT_TRUE(!empty.isNull() && empty.getStringLength() == 0 && *empty.getStringValue() == 0);
  EXPECT_TRUE(PWFData(static_cast<void*>(nullptr), 0, NOTHING, COPY).isNull());
}

TEST(PwfData, GettersTestTheTypeBeforeTheNull) {
  const PWFData text(kText, STRING);
  const PWFData null(STRING);
  int length = 0;
  PWFInt32 units = 0;
  const struct {
    const char* insert;
    Raised raised;
  } cases[] = {
      {"Logical type not equal to decimal", raisedBy([&] { text.getDecimalLength(); })},
      {"Logical type not equal to decimal", raisedBy([&] { text.getDecimalValue(); })},
      {"Logical type not equal to interval", raisedBy([&] { text.getIntervalValue(); })},
      {"Logical type not equal to boolean", raisedBy([&] { text.getBooleanValue(); })},
      {"Logical type not equal to boolean", raisedBy([&] { null.getBoolValue(); })},
      {"Logical type not equal to binary", raisedBy([&] { text.getBinaryValue(); })},
      {"Logical type not equal to binary", raisedBy([&] { text.getBinaryValue(length); })},
      {"Logical type not equal to float", raisedBy([&] { null.getDoubleValue(); })},
      {"Logical type not equal to integer", raisedBy([&] { null.getInt64Value(); })},
      {"Logical type not equal to integer", raisedBy([&] { null.getInt32Value(); })},
      {"Logical type not equal to string", raisedBy([] { PWFData(1.0).getStringLength(); })},
      {"Logical type not equal to string", raisedBy([] { PWFData(kText, DECIMAL).getStringValue(); })},
      {"Logical type not equal to string", raisedBy([&] { PWFData(kText, DECIMAL).getStringValue(units); })},
      {"Logical type not equal to string", raisedBy([] { PWFData(kText, DECIMAL).getPWFStringValue(); })},
      {"Logical type not equal to datetime", raisedBy([&] { text.getDateTimeValue(); })},
      {"Can't get value for null boolean value", raisedBy([] { PWFData(BOOLEAN).getBooleanValue(); })},
      {"Can't get value for null boolean value", raisedBy([] { PWFData(BOOLEAN).getBoolValue(); })},
      {"Can't get value for null double value", raisedBy([] { PWFData(FLOAT).getDoubleValue(); })},
      {"Can't get value for null integer value", raisedBy([] { PWFData(INTEGER).getInt64Value(); })},
      {"Can't get value for null integer value", raisedBy([] { PWFData(PWFInt32{0}, true).getInt32Value(); })},
  };
  for (const auto& [insert, raised] : cases)
    EXPECT_EQ(raised, wrongUse(insert));
  EXPECT_EQ(PWFData(DATETIME).getDateTimeValue()._year, 0);  // a null record reads as zeros
  EXPECT_EQ(PWFData(BINARY).getBinaryValue(length), nullptr);
}

TEST(PwfData, WideIntegersMustFitThirtyTwoBits) {
  EXPECT_EQ(PWFData(PWFInt64{-2147483648}, false).getInt32Value(), -2147483648);
  EXPECT_EQ(raisedBy([] { PWFData(PWFInt64{2147483648}, false).getInt32Value(); }),
            conversionFailure(
                5507, {"Overflow converting a PWFInt64 to PWFInt32", "integer", "4-byte integer", "2147483648"}));
}

TEST(PwfData, RefusesWhatItCannotBeMadeFrom) {
  const PWFInt64 number = 1;
  EXPECT_EQ(raisedBy([] { PWFData(1, STRING); }),
            wrongUse("Logical type for this contructor must be either Boolean or Integer"));
  EXPECT_EQ(raisedBy([&] { PWFData(&number, 8, INTEGER, ADOPT); }), wrongUse("Can't adopt given a const's pointer"));
  EXPECT_EQ(raisedBy([&] { PWFData(&number, 3, INTEGER, COPY); }), wrongUse("Invalid length for an integer"));
  for (const int type : {0, -1})
    EXPECT_EQ(raisedBy([&] { PWFData(&number, 8, static_cast<ELogicalType>(type), COPY); }),
              parserFailure(5502, {"CPI Internal Error", "Invlaid logical type when passing in a value"}));
}

// What is adopted is freed once whatever becomes of it: the leak checker and the address checker watch.
TEST(PwfData, AdoptsBlocksOfMalloc) {
  const auto block = [] { return std::memcpy(std::malloc(8), "abcdefgh", 8); };
  const PWFData bytes(block(), 8, BINARY, ADOPT);
  const PWFData copy(bytes);
  EXPECT_NE(copy.getBinaryValue(), bytes.getBinaryValue());
  EXPECT_EQ(std::memcmp(copy.getBinaryValue(), "abcdefgh", 8), 0);
  EXPECT_EQ(PWFData(block(), 8, STRING, ADOPT).getStringLength(), 4);
  EXPECT_FALSE(PWFData(block(), -1, kUnknownType, ADOPT).isNull());
}

TEST(PwfData, CopiesOwnWhatTheSourceOwns) {
  const PWFData owned("abc", 3, BINARY, COPY);
  const PWFData copyOfOwned(owned);
  EXPECT_NE(copyOfOwned.getBinaryValue(), owned.getBinaryValue());
  static const char kBytes[] = "abc";
  const PWFData reference(kBytes, 3, BINARY, REFERENCE);
  EXPECT_EQ(PWFData(reference).getBinaryValue(), kBytes);
  PWFData target(kText, STRING);
  target = PWFData(PWFInt64{7}, false);
  EXPECT_EQ(target.getInt64Value(), 7);
  EXPECT_EQ(raisedBy([&] { target.getStringLength(); }), wrongUse("Logical type not equal to string"));
  const PWFData& self = target;
  target = self;
  EXPECT_EQ(target.getInt64Value(), 7);
}

TEST(PwfData, AssignmentLeavesTheOldBlockValid) {
  PWFData value("abc", 3, BINARY, COPY);
  const void* const old = value.getBinaryValue();
  value = PWFData(1.0);
  EXPECT_EQ(std::memcmp(old, "abc", 3), 0);
}

// Entry and exit come out at level 4, and only when the logical values are the subcomponent being debugged.
TEST(PwfData, TracesUnderItsOwnNames) {
  const auto functionsTraced = [](int subComponent) {
    const auto sink = std::make_shared<RecordingLogSink>();
    {
      const ScopedLogSink scope(sink);
      KelLog::iEffectiveLogFilter = 4;
      KelLog::iCurrentSubComponent = subComponent;
      const PWFData value(2.5);
      EXPECT_THROW(value.getStringLength(), KelConversionException);
      KelLog::iEffectiveLogFilter = 0;
      KelLog::iCurrentSubComponent = 0;
    }
    std::string functions;
    for (const LogRecord& record : sink->records())
      functions += record.function + (record.inserts.empty() ? " " : "[" + record.inserts.back() + "] ");
    return functions;
  };
  EXPECT_EQ(functionsTraced(1),
            "PWFData::init[0] PWFData::init[false] PWFData::getStringLength PWFData::getStringLength[6] "
            "PWFData::getStringLength[Logical type not equal to string] ");
  EXPECT_EQ(functionsTraced(0), "PWFData::getStringLength[Logical type not equal to string] ");
}

}  // namespace
}  // namespace oxr::test
