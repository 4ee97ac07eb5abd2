#include "records/plan/place.hpp"

#include <algorithm>

namespace oxr::rec {

namespace {

class Places {
 public:
  Places(const Layout& layout, bool arraysAtFullSize) : items_(layout.items), isFull_(arraysAtFullSize) {}

  // From the start of one occurrence of `group` to the item, if neither arrays nor counts make it move.
  std::optional<std::uint32_t> within(ItemIndex group, ItemIndex item) const {
    std::uint32_t offset = 0;
    for (; item != group; item = items_[item].parent) {
      if (items_[item].occurs.isArray || !(isFull_ || items_[item].hasFixedOffset)) return std::nullopt;
      offset += items_[item].offset;
    }
    return offset;
  }

  ItemIndex innermostArrayAround(ItemIndex item) const {
    do
      item = items_[item].parent;
    while (item != kNoItem && !items_[item].occurs.isArray);
    return item;
  }

  // As `Step::offset`.
  std::uint32_t atLargest(ItemIndex item) const {
    std::uint32_t offset = 0;
    for (; item != 0; item = items_[item].parent)
      offset += items_[item].offset;
    return offset;
  }

  // Does the distance between the two stay the same?
  bool moveTogether(ItemIndex field, ItemIndex item) const {
    const ItemIndex group = innermostCommonGroup(field, item);
    const ItemIndex ofField = childTowards(group, field);
    const ItemIndex ofItem = childTowards(group, item);
    if (!stays(field, ofField) || !stays(item, ofItem)) return false;
    if (items_[ofField].occurs.isArray || (ofItem != item && items_[ofItem].occurs.isArray)) return false;
    const ItemIndex last = std::max(ofField, ofItem);
    for (ItemIndex i = std::min(ofField, ofItem); i < last; i = items_[i].next)
      if (items_[i].movesWhatFollows() && !isFull_) return false;
    return true;
  }

 private:
  bool isWithin(ItemIndex item, ItemIndex group) const { return group <= item && item < items_[group].next; }

  ItemIndex innermostCommonGroup(ItemIndex a, ItemIndex b) const {
    ItemIndex group = items_[a].parent;
    while (group == b || !isWithin(b, group))
      group = items_[group].parent;
    return group;
  }

  ItemIndex childTowards(ItemIndex group, ItemIndex item) const {
    while (items_[item].parent != group)
      item = items_[item].parent;
    return item;
  }

  // Has `item` a fixed place in `group`, which it may be itself?
  bool stays(ItemIndex item, ItemIndex group) const { return item == group || within(group, item).has_value(); }

  const std::vector<Item>& items_;
  const bool isFull_;
};

}  // namespace

std::optional<Place> placeInRecord(const Layout& layout, ItemIndex field, bool arraysAtFullSize) {
  const auto offset = Places(layout, arraysAtFullSize).within(0, field);
  if (!offset) return std::nullopt;
  return Place{PlaceFrom::record, *offset};
}

std::optional<Place> placeOf(const Layout& layout, ItemIndex field, ItemIndex item, bool arraysAtFullSize) {
  if (const auto place = placeInRecord(layout, field, arraysAtFullSize)) return place;
  const Places places(layout, arraysAtFullSize);
  const ItemIndex array = places.innermostArrayAround(item);
  if (array != kNoItem && array < field && field < layout.items[array].next)
    if (const auto offset = places.within(array, field)) return Place{PlaceFrom::occurrence, *offset};
  if (places.moveTogether(field, item)) return Place{PlaceFrom::here, places.atLargest(field)};
  return std::nullopt;
}

}  // namespace oxr::rec
