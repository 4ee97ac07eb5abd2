#include "fitreeiterator.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "fimessagetree.hpp"
#include "harness/headers.hpp"
#include "harness/text.hpp"

namespace oxr::test {
namespace {

// A node of a small tree: a name, and where its relatives are in the table; -1 for none.
struct Node {
  unsigned short name[5];
  int parent, firstChild, previous, next;
};
constexpr Node kNodes[] = {
    {{'r', 'o', 'o', 't'}, -1, 1, -1, -1},
    {{'a'}, 0, -1, -1, 2},
    {{'b'}, 0, 3, 1, -1},
    {{'c'}, 2, -1, -1, -1},
};

// Its numbers tell which operation was asked.
class Place : public FITreeIteratorImpl {
 public:
  static inline int living = 0;
  explicit Place(int at) : at_(at) { ++living; }
  Place(const Place& other) : FITreeIteratorImpl(other), at_(other.at_) { ++living; }
  ~Place() override { --living; }
  bool operator==(const FITreeIteratorImpl* other) const override {
    return at_ == static_cast<const Place*>(other)->at_;
  }
  bool moveToParent() override { return move(kNodes[at_].parent); }
  bool moveToFirstChild() override { return move(kNodes[at_].firstChild); }
  bool moveToPreviousSibling() override { return move(kNodes[at_].previous); }
  bool moveToNextSibling() override { return move(kNodes[at_].next); }
  int getItemTypeIndex() const override { return 7; }
  int getTagId() const override { return 8; }
  const unsigned short* getTagName() const override { return kNodes[at_].name; }
  KelWstring getNamespaceURI() const override { return u"uri"_k; }
  int getMemberId() const override { return 11; }
  int getTagIndex() const override { return 12; }
  int getMemberIndex() const override { return 13; }
  int getTypeIndex() const override { return 14; }
  const std::vector<int>* getMemberIdPath() const override { return &path_; }
  const std::vector<PartialMember>* getPartialMemberPath() const override { return &members_; }
  int getCategory() const override { return 17; }
  int getRepeatIndex() const override { return 18; }
  int getPathBasedInfoIndex() const override { return 19; }
  int getPathBasedInfoCount() const override { return 20; }
  int getMinOccurs() const override { return 21; }
  int getMaxOccurs() const override { return 22; }
  int getOccurrences() const override { return 23; }
  int getMinLength() const override { return 24; }
  int getMaxLength() const override { return 25; }
  int getIsNullable() const override { return 26; }
  PWFData getData() const override { return PWFData(PWFInt32{27}, false); }
  PWFData getDefaultData() const override { return PWFData(PWFInt32{28}, false); }
  WorkerInfoPtr getStartWorkerInfo() const override { return WorkerInfoPtr::defaultWIP; }
  WorkerInfoPtr getDataWorkerInfo() const override { return WorkerInfoPtr::defaultWIP; }
  WorkerInfoPtr getEndWorkerInfo() const override { return WorkerInfoPtr::defaultWIP; }
  bool hasTreeChanged() const override { return true; }
  bool isBitStream() const override { return false; }
  bool isValid() const override { return true; }
  void loadDictionaryAndDescriptor() override { loaded_ = true; }
  void releaseDictionaryAndDescriptor() override { loaded_ = false; }
  FITreeIteratorImpl* clone() const override { return new Place(*this); }

 private:
  bool move(int to) {
    if (to < 0) return false;
    at_ = to;
    return true;
  }
  int at_;
  bool loaded_ = false;
  std::vector<int> path_{1, 2};
  std::vector<PartialMember> members_;
};

// The names in the order of a walk in depth that comes back to where it began.
std::string walk(FITreeIterator& it) {
  std::string names = toUtf8(KelWstring(UnitView(it.getTagName())).view());
  if (it.moveToFirstChild()) {
    do
      names += ' ' + walk(it);
    while (it.moveToNextSibling());
    EXPECT_TRUE(it.moveToParent());
  }
  return names;
}

TEST(FITreeIterator, WalksATreeAndComesBack) {
  FITreeIterator it(new Place(0), false);
  const FITreeIterator start(it);
  EXPECT_EQ(walk(it), "root a b c");
  EXPECT_TRUE(it == start);
  EXPECT_TRUE(it.moveToFirstChild() && it.moveToNextSibling());
  EXPECT_EQ(walk(it), "b c");
  EXPECT_TRUE(it != start && it.moveToPreviousSibling() && !it.moveToPreviousSibling());
  EXPECT_EQ(walk(it), "a");
}

TEST(FITreeIterator, AsksItsImplementationForEachFact) {
  const FITreeIterator it(new Place(1), false);
  const int facts[] = {it.getItemTypeIndex(),
                       it.getTagId(),
                       it.getMemberId(),
                       it.getTagIndex(),
                       it.getMemberIndex(),
                       it.getTypeIndex(),
                       it.getCategory(),
                       it.getRepeatIndex(),
                       it.getPathBasedInfoIndex(),
                       it.getMinOccurs(),
                       it.getMaxOccurs(),
                       it.getOccurrences(),
                       it.getMinLength(),
                       it.getMaxLength(),
                       it.getIsNullable(),
                       it.getData().getInt32Value(),
                       it.getDefaultData().getInt32Value()};
  const int expected[] = {7, 8, 11, 12, 13, 14, 17, 18, 19, 21, 22, 23, 24, 25, 26, 27, 28};
  EXPECT_TRUE(std::equal(std::begin(facts), std::end(facts), std::begin(expected), std::end(expected)));
  EXPECT_EQ(it.getNamespaceURI(), u"uri"_k);
  EXPECT_EQ(*it.getMemberIdPath(), (std::vector<int>{1, 2}));
  EXPECT_TRUE(it.getPartialMemberPath()->empty());
  EXPECT_TRUE(it.hasTreeChanged() && !it.isBitStream() && it.isValid());
}

TEST(FITreeIterator, OwnsAPlaceOfItsOwn) {
  {
    Place place(0);
    FITreeIterator null;
    EXPECT_TRUE(null.isNull() && FITreeIterator(null).isNull());
    FITreeIterator clone(&place, true), constClone(static_cast<const FITreeIteratorImpl*>(&place));
    FITreeIterator taken(new Place(2), false), copy(taken);
    EXPECT_EQ(Place::living, 5);
    copy = clone;
    EXPECT_TRUE(copy == constClone && copy != taken);
    FITreeIterator& self = copy;
    copy = self;
    EXPECT_TRUE(copy == clone);
    copy = null;
    EXPECT_TRUE(copy.isNull());
    EXPECT_EQ(Place::living, 4);
  }
  EXPECT_EQ(Place::living, 0);
}

class NoTree : public FIMessageTree {
 public:
  const unsigned short* getProjectId() const override { return nullptr; }
  int getNumProjDependencies() const override { return 0; }
  const unsigned short* getProjDependency(int) const override { return nullptr; }
  WorkerInfoPtr getMsgStartWorkerInfo() const override { return WorkerInfoPtr::defaultWIP; }
  WorkerInfoPtr getMsgEndWorkerInfo() const override { return WorkerInfoPtr::defaultWIP; }
  FITreeIterator getMsgHeaderIterator() const override { return {}; }
  FITreeIterator getMsgContentIterator() const override { return {new Place(0), false}; }
  FITreeIterator getMsgFooterIterator() const override { return {}; }
  const unsigned short* getMsgNamespaceURI() const override { return nullptr; }
};

TEST(FITreeIterator, HeadersAreMarkedAliveAndDead) {
  EXPECT_EQ(headerOfA<FITreeIterator>("QVTI"), "QVTI 0 24 / 0OXR QVTI 0 24");
  EXPECT_EQ(headerOfA<NoTree>("QVTT"), "QVTT 32 48 / 0OXR QVTT 32 48");
}

}  // namespace
}  // namespace oxr::test
