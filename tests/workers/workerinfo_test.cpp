#include "workerinfo.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "harness/headers.hpp"
#include "harness/text.hpp"

namespace oxr::test {
namespace {

constexpr PWFInt32 kAbsent = INT32_MIN;

// Built while the statics of this file are, after the library's own: lookups must work even then.
const bool kNothingAtLoad = MapWorkerInfo().getDataProperty(0).isNothing() && !WorkerInfoPtr::defaultWIP;

TEST(WorkerInfo, KeepsNothing) {
  EXPECT_EQ(headerOfA<CPRCObject>("QVWC"), "QVWC 8 32 / 0OXR QVWC 8 32");
  EXPECT_EQ(headerOfA<WorkerInfo>("QVWW"), "QVWW 28 48 / 0OXR QVWW 28 48");
  EXPECT_EQ(headerOfA<WorkerInfoPtr>("QVWP"), "QVWP 0 24 / 0OXR QVWP 0 24");
  WorkerInfo info;
  EXPECT_TRUE(kNothingAtLoad && &info.getDataProperty(1) == &WorkerInfoNullData && info.getInt32Property(1) == kAbsent);
}

TEST(MapWorkerInfo, TellsAbsentFromPresentAndReplacesOrRemoves) {
  MapWorkerInfo info;
  for (const auto& [stored, number] : {std::pair(PWFData(12, INTEGER), 12),
                                       {PWFData(u"12"_k), kAbsent},
                                       {PWFData(INTEGER), kAbsent},
                                       {PWFData(NOTHING), kAbsent}}) {
    info.setProperty(1, stored);
    EXPECT_EQ(info.getInt32Property(1), number);
    EXPECT_EQ(info.getDataProperty(1).getDataLogicalType(), stored.getDataLogicalType());
    info.setProperty(1, 5);
    info.setProperty(1, kAbsent);
    EXPECT_TRUE(info.getDataProperty(1).isNothing());
  }
}

// Notes the keys that go through the virtual call, and its end.
struct WatchedInfo : MapWorkerInfo {
  using MapWorkerInfo::operator=;
  using MapWorkerInfo::setProperty;
  explicit WatchedInfo(int& count) : deaths(count) {}
  ~WatchedInfo() override { ++deaths; }
  void setProperty(int key, const PWFData& value) override {
    keys.push_back(key);
    MapWorkerInfo::setProperty(key, value);
  }
  std::vector<int> keys;
  int& deaths;
};

TEST(MapWorkerInfo, AssignmentMergesInOrderOfKeys) {
  MapWorkerInfo source;
  source.setProperty(9, 90);
  source.setProperty(2, PWFData(STRING));
  int deaths = 0;
  WatchedInfo target(deaths);
  target.MapWorkerInfo::setProperty(1, 10);
  target.MapWorkerInfo::setProperty(2, 20);
  target = source;
  target = *static_cast<const MapWorkerInfo*>(&target);
  EXPECT_EQ(target.keys, (std::vector<int>{2, 9}));
  EXPECT_EQ(target.getInt32Property(1) + target.getInt32Property(9), 100);
  EXPECT_EQ(target.getDataProperty(2).getDataLogicalType(), STRING);
}

TEST(WorkerInfoPtr, LastPointerDeletesTheObject) {
  int deaths = 0;
  {
    WorkerInfoPtr first(new WatchedInfo(deaths)), second(first), third;
    first->setProperty(1, 10);
    third = second;
    third = *&third;
    EXPECT_EQ(first->references(), 3);
    const MapWorkerInfo copy(static_cast<const MapWorkerInfo&>(*first));  // belongs to nobody
    first->setProperty(1, 11);
    EXPECT_TRUE(copy.references() == 0 && copy.getInt32Property(1) == 10);
    second = WorkerInfoPtr::defaultWIP;
    first = WorkerInfoPtr(new WatchedInfo(deaths));
    third = first;
    EXPECT_EQ(deaths, 1);
  }
  EXPECT_EQ(deaths, 2);
}

}  // namespace
}  // namespace oxr::test
