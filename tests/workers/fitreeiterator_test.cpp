#include "fitreeiterator.hpp"

#include <gtest/gtest.h>

#include "harness/headers.hpp"
#include "workers/tree.hpp"

namespace oxr::test {
namespace {

// All that an iterator does but to own a place is to hand a call on.
TEST(FITreeIterator, OwnsAPlaceOfItsOwn) {
  EXPECT_EQ(headerOfA<FITreeIterator>("QVTI"), "QVTI 0 24 / 0OXR QVTI 0 24");
  {
    const std::vector<Node> roots{Node{{}, {}, PWFData(NOTHING), PWFData(NOTHING), {Node{}}}};
    Place place(roots);
    FITreeIterator null;
    FITreeIterator clone(&place, true), constClone(static_cast<const FITreeIteratorImpl*>(&place));
    FITreeIterator taken(new Place(roots), false);
    EXPECT_TRUE(taken.moveToFirstChild() && taken != clone);
    FITreeIterator copy(taken);
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
