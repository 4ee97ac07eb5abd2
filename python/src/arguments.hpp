#pragma once

#include <pybind11/pybind11.h>

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "errors.hpp"
#include "oxrrec/decode.hpp"
#include "oxrrec/encode/encode.hpp"

// The options of the program are those of the module: what it adds to its command line is what Python's keywords are
// looked up in, and a call's keywords come here as arguments of a command line.

namespace oxr::python {

using Arguments = std::vector<std::string>;

template <class Options>
Options readArguments(Arguments arguments, void (*add)(CLI::App&, Options&)) {
  Options options;
  CLI::App part;
  add(part, options);
  // The input is a parameter of its own.
  if (CLI::Option* const input = part.get_option_no_throw("INPUT")) input->required(false);
  // The parser takes the arguments in reverse order.
  std::reverse(arguments.begin(), arguments.end());
  try {
    part.parse(std::move(arguments));
  } catch (const CLI::ParseError& error) {
    throw OptionFault(error.what());
  }
  return options;
}

// What a layout needs.
void addLayoutOptions(CLI::App& command, rec::CopybookSource& copybook);

// Puts `options(function)`, a dict of keyword to (name, value, words, help, required), into the module, and
// `nearest(name, names)`.
void addArguments(pybind11::module_& module);

}  // namespace oxr::python
