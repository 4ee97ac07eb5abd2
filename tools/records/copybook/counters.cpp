#include "records/copybook/counters.hpp"

// OCCURS ... DEPENDING ON names its counter as nested scopes do: of all items with that name, each earlier one that has
// a single value where the array stands may be meant, and the one that shares the innermost group with the array is. An
// array may lie in another one: its counter is then read once for each occurrence if it lies there too.

namespace oxr::rec::copybook {

namespace {

constexpr unsigned kMaxCounterDigits = 18;  // a count of any kind fits 64 bits

class CounterFinder {
 public:
  CounterFinder(const Source& source, Layout& layout)
      : source_(source), items_(layout.items), counters_(layout.counters) {}

  void find(ItemIndex array, const std::vector<Token>& names);

 private:
  bool isNamed(ItemIndex item, const std::vector<Token>& names) const;
  bool isReadable(ItemIndex counter, ItemIndex array) const;
  ItemIndex innermostCommonGroup(ItemIndex a, ItemIndex b) const;
  ItemIndex choose(ItemIndex array, const std::vector<Token>& names) const;

  // Does `item` lie in `group`, or is it the same?
  bool isWithin(ItemIndex item, ItemIndex group) const { return group <= item && item < items_[group].next; }

  const Source& source_;
  std::vector<Item>& items_;
  std::vector<ItemIndex>& counters_;
};

// Are the names those of the item and of groups around it, from the inside outwards?
bool CounterFinder::isNamed(ItemIndex item, const std::vector<Token>& names) const {
  if (!equalIgnoringCase(items_[item].name, names.front().text)) return false;
  ItemIndex group = items_[item].parent;
  for (std::size_t i = 1; i < names.size(); ++i) {
    while (group != kNoItem && !equalIgnoringCase(items_[group].name, names[i].text))
      group = items_[group].parent;
    if (group == kNoItem) return false;
    group = items_[group].parent;
  }
  return true;
}

// Does a counter before the array have one value when the array comes? Then each array that it lies in is one
// that the counted array lies in too.
bool CounterFinder::isReadable(ItemIndex counter, ItemIndex array) const {
  for (ItemIndex i = counter; i != kNoItem; i = items_[i].parent)
    if (items_[i].occurs.isArray && !isWithin(array, i)) return false;
  return true;
}

// The innermost group that both lie in. Of two groups around an item the inner one has the larger index, so that
// choose() can compare what this returns.
ItemIndex CounterFinder::innermostCommonGroup(ItemIndex a, ItemIndex b) const {
  ItemIndex group = items_[a].parent;
  while (!isWithin(b, group))
    group = items_[group].parent;
  return group;
}

// Of several items of that name the one that shares the innermost group with the array is chosen.
ItemIndex CounterFinder::choose(ItemIndex array, const std::vector<Token>& names) const {
  const Token& name = names.front();
  ItemIndex best = kNoItem;
  ItemIndex bestGroup = 0;
  bool isAmbiguous = false;
  bool isEarlier = false;
  for (ItemIndex i = 1; i < array; ++i) {
    if (!isNamed(i, names)) continue;
    isEarlier = true;
    if (!isReadable(i, array)) continue;
    const ItemIndex group = innermostCommonGroup(i, array);
    if (best != kNoItem && group < bestGroup) continue;
    isAmbiguous = best != kNoItem && group == bestGroup;
    best = i;
    bestGroup = group;
  }
  if (isAmbiguous) source_.raise(name.place, "there are several " + quoted(name) + ": add OF and the name of a group");
  if (best != kNoItem) return best;
  if (isEarlier) source_.raise(name.place, quoted(name) + " lies in an array that this one does not lie in");
  for (ItemIndex i = array; i < items_.size(); ++i)
    if (isNamed(i, names)) source_.raise(name.place, quoted(name) + " must stand in front of the array");
  source_.raise(name.place, "DEPENDING ON names " + quoted(name) + ", which is no item of the record");
}

void CounterFinder::find(ItemIndex array, const std::vector<Token>& names) {
  const ItemIndex counter = choose(array, names);
  Item& item = items_[counter];
  if (item.digits == 0 || item.scale != 0 || item.digits > kMaxCounterDigits)
    source_.raise(names.front().place, quoted(names.front()) + " is not an integer of up to 18 digits");
  if (item.counterSlot == kNoSlot) {
    item.counterSlot = static_cast<CounterSlot>(counters_.size());
    counters_.push_back(counter);
    for (ItemIndex group = item.parent; group != kNoItem; group = items_[group].parent)
      items_[group].holdsCounter = true;
  }
  items_[array].occurs.counter = item.counterSlot;
}

}  // namespace

void findCounters(const Source& source, std::span<const Entry* const> entries, Layout& layout) {
  CounterFinder finder(source, layout);
  for (ItemIndex i = 0; i < entries.size(); ++i)
    if (entries[i] && entries[i]->occurs && !entries[i]->occurs->counter.empty())
      finder.find(i, entries[i]->occurs->counter);
}

}  // namespace oxr::rec::copybook
