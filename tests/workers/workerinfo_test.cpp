#include "workerinfo.hpp"

#include <gtest/gtest.h>

#include <limits>

#include "harness/failures.hpp"
#include "harness/headers.hpp"
#include "harness/text.hpp"

namespace oxr::test {
namespace {

constexpr PWFInt32 kAbsent = std::numeric_limits<PWFInt32>::min();

PWFData textValue(const char* text) {
  return PWFData(k(text));
}

TEST(WorkerInfo, HeadersAreMarkedAliveAndDead) {
  EXPECT_EQ(headerOfA<CPRCObject>("QVWC"), "QVWC 8 32 / 0OXR QVWC 8 32");
  EXPECT_EQ(headerOfA<WorkerInfo>("QVWW"), "QVWW 28 48 / 0OXR QVWW 28 48");
  EXPECT_EQ(headerOfA<MapWorkerInfo>("QVWC"), "QVWC 8 32 / 0OXR QVWC 8 32");
  EXPECT_EQ(headerOfA<WorkerInfoPtr>("QVWP"), "QVWP 0 24 / 0OXR QVWP 0 24");
}

TEST(WorkerInfo, KeepsNothing) {
  WorkerInfo info;
  info.setProperty(1, 5);
  info.setProperty(1, textValue("five"));
  EXPECT_EQ(&info.getDataProperty(1), &WorkerInfoNullData);
  EXPECT_TRUE(WorkerInfoNullData.isNothing());
  EXPECT_EQ(info.getInt32Property(1), kAbsent);
}

// Built while the statics of this file are, behind the library's own: lookups must work even then.
const bool kNothingAtLoad = MapWorkerInfo().getDataProperty(0).isNothing() && !WorkerInfoPtr::defaultWIP;

TEST(MapWorkerInfo, LookupsTellAbsentFromPresent) {
  EXPECT_TRUE(kNothingAtLoad);
  MapWorkerInfo info;
  info.setProperty(1, 12);
  info.setProperty(2, textValue("12"));
  info.setProperty(3, PWFData(INTEGER));
  info.setProperty(4, PWFData(PWFInt64{1} << 31, false));
  info.setProperty(5, PWFData(PWFInt64{7}, false));
  info.setProperty(6, PWFData(STRING));
  const struct {
    int key;
    PWFInt32 number;
    ELogicalType type;
    bool isNull;
  } cases[] = {{0, kAbsent, NOTHING, false}, {1, 12, INTEGER, false}, {2, kAbsent, STRING, false},
               {3, kAbsent, INTEGER, true},  {5, 7, INTEGER, false},  {6, kAbsent, STRING, true}};
  for (const auto& [key, number, type, isNull] : cases) {
    SCOPED_TRACE(key);
    EXPECT_EQ(info.getInt32Property(key), number);
    EXPECT_EQ(info.getDataProperty(key).getDataLogicalType(), type);
    EXPECT_EQ(info.getDataProperty(key).isNull(), isNull);
  }
  EXPECT_EQ(raisedBy([&] { info.getInt32Property(4); }),
            conversionFailure(
                5507, {"Overflow converting a PWFInt64 to PWFInt32", "integer", "4-byte integer", "2147483648"}));
  EXPECT_EQ(info.getDataProperty(4).getInt64Value(), PWFInt64{1} << 31);
}

TEST(MapWorkerInfo, SettingReplacesOrRemoves) {
  MapWorkerInfo info;
  info.setProperty(1, kAbsent);
  info.setProperty(1, PWFData(NOTHING));
  EXPECT_TRUE(info.getDataProperty(1).isNothing());
  info.setProperty(1, 5);
  info.setProperty(1, textValue("a text of more than sixteen units"));
  EXPECT_EQ(info.getDataProperty(1).getStringLength(), 33);
  info.setProperty(1, kAbsent);
  info.setProperty(2, 5);
  info.setProperty(2, PWFData(NOTHING));
  EXPECT_TRUE(info.getDataProperty(1).isNothing() && info.getDataProperty(2).isNothing());
}

// Counts what goes through the virtual call.
class CountingInfo : public MapWorkerInfo {
 public:
  using MapWorkerInfo::operator=;
  using MapWorkerInfo::setProperty;
  void setProperty(int key, const PWFData& value) override {
    keys.push_back(key);
    MapWorkerInfo::setProperty(key, value);
  }
  std::vector<int> keys;
};

TEST(MapWorkerInfo, AssignmentMergesInOrderOfKeys) {
  MapWorkerInfo source;
  source.setProperty(9, 90);
  source.setProperty(2, textValue("two"));
  CountingInfo target;
  target.MapWorkerInfo::setProperty(1, 10);
  target.MapWorkerInfo::setProperty(2, 20);
  target = source;
  EXPECT_EQ(target.keys, (std::vector<int>{2, 9}));
  EXPECT_EQ(target.getInt32Property(1), 10);
  EXPECT_EQ(target.getDataProperty(2).getPWFStringValue(), u"two"_k);
  target.keys.clear();
  target = MapWorkerInfo();
  const MapWorkerInfo& itself = target;
  target = itself;
  EXPECT_EQ(target.keys, std::vector<int>{});
  EXPECT_EQ(target.getInt32Property(9), 90);
}

TEST(MapWorkerInfo, CopyHoldsTheSameAndBelongsToNobody) {
  const WorkerInfoPtr original(new MapWorkerInfo);
  original->setProperty(1, 10);
  const MapWorkerInfo copy(static_cast<const MapWorkerInfo&>(*original));
  original->setProperty(1, 11);
  EXPECT_EQ(copy.getInt32Property(1), 10);
  EXPECT_EQ(copy.references(), 0);
  EXPECT_EQ(original->references(), 1);
}

class MortalInfo : public WorkerInfo {
 public:
  explicit MortalInfo(int& deaths) : deaths_(deaths) {}
  ~MortalInfo() override { ++deaths_; }

 private:
  int& deaths_;
};

TEST(WorkerInfoPtr, LastPointerDeletesTheObject) {
  int deaths = 0;
  {
    WorkerInfoPtr first(new MortalInfo(deaths));
    WorkerInfoPtr second(first);
    WorkerInfoPtr third;
    third = second;
    third = *&third;
    EXPECT_EQ(first->references(), 3);
    second = WorkerInfoPtr::defaultWIP;
    EXPECT_FALSE(second);
    EXPECT_EQ(third.get(), first.get());
    first = WorkerInfoPtr(new MortalInfo(deaths));
    third = first;
    EXPECT_EQ(deaths, 1);
  }
  EXPECT_EQ(deaths, 2);
}

}  // namespace
}  // namespace oxr::test
