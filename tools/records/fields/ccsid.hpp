#pragma once

#include <optional>
#include <string_view>

namespace oxr::rec {

// The number of a code page by its number or one of its usual names, in any case of letters: "37", "cp037", "IBM-1047",
// "utf-8", "latin-1". Nothing if it is none of these; whether there is a table for the number shows later.
std::optional<int> ccsidOf(std::string_view name);

}  // namespace oxr::rec
