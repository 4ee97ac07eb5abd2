#include "layout.hpp"

#include <pybind11/stl.h>

#include <optional>
#include <string>

#include "arguments.hpp"
#include "interpreter.hpp"

namespace py = pybind11;

namespace oxr::python {

namespace {

std::optional<std::string> pathOf(const rec::Layout& layout, rec::ItemIndex item) {
  if (item == rec::kNoItem) return std::nullopt;
  return rec::fieldPath(layout, item, {});
}

py::object optional(const std::string& text) {
  return text.empty() ? py::object(py::none()) : py::object(py::str(text));
}

// In the order of the members of Python's Field.
py::tuple tupleOf(const rec::Layout& layout, rec::ItemIndex index) {
  const rec::Item& item = layout.items[index];
  const rec::Occurs& occurs = item.occurs;
  const bool isNumber = item.digits != 0;
  return py::make_tuple(rec::fieldPath(layout, index, {}), optional(item.name), item.level,
                        std::string(rec::kindName(item.kind)), optional(item.picture), layout.recordOffset(index),
                        item.size, occurs.isArray ? py::object(py::make_tuple(occurs.min, occurs.max)) : py::none(),
                        occurs.isCounted() ? pathOf(layout, layout.counters[occurs.counter]) : std::nullopt,
                        pathOf(layout, item.redefines), isNumber ? py::object(py::int_(item.digits)) : py::none(),
                        isNumber ? py::object(py::int_(item.scale)) : py::none(), item.isSigned, item.line);
}

// Record name, names of all records, bytes, whether they differ, the table for people, and the items.
py::tuple layout(const Arguments& arguments) {
  const rec::CopybookSource source = readArguments(arguments, addLayoutOptions);
  const rec::Copybook copybook = released([&] { return rec::Copybook::readFile(source.path, source.options); });
  const rec::Layout layout = copybook.layout(source.options.record);
  py::list items;
  for (rec::ItemIndex index = 0; index < layout.items.size(); ++index)
    items.append(tupleOf(layout, index));
  return py::make_tuple(layout.recordName, copybook.recordNames(), layout.maxSize(), layout.record().hasVariableSize,
                        rec::describe(layout), items);
}

}  // namespace

void addLayout(py::module_& module) {
  module.def("layout", &layout);
}

}  // namespace oxr::python
