// Any text must give a layout that holds together, or a CopybookError that names a place in it.
// The first byte chooses the format; the rest is the copybook.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "records/copybook/copybook.hpp"

namespace {

using namespace oxr::rec;

void require(bool holds) {
  if (!holds) std::abort();
}

void checkLinks(const Layout& layout, ItemIndex i) {
  const Item& item = layout.items[i];
  require(item.next > i && item.next <= layout.items.size());
  require((item.next > i + 1) == item.isGroup());
  require(i == 0 ? item.parent == kNoItem : item.parent < i && item.next <= layout.items[item.parent].next);
  for (ItemIndex child = i + 1; child < item.next; child = layout.items[child].next)
    require(layout.items[child].parent == i);
  if (item.redefines == kNoItem) return;
  const Item& origin = layout.items[item.redefines];
  require(item.redefines < i && origin.parent == item.parent && origin.redefines == kNoItem && origin.isRedefined);
  require(item.offset == origin.offset && item.areaSize == 0 && origin.areaSize >= item.totalSize());
  require(!item.movesWhatFollows() && !origin.movesWhatFollows());
}

// Children follow one another without gaps and fill their group.
void checkSizes(const Layout& layout, ItemIndex group) {
  std::uint64_t end = 0;
  bool isMoved = false;
  for (ItemIndex i = group + 1; i < layout.items[group].next; i = layout.items[i].next) {
    const Item& item = layout.items[i];
    require(item.size > 0 && item.occurs.min <= item.occurs.max && item.occurs.max > 0);
    require(std::uint64_t{item.size} * item.occurs.max <= kMaxRecordBytes);
    if (item.redefines != kNoItem) continue;
    require(item.offset == end && item.hasFixedOffset == !isMoved && item.areaSize >= item.totalSize());
    end += item.areaSize;
    isMoved = isMoved || item.movesWhatFollows();
  }
  require(end == layout.items[group].size && end <= kMaxRecordBytes);
  require(layout.items[group].hasVariableSize == isMoved);
}

// A counter is an integer in front of the array and lies in no array that the counted one isn't in.
void checkCounter(const Layout& layout, ItemIndex array) {
  const Occurs& occurs = layout.items[array].occurs;
  if (!occurs.isCounted()) return;
  require(occurs.isArray && occurs.counter < layout.counters.size());
  const ItemIndex counter = layout.counters[occurs.counter];
  const Item& item = layout.items[counter];
  require(counter < array && item.counterSlot == occurs.counter && item.digits > 0 && item.scale == 0);
  for (ItemIndex i = counter; i != kNoItem; i = layout.items[i].parent) {
    require(i == counter || layout.items[i].holdsCounter);
    require(!layout.items[i].occurs.isArray || (i < array && array < layout.items[i].next));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
  CopybookOptions options;
  options.format = static_cast<SourceFormat>(data[0] % 3);
  try {
    const Layout layout = readCopybook(text, "fuzz.cob", options);
    require(!layout.items.empty() && layout.record().isGroup() && layout.record().next == layout.items.size());
    for (ItemIndex i = 0; i < layout.items.size(); ++i) {
      checkLinks(layout, i);
      checkCounter(layout, i);
      if (layout.items[i].isGroup()) checkSizes(layout, i);
    }
    require(!describe(layout).empty());
  } catch (const CopybookError& error) {
    require(error.line() <= std::count(text.begin(), text.end(), '\n') + 1 && !error.message().empty());
  }
  return 0;
}
