#pragma once

#include <span>
#include <string_view>

#include "records/copybook/entries.hpp"

namespace oxr::rec {

// Lays out one record: the named one, or the first if `recordName` is empty. Throws CopybookError.
Layout buildLayout(const CopybookSource& source, std::span<const Entry> entries, std::string_view recordName);

}  // namespace oxr::rec
