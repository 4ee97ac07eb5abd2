#pragma once

#include <span>
#include <string>
#include <variant>

#include "oxrrec/decode.hpp"

namespace oxr::rec {

// What to say instead of working: help, the version, or what is wrong with the arguments.
struct Notice {
  bool isError = false;
  std::string text;  // ends in a newline
};

// Reads the arguments, the program's name not among them.
//
//   oxrrec decode --copybook FILE --ccsid N [options] INPUT
std::variant<DecodeOptions, Notice> readOptions(std::span<const char* const> arguments);

}  // namespace oxr::rec
