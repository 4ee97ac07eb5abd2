#pragma once

#include "records/program/program.hpp"

namespace oxr::rec {

extern const Program kOxrrec;

// The program. `arguments` without its name; the result is the exit code.
int run(std::span<const char* const> arguments, const Console& console);

}  // namespace oxr::rec
