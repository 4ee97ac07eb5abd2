#pragma once

#include <optional>

#include "records/layout.hpp"
#include "records/plan/choice.hpp"

namespace oxr::rec {

// Where a field can be found when a walk stands before an item.
struct Place {
  PlaceFrom from;
  std::uint32_t offset;  // from `from`; for `here` as in Step
};

// Nothing if counts between the two move one of them, or if the field lies in an array that the item is not in.
// `arraysAtFullSize`: counts move nothing.
std::optional<Place> placeOf(const Layout& layout, ItemIndex field, ItemIndex item, bool arraysAtFullSize);
// The same for a walk that stands before the record.
std::optional<Place> placeInRecord(const Layout& layout, ItemIndex field, bool arraysAtFullSize);

}  // namespace oxr::rec
