#include "pwfdata.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

#include "harness/failures.hpp"
#include "harness/hex.hpp"
#include "harness/text.hpp"
#include "harness/tracing.hpp"

namespace oxr::test {
namespace {

const unsigned short kText[] = {'1', '2', '.', '5', 0};
constexpr auto kUnknownType = static_cast<ELogicalType>(7);
constexpr auto kNegativeType = static_cast<ELogicalType>(-3);

Raised wrongUse(const std::string& text) {
  return conversionFailure(5522, {"CPI Internal error from invalid operation on PWFData", text});
}

// The type's number, "null" or "nothing" where it is one, and the bytes: "4: FBFFFFFF".
std::string told(const PWFData& value) {
  const auto* const bytes = static_cast<const char*>(value.getDataValue());
  return std::to_string(value.getDataLogicalType()) + (value.isNull() ? " null" : "") +
         (value.isNothing() ? " nothing" : "") + ": " +
         toHex({bytes, static_cast<std::size_t>(value.getDataLength())}) + (bytes == nullptr ? "-" : "");
}

TEST(PwfData, KeepsWhatItIsMadeFrom) {
  const double half = 0.5;
  alignas(2) const char bytes[] = "-1\0002\0003\0\0";  // from the second on: text may start at an odd address
  const struct {
    PWFData value;
    std::string expected;
  } cases[] = {
      {PWFData(NOTHING), "0 nothing: -"},
      {PWFData(kNegativeType), "-3: -"},
      {PWFData(kText, -1), "2: "},
      {PWFData(kText, 5, STRING, COPY), "2: 31003200"},  // an odd length in bytes is cut
      {PWFData(bytes + 1, -1, STRING, COPY), "2: 310032003300"},
      {PWFData(bytes + 1, 2, DECIMAL, COPY), "16: 3100"},
      {PWFData(u"more than sixteen"_k), "2: 6D006F007200650020007400680061006E0020007300690078007400650065006E00"},
      {PWFData(PWFInt32{-5}, true), "4 null: -"},
      {PWFData(PWFInt64{1} << 40, false), "4: 0000000000010000"},
      {PWFData(PWFInt64{5}, true), "4 null: -"},
      {PWFData(static_cast<const char*>(nullptr), 4, INTEGER, COPY), "4 null: -"},
      {PWFData(&half, 8, INTEGER, COPY), "4: 000000000000E03F"},
      {PWFData(true), "12: 01000000"},
      {PWFData(-7, INTEGER), "4: F9FFFFFF"},
      {PWFData(&half, -99, FLOAT, REFERENCE), "6: 000000000000E03F"},  // the length counts for nothing
      {PWFData("abc", 3, BINARY, COPY), "10: 616263"},
      {PWFData("abc", -1, BINARY, COPY), "10: -"},
      {PWFData("abc", 0, BINARY, static_cast<EOwnership>(9)), "10: -"},
  };
  for (const auto& [value, expected] : cases)
    EXPECT_EQ(told(value), expected);
}

// Values are copied, compared and dumped as bytes, too: what a type has no use for must not be what was there before.
TEST(PwfData, ClearsTheBytesThatItsTypeDoesNotUse) {
  constexpr std::size_t kArea = 48;
  const struct {
    std::function<void(void*)> make;
    std::size_t used;  // bytes at the start of the area
  } cases[] = {
      {[](void* at) { new (at) PWFData(NOTHING); }, 0},
      {[](void* at) { new (at) PWFData(kText, DECIMAL); }, 0},
      {[](void* at) { new (at) PWFData(kText, 2); }, 0},
      {[](void* at) { new (at) PWFData(u"text"_k); }, 0},
      {[](void* at) { new (at) PWFData(PWFData(true).getDebugString()); }, 0},
      {[](void* at) { new (at) PWFData(PWFInt32{-1}, false); }, 8},
      {[](void* at) { new (at) PWFData(PWFInt64{-1}, false); }, 16},
      {[](void* at) { new (at) PWFData(0.5); }, 8},
      {[](void* at) { new (at) PWFData("abc", 3, BINARY, COPY); }, 16},
  };
  for (const auto& [make, used] : cases) {
    std::string memory(sizeof(PWFData), '\xAB');
    make(memory.data());
    const std::string rest = memory.substr(sizeof(PWFData) - kArea + used);
    EXPECT_EQ(rest, std::string(kArea - used, '\0')) << told(*reinterpret_cast<PWFData*>(memory.data()));
    reinterpret_cast<PWFData*>(memory.data())->~PWFData();
  }
}

// Every getter on a null of every type: the type is tested first. Where a null is let through, it reads as 0.
TEST(PwfData, GettersTestTheTypeBeforeTheNull) {
  using V = const PWFData&;
  const struct {
    ELogicalType type;
    std::string name, nullName;  // as the refusals name them; no second one where a null is let through
    std::function<double(V)> get;
    ELogicalType otherType = kNegativeType;
  } getters[] = {
      {DECIMAL, "decimal", "", [](V v) { return v.getDecimalLength(); }},
      {DECIMAL, "decimal", "", [](V v) { return *v.getDecimalValue(); }},
      {INTERVAL, "interval", "", [](V v) { return v.getIntervalValue()._months; }},
      {BOOLEAN, "boolean", "boolean", [](V v) { return v.getBooleanValue(); }},
      {BOOLEAN, "boolean", "boolean", [](V v) { return v.getBoolValue(); }},
      {BINARY, "binary", "", [n = 9](V v) mutable { return v.getBinaryValue(n), n; }},
      {FLOAT, "float", "double", [](V v) { return v.getDoubleValue(); }},
      {INTEGER, "integer", "integer", [](V v) { return v.getInt64Value(); }},
      {INTEGER, "integer", "integer", [](V v) { return v.getInt32Value(); }},
      {STRING, "string", "", [](V v) { return v.getStringLength(); }, DECIMAL},
      {STRING, "string", "", [](V v) { return *v.getStringValue(); }},
      {STRING, "string", "", [n = 9](V v) mutable { return v.getStringValue(n), n; }},
      {STRING, "string", "", [](V v) { return v.getPWFStringValue().length(); }},
      {DATETIME, "datetime", "", [](V v) { return v.getDateTimeValue()._year; }},
  };
  for (const auto& [type, name, nullName, get, otherType] : getters)
    for (int made = 0; made <= DECIMAL; ++made) {
      Raised expected = wrongUse("Logical type not equal to " + name);
      if (made == type || made == otherType)
        expected = nullName.empty() ? Raised() : wrongUse("Can't get value for null " + nullName + " value");
      double value = 0;
      EXPECT_EQ(raisedBy([&, get = get] { value = get(PWFData(static_cast<ELogicalType>(made))); }), expected)
          << name << made;
      EXPECT_EQ(value, 0);
    }
}

TEST(PwfData, GettersGiveTheValue) {
  const PWFData text(kText, STRING), decimal(kText, DECIMAL), flag(2, BOOLEAN);
  int units = 0;
  EXPECT_TRUE(text.getStringValue(units) == text.getDataValue() && units == 4 && decimal.getStringLength() == 4);
  EXPECT_TRUE(decimal.getDecimalValue() == decimal.getDataValue() && decimal.getDecimalLength() == 4);
  EXPECT_TRUE(flag.getBooleanValue() == 2 && flag.getBoolValue() && !PWFData(false).getBoolValue());
  const PWFDateTime dateTime{1, 2, 3, 4, 5, 6, 7, 8, nullptr, 9, 10}, read = PWFData(dateTime).getDateTimeValue();
  EXPECT_TRUE(std::memcmp(&read, &dateTime, sizeof read) == 0);
  EXPECT_EQ(PWFData(PWFInterval{0, 0, 0, 2}).getIntervalValue()._sign, 2);

  EXPECT_DOUBLE_EQ(PWFData(0.5).getDoubleValue(), 0.5);
  for (const PWFInt64 value : {-2147483648L, 2147483647L})
    EXPECT_TRUE(PWFData(value, false).getInt32Value() == value && PWFData(value, false).getInt64Value() == value);
  for (const PWFInt64 value : {-2147483649, 2147483648})
    EXPECT_EQ(raisedBy([&] { PWFData(value, false).getInt32Value(); }),
              conversionFailure(5507, {"Overflow converting a PWFInt64 to PWFInt32", "integer", "4-byte integer",
                                       std::to_string(value)}));
}

TEST(PwfData, RefusesWhatItCannotBeMadeFrom) {
  const PWFInt64 number = 1;
  EXPECT_EQ(raisedBy([] { PWFData(1, STRING); }),
            wrongUse("Logical type for this contructor must be either Boolean or Integer"));
  EXPECT_EQ(raisedBy([&] { PWFData(&number, 8, INTEGER, ADOPT); }), wrongUse("Can't adopt given a const's pointer"));
  EXPECT_EQ(raisedBy([&] { PWFData(&number, 3, INTEGER, COPY); }), wrongUse("Invalid length for an integer"));
  EXPECT_EQ(raisedBy([&] { PWFData(&number, 8, NOTHING, COPY); }),
            parserFailure(5502, {"CPI Internal Error", "Invlaid logical type when passing in a value"}));
}

// What is adopted is freed once, whatever becomes of it: the leak checker and the address checker watch.
TEST(PwfData, CopiesOwnWhatTheSourceOwns) {
  const auto block = [] { return std::memcpy(std::malloc(8), "abcdefgh", 8); };
  const PWFData adopted(block(), 8, BINARY, ADOPT), owned("abc", 3, BINARY, COPY), lent("abc", 3, BINARY, REFERENCE);
  for (const PWFData* const source : {&adopted, &owned, &lent}) {
    const PWFData copy(*source);
    EXPECT_EQ(copy.getBinaryValue() == source->getBinaryValue(), source == &lent);
    EXPECT_EQ(told(copy), told(*source));
  }
  EXPECT_EQ(told(PWFData(block(), 8, STRING, ADOPT)), "2: 6162636465666768");
  EXPECT_EQ(told(PWFData(block(), -1, kUnknownType, ADOPT)), "7: -");
}

TEST(PwfData, AssignmentLeavesTheOldBlockValid) {
  PWFData value("abc", 3, BINARY, COPY);
  const void* const old = value.getBinaryValue();
  value = PWFData(kText, DECIMAL);
  EXPECT_EQ(std::memcmp(old, "abc", 3), 0);
  value = *&value;
  EXPECT_EQ(told(value), "16: 310032002E003500");
}

// Entry and exit are written at level 4, and only while the logical values are the subcomponent being debugged.
TEST(PwfData, TracesUnderItsOwnNames) {
  const auto call = [] {
    PWFData value(static_cast<const unsigned short*>(nullptr), STRING);
    EXPECT_THROW(value.getDecimalLength(), KelConversionException);
  };
  KelLog::iCurrentSubComponent = 1;
  EXPECT_THAT(
      tracedAt(4, call),
      testing::StartsWith("> PWFData::init: 0x0|-1|2|0\n< PWFData::init: true\n> PWFData::getDecimalLength\n"
                          "PWFData::getDecimalLength: LogicalType|2\nPWFData::getDecimalLength: Throwing exception|"));
  KelLog::iCurrentSubComponent = 0;
  EXPECT_THAT(tracedAt(4, call), testing::StartsWith("PWFData::getDecimalLength: Throwing exception|"));
}

}  // namespace
}  // namespace oxr::test
