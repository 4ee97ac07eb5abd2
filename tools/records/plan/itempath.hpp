#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "records/layout.hpp"

namespace oxr::rec {

// How people name an item: "AMOUNT", or "MOVEMENT.AMOUNT" for the one below MOVEMENT. Groups may be left out, unless
// that makes it the whole path of another item, with the record's name or without; letters are taken in any case.
class ItemPath {
 public:
  explicit ItemPath(std::string_view text);

  const std::string& text() const { return text_; }
  // All items that the path names.
  std::vector<ItemIndex> in(const Layout& layout) const;
  // The path with the letters that the copybook has for an item that it names.
  std::string spelledAs(const Layout& layout, ItemIndex item) const;
  // "; is CUSTOMER-NAME meant?" if an item has a name much like it, else empty.
  std::string hint(const Layout& layout) const;

 private:
  std::vector<ItemIndex> partsIn(const Layout& layout, ItemIndex item) const;
  bool isWhole(const Layout& layout, const std::vector<ItemIndex>& parts) const;

  std::string text_;
  std::vector<std::string> parts_;  // outermost first
};

// "several items have that name: G.T (orders.cob:3) and H.T (orders.cob:7)"
std::string severalItems(const Layout& layout, const std::vector<ItemIndex>& items);

bool isSameName(std::string_view a, std::string_view b);

}  // namespace oxr::rec
