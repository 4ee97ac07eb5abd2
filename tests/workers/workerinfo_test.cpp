#include "workerinfo.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "harness/failures.hpp"
#include "harness/headers.hpp"
#include "harness/text.hpp"

namespace oxr::test {
namespace {

constexpr PWFInt32 kAbsent = std::numeric_limits<PWFInt32>::min();

// Built while the statics of this file are, after the library's own: lookups must work even then.
const bool kNothingAtLoad = MapWorkerInfo().getDataProperty(0).isNothing() && !WorkerInfoPtr::defaultWIP;

TEST(WorkerInfo, KeepsNothing) {
  EXPECT_EQ(headerOfA<CPRCObject>("QVWC"), "QVWC 8 32 / 0OXR QVWC 8 32");
  EXPECT_EQ(headerOfA<WorkerInfo>("QVWW"), "QVWW 28 48 / 0OXR QVWW 28 48");
  EXPECT_EQ(headerOfA<WorkerInfoPtr>("QVWP"), "QVWP 0 24 / 0OXR QVWP 0 24");
  WorkerInfo info;
  info.setProperty(1, 5);
  info.setProperty(1, PWFData(true));
  EXPECT_TRUE(&info.getDataProperty(1) == &WorkerInfoNullData && WorkerInfoNullData.isNothing());
  EXPECT_EQ(info.getInt32Property(1), kAbsent);
}

TEST(MapWorkerInfo, TellsAbsentFromPresentAndReplacesOrRemoves) {
  EXPECT_TRUE(kNothingAtLoad);
  MapWorkerInfo info;
  for (const auto& [stored, number] : {std::pair(PWFData(12, INTEGER), 12),
                                       {PWFData(PWFInt64{7}, false), 7},
                                       {PWFData(u"12"_k), kAbsent},
                                       {PWFData(INTEGER), kAbsent},
                                       {PWFData(STRING), kAbsent},
                                       {PWFData(NOTHING), kAbsent}}) {
    info.setProperty(1, stored);
    EXPECT_EQ(info.getInt32Property(1), number);
    EXPECT_EQ(info.getDataProperty(1).getDataLogicalType(), stored.getDataLogicalType());
    info.setProperty(1, 5);
    EXPECT_EQ(info.getInt32Property(1), 5);
    for (int removals = 0; removals < 2; ++removals)  // the second time there is none
      info.setProperty(1, kAbsent);
    EXPECT_TRUE(info.getDataProperty(1).isNothing() && info.getInt32Property(1) == kAbsent);
  }
  info.setProperty(1, PWFData(2147483648, false));
  EXPECT_EQ(raisedBy([&] { info.getInt32Property(1); }).number, static_cast<int>(0xC0001583));
}

// Counts what goes through the virtual call.
struct CountingInfo : MapWorkerInfo {
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
  source.setProperty(2, PWFData(STRING));
  CountingInfo target;
  target.MapWorkerInfo::setProperty(1, 10);
  target.MapWorkerInfo::setProperty(2, 20);
  target = source;
  target = MapWorkerInfo();
  const MapWorkerInfo& itself = target;
  target = itself;
  EXPECT_EQ(target.keys, (std::vector<int>{2, 9}));
  EXPECT_EQ(target.getInt32Property(1) + target.getInt32Property(9), 100);
  EXPECT_EQ(target.getDataProperty(2).getDataLogicalType(), STRING);
}

struct MortalInfo : MapWorkerInfo {
  explicit MortalInfo(int& count) : deaths(count) {}
  ~MortalInfo() override { ++deaths; }
  int& deaths;
};

TEST(WorkerInfoPtr, LastPointerDeletesTheObject) {
  int deaths = 0;
  {
    WorkerInfoPtr first(new MortalInfo(deaths)), second(first), third;
    first->setProperty(1, 10);
    third = second;
    third = *&third;
    EXPECT_EQ(first->references(), 3);
    const MapWorkerInfo copy(static_cast<const MapWorkerInfo&>(*first));  // belongs to nobody
    first->setProperty(1, 11);
    EXPECT_TRUE(copy.references() == 0 && copy.getInt32Property(1) == 10);
    second = WorkerInfoPtr::defaultWIP;
    EXPECT_TRUE(!second && third.get() == first.get());
    first = WorkerInfoPtr(new MortalInfo(deaths));
    third = first;
    EXPECT_EQ(deaths, 1);
  }
  EXPECT_EQ(deaths, 2);
}

}  // namespace
}  // namespace oxr::test
