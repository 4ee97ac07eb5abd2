#include "records/copybook/placement.hpp"

#include <algorithm>

// One walk down the tree places each item after the one before it. It carries the offset in the record, since
// SYNCHRONIZED counts boundaries from there, with all arrays before the item at their largest:
//
//   slack = the bytes that are missing to the item's boundary;  offset = end of the item before + slack
//
// On the mainframe a group that starts with such an item is put on the boundary itself, elsewhere the slack lies within
// the group. An occurrence of an array is rounded up to the largest boundary in it, so that all lie alike. An item that
// redefines another starts where that one does, whatever its boundary.

namespace oxr::rec::copybook {

namespace {

constexpr std::uint64_t missingTo(std::uint64_t boundary, std::uint64_t at) {
  return (boundary - at % boundary) % boundary;
}
static_assert(missingTo(4, 5) == 3 && missingTo(4, 8) == 0 && missingTo(1, 7) == 0);

class Placer {
 public:
  Placer(const Source& source, std::span<const Entry* const> entries, std::vector<std::uint32_t> boundaries,
         Dialect dialect, std::vector<Item>& items)
      : source_(source),
        entries_(entries),
        boundaries_(std::move(boundaries)),
        dialect_(dialect),
        items_(items),
        fields_(items.size(), 0) {}

  void place() {
    findBoundaries();
    placeChildren(0, 0);
  }

 private:
  // Gives each group the largest boundary of what lies in it. A field that redefines another is not put on its own.
  void findBoundaries() {
    for (auto i = static_cast<ItemIndex>(items_.size()); i-- > 1;) {
      if (items_[i].redefines != kNoItem && !items_[i].isGroup()) boundaries_[i] = 1;
      std::uint32_t& ofGroup = boundaries_[items_[i].parent];
      ofGroup = std::max(ofGroup, boundaries_[i]);
    }
  }

  std::uint32_t startBoundary(ItemIndex item) const {
    if (dialect_ == Dialect::mainframe)
      while (items_[item].isGroup())
        ++item;
    return items_[item].isGroup() ? 1 : boundaries_[item];
  }

  // `start` is the offset of the group's first occurrence in the record.
  void placeChildren(ItemIndex group, std::uint64_t start) {
    std::uint64_t end = 0;  // of all placed so far
    bool isMoved = false;
    for (ItemIndex child = group + 1; child < items_[group].next; child = items_[child].next) {
      Item& item = items_[child];
      const bool redefines = item.redefines != kNoItem;
      Item& origin = redefines ? items_[item.redefines] : item;
      if (redefines) {
        item.offset = origin.offset;
        item.hasFixedOffset = origin.hasFixedOffset;
      } else {
        item.slack = static_cast<std::uint32_t>(missingTo(startBoundary(child), start + end));
        item.offset = static_cast<std::uint32_t>(end + item.slack);
        item.hasFixedOffset = !isMoved;
      }
      if (item.isGroup()) placeChildren(child, start + item.offset);
      const std::uint32_t total = totalSize(child);
      origin.areaSize = std::max(origin.areaSize, total);
      end = std::max(end, std::uint64_t{item.offset} + total);
      isMoved = isMoved || item.movesWhatFollows();
      if (end > kMaxRecordBytes) source_.raise(entries_[child]->place, "the record is longer than 256 MiB");
      countFields(child);
    }
    if (items_[group].occurs.isArray) end += missingTo(boundaries_[group], end);
    items_[group].size = static_cast<std::uint32_t>(end);
    items_[group].hasVariableSize = isMoved;
  }

  std::uint32_t totalSize(ItemIndex item) const {
    const std::uint64_t total = std::uint64_t{items_[item].size} * items_[item].occurs.max;
    if (total > kMaxRecordBytes) source_.raise(entries_[item]->place, "the item is longer than 256 MiB");
    return static_cast<std::uint32_t>(total);
  }

  // Adds what an item with its occurrences has to the group around it.
  void countFields(ItemIndex item) {
    const std::uint64_t each = items_[item].isGroup() ? fields_[item] : 1;
    std::uint64_t& ofGroup = fields_[items_[item].parent];
    ofGroup += each * items_[item].occurs.max;
    if (ofGroup > kMaxRecordFields) source_.raise(entries_[item]->place, "the record has more than 1,048,576 fields");
  }

  const Source& source_;
  std::span<const Entry* const> entries_;
  std::vector<std::uint32_t> boundaries_;
  const Dialect dialect_;
  std::vector<Item>& items_;
  std::vector<std::uint64_t> fields_;  // of one occurrence of each group, at most kMaxRecordFields
};

}  // namespace

void placeItems(const Source& source, std::span<const Entry* const> entries, std::vector<std::uint32_t> boundaries,
                Dialect dialect, std::vector<Item>& items) {
  Placer(source, entries, std::move(boundaries), dialect, items).place();
}

}  // namespace oxr::rec::copybook
