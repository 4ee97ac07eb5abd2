#include "records/plan/itempath.hpp"

#include <algorithm>

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

bool ItemPath::names(const Layout& layout, ItemIndex item) const {
  if (layout.items[item].isFiller() || !isSameName(layout.items[item].name, parts_.back())) return false;
  ItemIndex group = layout.items[item].parent;
  for (std::size_t i = parts_.size() - 1; i-- > 0;) {
    while (group != kNoItem && !isSameName(layout.items[group].name, parts_[i]))
      group = layout.items[group].parent;
    if (group == kNoItem) return false;
    group = layout.items[group].parent;
  }
  return true;
}

std::vector<ItemIndex> ItemPath::in(const Layout& layout) const {
  std::vector<ItemIndex> found;
  for (ItemIndex i = 0; i < layout.items.size(); ++i)
    if (names(layout, i)) found.push_back(i);
  return found;
}

std::string ItemPath::hint(const Layout& layout) const {
  std::vector<std::string_view> names;
  for (const Item& item : layout.items)
    if (!item.isFiller()) names.emplace_back(item.name);
  const std::string_view best = nearestName(parts_.back(), names);
  return best.empty() ? std::string() : "; is " + std::string(best) + " meant?";
}

}  // namespace oxr::rec
