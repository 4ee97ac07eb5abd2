#pragma once

#include <string_view>

namespace oxr::rec {

// The file page.html, which the build puts in.
extern const std::string_view kPageText;

}  // namespace oxr::rec
