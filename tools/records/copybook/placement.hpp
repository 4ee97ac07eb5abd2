#pragma once

#include <span>
#include <vector>

#include "records/copybook/copybook.hpp"
#include "records/copybook/entries.hpp"
#include "records/layout.hpp"

namespace oxr::rec::copybook {

// Gives the items of a record their offsets and the groups their sizes. The tree, the shape of the fields and the
// counters of arrays must be known. `entries` has the entry of each item, or null; `boundaries` the boundary in bytes
// that each item must start on, 1 for any place. Throws CopybookError for a record that is too long.
void placeItems(const Source& source, std::span<const Entry* const> entries, std::vector<std::uint32_t> boundaries,
                Dialect dialect, std::vector<Item>& items);

}  // namespace oxr::rec::copybook
