#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "records/layout.hpp"

namespace oxr::rec {

// How people name an item: "AMOUNT", or "MOVEMENT.AMOUNT" for the one below MOVEMENT. Groups between may be left out;
// letters are taken in any case.
class ItemPath {
 public:
  explicit ItemPath(std::string_view text);

  const std::string& text() const { return text_; }
  // All items that the path names.
  std::vector<ItemIndex> in(const Layout& layout) const;
  // "; is CUSTOMER-NAME meant?" if an item has a name much like it, else empty.
  std::string hint(const Layout& layout) const;

 private:
  bool names(const Layout& layout, ItemIndex item) const;

  std::string text_;
  std::vector<std::string> parts_;  // outermost first
};

bool isSameName(std::string_view a, std::string_view b);

}  // namespace oxr::rec
