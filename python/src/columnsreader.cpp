#include "columnsreader.hpp"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "arguments.hpp"
#include "busy.hpp"
#include "columnhandler.hpp"
#include "interpreter.hpp"
#include "reading.hpp"
#include "textcache.hpp"

namespace py = pybind11;

namespace oxr::python {

namespace {

// The arrays of a column, as numpy has them, while a chunk is filled.
struct Arrays {
  py::array values{};
  py::array isMissing{};  // integer, scaled
  py::array objects{};    // object, and numbers of which one is too large: null where there is none
};

py::array emptyArray(const char* type, std::uint32_t rows) {
  return py::array(py::dtype(type), std::vector<py::ssize_t>{rows});
}

const char* arrayType(ColumnType type) {
  switch (type) {
    case ColumnType::integer:
    case ColumnType::scaled:
      return "int64";
    case ColumnType::real:
    case ColumnType::decimal:
      return "float64";
    case ColumnType::days:
      return "datetime64[D]";
    case ColumnType::instants:
      return "datetime64[us]";
    case ColumnType::object:
      break;
  }
  return "object";
}

// The array with more rows, which takes what is in it: objects have one owner.
py::array grown(py::array& array, std::uint32_t rows) {
  py::array larger(array.dtype(), std::vector<py::ssize_t>{rows});
  const auto bytes = static_cast<std::size_t>(array.nbytes());
  std::memcpy(larger.mutable_data(), array.data(), bytes);
  if (array.dtype().kind() == 'O') std::memset(array.mutable_data(), 0, bytes);
  return larger;
}

// So many values at a time stay in the processor's cache until their objects are made; of few columns no more rows than
// help.
constexpr std::uint32_t kValuesAtOnce = 32768, kLeastRowsAtOnce = 32, kMostRowsAtOnce = 1024;

class Columns {
 public:
  Columns(const rec::DecodeOptions& options, const py::object& file, std::uint32_t rows, DecimalForm form)
      : reading_(Reading::open(options, file)),
        leavesBadOut_(options.onError == rec::OnError::skip),
        rows_(rows),
        handler_(reading_.plan(), form),
        rowsAtOnce_(std::clamp(kValuesAtOnce / static_cast<std::uint32_t>(handler_.columns().size() + 1),
                               kLeastRowsAtOnce, kMostRowsAtOnce)),
        caches_(handler_.columns().size(), TextCache(handler_.columns().size())),
        capacity_(std::min(rows_, rowsAtOnce_)) {
    for (const std::string& name : handler_.names().names())
      names_.emplace_back(name);
    reading_.setHandler(handler_, nullptr);
  }

  // Names and arrays of the next chunk, an array and what is missing in it; None at the end.
  py::object next();
  std::string notes() const { return reading_.notes(); }
  const Source& source() const { return reading_.source(); }
  void requireIdle() const { busy_.requireIdle(); }

 private:
  void begin();
  void reserve(std::uint32_t rows);
  void attach();
  void fill(std::uint32_t most);
  void makeObjects();
  py::object shortened(const py::array& array) const;
  py::object finish(const Column& column, const Arrays& arrays) const;
  py::object wholly(const Column& column, const Arrays& arrays) const;

  Reading reading_;
  const bool leavesBadOut_;
  const std::uint32_t rows_;
  ColumnHandler handler_;
  const std::uint32_t rowsAtOnce_;
  std::vector<TextCache> caches_;
  std::vector<py::str> names_;
  std::vector<Arrays> arrays_;  // of the chunk in hand, by column; none before it is begun
  std::uint32_t capacity_;      // rows that they have room for
  std::uint32_t prepared_ = 0;  // rows of it
  std::exception_ptr ending_;
  bool isAtEnd_ = false;
  Busy busy_{"these columns"};
};

// Arrays for as many rows as the chunk before had, at first for a few: a file may have far fewer than a chunk may.
void Columns::begin() {
  handler_.clear();
  prepared_ = 0;
  std::vector<Arrays> all(handler_.columns().size());
  for (std::size_t i = 0; i < all.size(); ++i) {
    const ColumnType type = handler_.columns()[i].shape.type;
    if (type == ColumnType::object) continue;
    all[i].values = emptyArray(arrayType(type), capacity_);
    if (type == ColumnType::integer || type == ColumnType::scaled) all[i].isMissing = emptyArray("bool", capacity_);
  }
  arrays_ = std::move(all);
  attach();
}

// Makes room for so many rows.
void Columns::reserve(std::uint32_t rows) {
  if (rows <= capacity_) return;
  const std::uint32_t most = std::min(rows_, std::max(rows, 2 * capacity_));
  for (Arrays& arrays : arrays_)
    for (py::array* const array : {&arrays.values, &arrays.isMissing, &arrays.objects})
      if (array->size() != 0) *array = grown(*array, most);
  capacity_ = most;
  attach();
}

// Has the handler write into the arrays.
void Columns::attach() {
  for (std::size_t i = 0; i < arrays_.size(); ++i) {
    Column& column = handler_.columns()[i];
    if (column.shape.type == ColumnType::object) continue;
    void* const values = arrays_[i].values.mutable_data();
    if (column.shape.type == ColumnType::real || column.shape.type == ColumnType::decimal)
      column.reals = static_cast<double*>(values);
    else
      column.numbers = static_cast<std::int64_t*>(values);
    if (arrays_[i].isMissing.size() != 0)
      column.isMissing = static_cast<unsigned char*>(arrays_[i].isMissing.mutable_data());
  }
}

// Without the interpreter: up to so many rows, and not much more of those that are left out. What ends the work is kept
// behind the rows before it.
void Columns::fill(std::uint32_t most) {
  try {
    while (handler_.rows() < most && handler_.begun() < 2 * std::size_t{rowsAtOnce_}) {
      const std::uint32_t before = handler_.rows();
      if (!reading_.next()) {
        isAtEnd_ = true;
        return;
      }
      if (handler_.rows() != before && leavesBadOut_ && !reading_.badFields().empty()) handler_.discard();
    }
  } catch (...) {
    ending_ = std::current_exception();
    isAtEnd_ = true;
  }
}

// What was read stays for the next call if a signal's handler throws.
py::object Columns::next() {
  const Busy::Turn turn(busy_);
  if (arrays_.empty()) begin();
  while (!isAtEnd_ && handler_.rows() < rows_) {
    if (PyErr_CheckSignals() != 0) throw py::error_already_set();
    const std::uint32_t most = std::min(rows_ - handler_.rows(), rowsAtOnce_) + handler_.rows();
    reserve(most);
    {
      const Released interpreter;
      handler_.prepare(prepared_, most);
      prepared_ = std::max(prepared_, most);
      fill(most);
    }
    makeObjects();
  }
  const std::vector<Arrays> arrays = std::exchange(arrays_, {});
  if (handler_.rows() != 0) {
    py::list columns;
    for (std::size_t i = 0; i < arrays.size(); ++i)
      columns.append(py::make_tuple(names_[i], finish(handler_.columns()[i], arrays[i])));
    return columns;
  }
  if (ending_) std::rethrow_exception(std::exchange(ending_, nullptr));
  return py::none();
}

// Of the rows that were filled last.
void Columns::makeObjects() {
  for (std::size_t i = 0; i < arrays_.size(); ++i) {
    const Tape& tape = handler_.columns()[i].objects;
    if (tape.size() == 0) continue;
    if (arrays_[i].objects.size() == 0) arrays_[i].objects = emptyArray("object", capacity_);
    auto** const values = static_cast<PyObject**>(arrays_[i].objects.mutable_data());
    for (const char *at = tape.data(), *const end = at + tape.size(); at != end;) {
      Head head;
      std::memcpy(&head, at, sizeof head);
      const std::uint32_t row = handler_.rowOf()[head.name];
      if (row < handler_.rows())
        Py_XDECREF(std::exchange(values[row], caches_[i].get(head, at + sizeof head).release().ptr()));
      at += sizeof head + Tape::padded(head.size);
    }
  }
  handler_.clearObjects();
}

// The rows that there are; of the last chunk alone, not as a part of an array for more.
py::object Columns::shortened(const py::array& array) const {
  if (handler_.rows() == array.size()) return array;
  return array[py::slice(0, handler_.rows(), 1)].attr("copy")();
}

// An array of a chunk's rows, and an array that tells which ones are missing, or None.
py::object Columns::finish(const Column& column, const Arrays& arrays) const {
  if (column.shape.type == ColumnType::object || arrays.objects.size() != 0)
    return py::make_tuple(wholly(column, arrays), py::none());
  const py::object values = shortened(arrays.values);
  if (column.isMissing == nullptr) return py::make_tuple(values, py::none());
  const bool isWhole =
      std::find(column.isMissing, column.isMissing + handler_.rows(), 1) == column.isMissing + handler_.rows();
  return py::make_tuple(values, isWhole ? py::object(py::none()) : shortened(arrays.isMissing));
}

// An array of objects. Of a column of numbers that one of them is too large for, all are.
py::object Columns::wholly(const Column& column, const Arrays& arrays) const {
  py::array made = arrays.objects.size() != 0 ? arrays.objects : emptyArray("object", handler_.rows());
  auto** const values = static_cast<PyObject**>(made.mutable_data());
  const bool hasNumbers = arrays.values.size() != 0;
  const py::list plain =
      hasNumbers ? py::list(arrays.values[py::slice(0, handler_.rows(), 1)].attr("tolist")()) : py::list();
  for (std::uint32_t row = 0; row < handler_.rows(); ++row) {
    if (values[row] != nullptr) continue;
    const bool isThere = hasNumbers && (column.isMissing == nullptr || column.isMissing[row] == 0);
    values[row] = isThere ? py::object(plain[row]).release().ptr() : Py_NewRef(Py_None);
  }
  return shortened(made);
}

std::unique_ptr<Columns> open(const Arguments& arguments, const py::object& file, std::uint32_t rows,
                              const std::string& decimals) {
  const auto options = readArguments(arguments, rec::addReadingOptions);
  if (!options.nest.empty()) throw OptionFault("nest is not for columns: a row has no records in it");
  if (options.input.records.onUnknown == rec::OnUnknown::isRaw)
    throw OptionFault("on_unknown=\"raw\" is not for columns: a row has the columns of its fields");
  const std::map<std::string, DecimalForm> forms{
      {"decimal", DecimalForm::exact}, {"float", DecimalForm::real}, {"scaled", DecimalForm::scaled}};
  const auto form = forms.find(decimals);
  if (form == forms.end()) throw OptionFault("decimals: " + decimals + " is none of decimal|float|scaled");
  return std::make_unique<Columns>(options, file, rows, form->second);
}

// A file of Python's own may hold who reads it; what of this holds others can be cleared there. It must not be looked
// at while it goes.
void setCollection(PyHeapTypeObject* heapType) {
  PyTypeObject& type = heapType->ht_type;
  type.tp_flags |= Py_TPFLAGS_HAVE_GC;
  type.tp_traverse = [](PyObject* self, visitproc visit, void* arg) {
    Py_VISIT(Py_TYPE(self));
    const auto held = reinterpret_cast<py::detail::instance*>(self)->get_value_and_holder();
    if (held.holder_constructed()) Py_VISIT(held.value_ptr<Columns>()->source().reader());
    return 0;
  };
  type.tp_dealloc = [](PyObject* self) {
    PyObject_GC_UnTrack(self);
    py::detail::pybind11_object_dealloc(self);
  };
}

}  // namespace

void addColumnsType(py::module_& module) {
  py::class_<Columns>(module, "Columns", py::custom_type_setup(setCollection))
      .def("next", &Columns::next)
      .def("notes", &Columns::notes)
      .def("require_idle", &Columns::requireIdle);
  module.def("columns", &open);
}

}  // namespace oxr::python
