#pragma once

#include <span>
#include <string_view>

namespace oxr::rec {

// The one of the names that is much like `given`, in any case of letters; empty if none is.
std::string_view nearestName(std::string_view given, std::span<const std::string_view> names);

}  // namespace oxr::rec
