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
#include "columnhandler.hpp"
#include "interpreter.hpp"
#include "reading.hpp"
#include "values.hpp"

namespace py = pybind11;

namespace oxr::python {

namespace {

// The arrays of a column, as numpy has them, while a chunk is filled.
struct Arrays {
  py::array values{};
  py::array isMissing{};  // integer, scaled
  py::array objects{};    // object, and numbers of which one is too large: null where there is none
};

// The objects that texts become, so that one that comes again is not made again: columns of codes have few values. A
// column whose texts hardly ever come again is no longer looked up.
class TextCache {
 public:
  py::object get(const Head& head, const char* bytes);

 private:
  static constexpr std::size_t kSlots = 2048, kLongest = 24;
  struct Slot {
    char bytes[kLongest];
    std::size_t size = 0;
    py::object text{};
  };
  std::vector<Slot> slots_;
  std::uint32_t hits_ = 0;
  std::uint32_t misses_ = 0;
};

py::object TextCache::get(const Head& head, const char* bytes) {
  constexpr std::uint32_t kTried = 4096;
  const auto made = [&] { return py::reinterpret_steal<py::object>(newScalar(head, bytes)); };
  if (head.size > kLongest || (head.token != Token::ascii && head.token != Token::decimal)) return made();
  if (misses_ >= kTried && hits_ < misses_) return made();
  if (slots_.empty()) slots_.resize(kSlots);
  const std::size_t hash = std::hash<std::string_view>()({bytes, head.size});
  Slot& slot = slots_[hash % kSlots];
  if (slot.text && slot.size == head.size && std::memcmp(slot.bytes, bytes, head.size) == 0) {
    ++hits_;
    return slot.text;
  }
  ++misses_;
  slot.size = head.size;
  std::memcpy(slot.bytes, bytes, head.size);
  return slot.text = made();
}

py::array emptyArray(const char* type, std::uint32_t rows) {
  return py::array(py::dtype(type), std::vector<py::ssize_t>{rows});
}

template <class Value>
Value* filled(py::array& array, Value value) {
  auto* const data = static_cast<Value*>(array.mutable_data());
  std::fill_n(data, array.size(), value);
  return data;
}

// So many rows at a time stay in the processor's cache until their objects are made.
constexpr std::uint32_t kRowsAtOnce = 1024;

class Columns {
 public:
  Columns(const rec::DecodeOptions& options, const py::object& file, std::uint32_t rows, DecimalForm form)
      : reading_(Reading::open(options, file)),
        leavesBadOut_(options.onError == rec::OnError::skip),
        rows_(rows),
        handler_(reading_.plan(), form),
        caches_(handler_.columns().size()) {
    for (const std::string& name : handler_.names().names())
      names_.emplace_back(name);
    reading_.setHandler(handler_, nullptr);
  }

  // Names and arrays of the next chunk, an array and what is missing in it; None at the end.
  py::object next();
  std::string notes() const { return reading_.notes(); }

 private:
  std::vector<Arrays> begin();
  void fill(std::uint32_t most);
  void makeObjects(std::vector<Arrays>& arrays);
  py::object finish(const Column& column, const Arrays& arrays) const;
  py::object wholly(const Column& column, const Arrays& arrays) const;

  Reading reading_;
  const bool leavesBadOut_;
  const std::uint32_t rows_;
  ColumnHandler handler_;
  std::vector<TextCache> caches_;
  std::vector<py::str> names_;
  std::exception_ptr ending_;
  bool isAtEnd_ = false;
  bool isBusy_ = false;
};

// Arrays, for the largest chunk: rows that do not come cost nothing, since nobody touches their memory.
std::vector<Arrays> Columns::begin() {
  handler_.clear();
  std::vector<Arrays> arrays(handler_.columns().size());
  for (std::size_t i = 0; i < arrays.size(); ++i) {
    Column& column = handler_.columns()[i];
    switch (column.shape.type) {
      case ColumnType::integer:
      case ColumnType::scaled:
        arrays[i] = {emptyArray("int64", rows_), emptyArray("bool", rows_)};
        column.numbers = filled(arrays[i].values, std::int64_t{0});
        column.isMissing = reinterpret_cast<unsigned char*>(filled(arrays[i].isMissing, true));
        break;
      case ColumnType::real:
      case ColumnType::decimal:
        arrays[i].values = emptyArray("float64", rows_);
        column.reals = filled(arrays[i].values, std::nan(""));
        break;
      case ColumnType::days:
      case ColumnType::instants:
        arrays[i].values =
            emptyArray(column.shape.type == ColumnType::days ? "datetime64[D]" : "datetime64[us]", rows_);
        column.numbers = filled(arrays[i].values, kNoInstant);
        break;
      case ColumnType::object:
        break;
    }
  }
  return arrays;
}

// Without the interpreter: up to so many rows, and not much more of those that are left out. What ends the work is kept
// behind the rows before it.
void Columns::fill(std::uint32_t most) {
  try {
    while (handler_.rows() < most && handler_.begun() < 2 * std::size_t{kRowsAtOnce}) {
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

py::object Columns::next() {
  if (isBusy_) throw py::value_error("another thread reads these columns");
  isBusy_ = true;
  const std::unique_ptr<bool, void (*)(bool*)> busy(&isBusy_, [](bool* flag) { *flag = false; });
  std::vector<Arrays> arrays = begin();
  while (!isAtEnd_ && handler_.rows() < rows_) {
    if (PyErr_CheckSignals() != 0) throw py::error_already_set();
    {
      const Released interpreter;
      fill(rows_ - handler_.rows() < kRowsAtOnce ? rows_ : handler_.rows() + kRowsAtOnce);
    }
    makeObjects(arrays);
  }
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
void Columns::makeObjects(std::vector<Arrays>& arrays) {
  for (std::size_t i = 0; i < arrays.size(); ++i) {
    const Tape& tape = handler_.columns()[i].objects;
    if (tape.size() == 0) continue;
    if (arrays[i].objects.size() == 0) arrays[i].objects = emptyArray("object", rows_);
    auto** const values = static_cast<PyObject**>(arrays[i].objects.mutable_data());
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

// An array of a chunk's rows, and an array that tells which ones are missing, or None.
py::object Columns::finish(const Column& column, const Arrays& arrays) const {
  const py::slice rows(0, handler_.rows(), 1);
  if (column.shape.type == ColumnType::object || arrays.objects.size() != 0)
    return py::make_tuple(wholly(column, arrays), py::none());
  const py::object values = arrays.values[rows];
  if (column.isMissing == nullptr) return py::make_tuple(values, py::none());
  const bool isWhole =
      std::find(column.isMissing, column.isMissing + handler_.rows(), 1) == column.isMissing + handler_.rows();
  return py::make_tuple(values, isWhole ? py::object(py::none()) : py::object(arrays.isMissing[rows]));
}

// An array of objects. Of a column of numbers that one of them is too large for, all are.
py::object Columns::wholly(const Column& column, const Arrays& arrays) const {
  py::array made = arrays.objects.size() != 0 ? arrays.objects : emptyArray("object", rows_);
  auto** const values = static_cast<PyObject**>(made.mutable_data());
  const bool hasNumbers = arrays.values.size() != 0;
  py::object rows = made[py::slice(0, handler_.rows(), 1)];
  const py::list plain =
      hasNumbers ? py::list(arrays.values[py::slice(0, handler_.rows(), 1)].attr("tolist")()) : py::list();
  for (std::uint32_t row = 0; row < handler_.rows(); ++row) {
    if (values[row] != nullptr) continue;
    const bool isThere = hasNumbers && (column.isMissing == nullptr || column.isMissing[row] == 0);
    values[row] = isThere ? py::object(plain[row]).release().ptr() : Py_NewRef(Py_None);
  }
  return rows;
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
  if (rows == 0) throw OptionFault("rows: a chunk has at least one");
  return std::make_unique<Columns>(options, file, rows, form->second);
}

}  // namespace

void addColumnsType(py::module_& module) {
  py::class_<Columns>(module, "Columns").def("next", &Columns::next).def("notes", &Columns::notes);
  module.def("columns", &open);
}

}  // namespace oxr::python
