#include "arguments.hpp"

#include <pybind11/stl.h>

#include <algorithm>

#include "records/plan/nearname.hpp"
#include "records/program/help/model.hpp"

namespace py = pybind11;

namespace oxr::python {

namespace {

template <class Options>
rec::CommandText textOf(void (*add)(CLI::App&, Options&)) {
  Options options;
  CLI::App part;
  add(part, options);
  return rec::textOf(part);
}

rec::CommandText textOf(const std::string& function) {
  if (function == "write") return textOf(rec::addRecordWritingOptions);
  if (function == "layout") return textOf(addLayoutOptions);
  return textOf(rec::addReadingOptions);
}

std::string keywordOf(const std::string& option) {
  std::string keyword = option.substr(option.find_first_not_of('-'));
  std::replace(keyword.begin(), keyword.end(), '-', '_');
  return keyword;
}

py::dict options(const std::string& function) {
  py::dict found;
  for (const rec::OptionText& option : textOf(function).options) {
    const std::string& name = option.names.back();
    if (option.isArgument || name == "--help") continue;
    found[py::str(keywordOf(name))] = py::make_tuple(name, option.value, option.words, option.help, option.isRequired);
  }
  return found;
}

}  // namespace

void addLayoutOptions(CLI::App& command, rec::CopybookSource& copybook) {
  rec::addCopybookOptions(command, copybook);
}

void addArguments(py::module_& module) {
  module.def("options", &options);
  module.def("nearest", [](const std::string& name, const std::vector<std::string>& names) {
    const std::vector<std::string_view> views(names.begin(), names.end());
    return std::string(rec::nearestName(name, views));
  });
}

}  // namespace oxr::python
