#include "records/plan/itempath.hpp"

#include <algorithm>

#include "records/fields/faults.hpp"
#include "records/plan/nearname.hpp"

namespace oxr::rec {

namespace {

char upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

}  // namespace

bool isSameName(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return upper(x) == upper(y); });
}

ItemPath::ItemPath(std::string_view text) : text_(text) {
  for (std::size_t begin = 0, end; begin <= text.size(); begin = end + 1) {
    end = std::min(text.find('.', begin), text.size());
    parts_.emplace_back(text.substr(begin, end - begin));
  }
}

// The item that each part names, outermost first; none if the path does not name `item`.
std::vector<ItemIndex> ItemPath::partsIn(const Layout& layout, ItemIndex item) const {
  std::vector<ItemIndex> found(parts_.size());
  ItemIndex at = item;
  for (std::size_t i = parts_.size(); i-- > 0;) {
    const auto isPart = [&] { return !layout.items[at].isFiller() && isSameName(layout.items[at].name, parts_[i]); };
    // Only groups may be left out.
    while (at != kNoItem && at != item && !isPart())
      at = layout.items[at].parent;
    if (at == kNoItem || !isPart()) return {};
    found[i] = at;
    at = layout.items[at].parent;
  }
  return found;
}

// Whether no group with a name is left out, but the record.
bool ItemPath::isWhole(const Layout& layout, const std::vector<ItemIndex>& parts) const {
  std::size_t named = 0;
  for (ItemIndex at = parts.back(); at != kNoItem && at != 0; at = layout.items[at].parent)
    if (!layout.items[at].isFiller()) ++named;
  return parts_.size() == named + (parts.front() == 0 ? 1 : 0);
}

std::vector<ItemIndex> ItemPath::in(const Layout& layout) const {
  std::vector<ItemIndex> found, whole;
  for (ItemIndex i = 0; i < layout.items.size(); ++i) {
    const std::vector<ItemIndex> parts = partsIn(layout, i);
    if (parts.empty()) continue;
    found.push_back(i);
    if (isWhole(layout, parts)) whole.push_back(i);
  }
  return whole.empty() ? found : whole;
}

std::string ItemPath::spelledAs(const Layout& layout, ItemIndex item) const {
  std::string path;
  for (const ItemIndex part : partsIn(layout, item))
    path += (path.empty() ? "" : ".") + layout.items[part].name;
  return path;
}

std::string ItemPath::hint(const Layout& layout) const {
  std::vector<std::string_view> names;
  for (const Item& item : layout.items)
    if (!item.isFiller()) names.emplace_back(item.name);
  const std::string_view best = nearestName(parts_.back(), names);
  return best.empty() ? std::string() : "; is " + std::string(best) + " meant?";
}

std::string severalItems(const Layout& layout, const std::vector<ItemIndex>& items) {
  std::string list;
  for (const ItemIndex item : items) {
    const char* const separator = list.empty() ? "" : item == items.back() ? " and " : ", ";
    list += separator + fieldPath(layout, item, {}) + " (" + layout.placeOf(layout.items[item]) + ')';
  }
  return "several items have that name: " + list;
}

}  // namespace oxr::rec
