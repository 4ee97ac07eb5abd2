#pragma once

#include "records/program/program.hpp"

namespace oxr::rec {

// The whole of a program's main(), once its signals are set; the result is the exit code. Whatever memory there is, the
// program ends with a message and an exit code.
int runProcess(const Program& program, int count, const char* const* arguments);

}  // namespace oxr::rec
