#pragma once

#include <span>

#include "records/copybook/entries.hpp"
#include "records/layout.hpp"

namespace oxr::rec::copybook {

// Finds the counter of each counted array, gives it a slot in layout.counters and marks the groups that hold it.
// `entries` has the entry of each item, or null. The tree and the fields of the items must be known, the sizes of
// groups need not. Throws CopybookError.
void findCounters(const Source& source, std::span<const Entry* const> entries, Layout& layout);

}  // namespace oxr::rec::copybook
