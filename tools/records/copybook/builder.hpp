#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "records/copybook/copybook.hpp"
#include "records/copybook/entries.hpp"
#include "records/layout.hpp"

namespace oxr::rec::copybook {

// The names of all records, in the order of the entries.
std::vector<std::string> recordNames(std::span<const Entry> entries);

// Lays out one record: the named one, or the first if `recordName` is empty. Throws CopybookError.
Layout buildLayout(const Source& source, std::span<const Entry> entries, std::string_view recordName,
                   const CopybookOptions& options);

}  // namespace oxr::rec::copybook
