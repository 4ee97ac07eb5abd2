#pragma once

#include <span>

#include "oxrrec/console.hpp"

namespace oxr::rec {

// The program. `arguments` without its name; the result is the exit code.
int run(std::span<const char* const> arguments, const Console& console);

}  // namespace oxr::rec
