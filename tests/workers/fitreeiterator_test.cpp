#include "fitreeiterator.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "harness/headers.hpp"

namespace oxr::test {
namespace {

// A node of a tree with a root, 1. All that an iterator does but to own one is to hand a call on.
class Place : public FITreeIteratorImpl {
 public:
  static inline int living = 0;
  explicit Place(int at) : at_(at) { ++living; }
  Place(const Place& other) : FITreeIteratorImpl(other), at_(other.at_) { ++living; }
  ~Place() override { --living; }
  bool operator==(const FITreeIteratorImpl* other) const override { return at_ == other->getTagId(); }
  bool moveToParent() override { return at_ = 1, true; }
  bool moveToFirstChild() override { return false; }
  bool moveToPreviousSibling() override { return false; }
  bool moveToNextSibling() override { return false; }
  int getItemTypeIndex() const override { return 0; }
  int getTagId() const override { return at_; }
  const unsigned short* getTagName() const override { return nullptr; }
  KelWstring getNamespaceURI() const override { return {}; }
  int getMemberId() const override { return 0; }
  int getTagIndex() const override { return 0; }
  int getMemberIndex() const override { return 0; }
  int getTypeIndex() const override { return 0; }
  const std::vector<int>* getMemberIdPath() const override { return nullptr; }
  const std::vector<PartialMember>* getPartialMemberPath() const override { return nullptr; }
  int getCategory() const override { return 0; }
  int getRepeatIndex() const override { return 0; }
  int getPathBasedInfoIndex() const override { return 0; }
  int getPathBasedInfoCount() const override { return 0; }
  int getMinOccurs() const override { return 0; }
  int getMaxOccurs() const override { return 0; }
  int getOccurrences() const override { return 0; }
  int getMinLength() const override { return 0; }
  int getMaxLength() const override { return 0; }
  int getIsNullable() const override { return 0; }
  PWFData getData() const override { return PWFData(NOTHING); }
  PWFData getDefaultData() const override { return PWFData(NOTHING); }
  WorkerInfoPtr getStartWorkerInfo() const override { return {}; }
  WorkerInfoPtr getDataWorkerInfo() const override { return {}; }
  WorkerInfoPtr getEndWorkerInfo() const override { return {}; }
  bool hasTreeChanged() const override { return true; }
  bool isBitStream() const override { return false; }
  bool isValid() const override { return true; }
  void loadDictionaryAndDescriptor() override {}
  void releaseDictionaryAndDescriptor() override {}
  FITreeIteratorImpl* clone() const override { return new Place(*this); }

 private:
  int at_;
};

TEST(FITreeIterator, OwnsAPlaceOfItsOwn) {
  EXPECT_EQ(headerOfA<FITreeIterator>("QVTI"), "QVTI 0 24 / 0OXR QVTI 0 24");
  {
    Place place(1);
    FITreeIterator null;
    FITreeIterator clone(&place, true), constClone(static_cast<const FITreeIteratorImpl*>(&place));
    FITreeIterator taken(new Place(12), false), copy(taken);
    EXPECT_TRUE(Place::living == 5 && null.isNull() && FITreeIterator(null).isNull());
    copy = clone;
    copy = *&copy;
    EXPECT_TRUE(copy == constClone && copy != taken && taken.moveToParent() && taken == clone);
    copy = null;
    EXPECT_TRUE(copy.isNull() && Place::living == 4);
  }
  EXPECT_EQ(Place::living, 0);
}

}  // namespace
}  // namespace oxr::test
