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
#include "reading.hpp"
#include "values.hpp"

namespace py = pybind11;

namespace oxr::python {

namespace {

// The arrays of a column, as numpy has them, while a chunk is filled.
struct Arrays {
  py::array values{};
  py::array isMissing{};  // integer, scaled
};

// The objects that texts become, so that one that comes again is not made again: columns of codes have few values. A
// column whose texts hardly ever come again is no longer looked up.
class TextCache {
 public:
  py::object get(const Head& head, const char* bytes);

 private:
  static constexpr std::size_t kSlots = 512, kLongest = 24;
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

class Columns {
 public:
  Columns(const rec::DecodeOptions& options, py::object file, std::uint32_t rows, DecimalForm form)
      : reading_(options, std::move(file)),
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
  void fill();
  py::object finish(Column& column, const Arrays& arrays, TextCache& cache) const;
  py::object objects(Column& column, const Arrays& arrays, TextCache& cache) const;

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

// Arrays for the largest chunk: rows that do not come cost nothing, since nobody touches their memory.
std::vector<Arrays> Columns::begin() {
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

// Without the interpreter. What ends the work is kept behind the rows before it.
void Columns::fill() {
  handler_.clear();
  try {
    while (handler_.rows() < rows_) {
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
  if (!isAtEnd_) {
    const std::vector<Arrays> arrays = begin();
    {
      const py::gil_scoped_release free;
      fill();
    }
    if (handler_.rows() != 0) {
      py::list columns;
      for (std::size_t i = 0; i < arrays.size(); ++i)
        columns.append(py::make_tuple(names_[i], finish(handler_.columns()[i], arrays[i], caches_[i])));
      return columns;
    }
  }
  if (ending_) std::rethrow_exception(std::exchange(ending_, nullptr));
  return py::none();
}

// An array of a chunk's rows, and an array that tells which ones are missing, or None.
py::object Columns::finish(Column& column, const Arrays& arrays, TextCache& cache) const {
  const py::slice rows(0, handler_.rows(), 1);
  if (!arrays.values || arrays.values.size() == 0 || column.objects.size() != 0)
    return py::make_tuple(objects(column, arrays, cache), py::none());
  const py::object values = arrays.values[rows];
  if (column.isMissing == nullptr) return py::make_tuple(values, py::none());
  const bool isWhole =
      std::find(column.isMissing, column.isMissing + handler_.rows(), 1) == column.isMissing + handler_.rows();
  return py::make_tuple(values, isWhole ? py::object(py::none()) : py::object(arrays.isMissing[rows]));
}

// Of a column of numbers that one of them is too large for, all become objects.
py::object Columns::objects(Column& column, const Arrays& arrays, TextCache& cache) const {
  py::array made = emptyArray("object", handler_.rows());
  auto** const values = static_cast<PyObject**>(made.mutable_data());
  if (arrays.values.size() != 0) {
    const py::list plain = arrays.values[py::slice(0, handler_.rows(), 1)].attr("tolist")();
    for (std::uint32_t row = 0; row < handler_.rows(); ++row)
      if (column.isMissing == nullptr || column.isMissing[row] == 0) made[py::int_(row)] = plain[row];
  }
  const char* at = column.objects.data();
  const char* const end = at + column.objects.size();
  while (at != end) {
    Head head;
    std::memcpy(&head, at, sizeof head);
    const std::uint32_t row = handler_.rowOf()[head.name];
    if (row < handler_.rows()) {
      PyObject* const old = std::exchange(values[row], cache.get(head, at + sizeof head).release().ptr());
      Py_XDECREF(old);
    }
    at += sizeof head + Tape::padded(head.size);
  }
  for (std::uint32_t row = 0; row < handler_.rows(); ++row)
    if (values[row] == nullptr) values[row] = Py_NewRef(Py_None);
  return made;
}

std::unique_ptr<Columns> open(const Arguments& arguments, py::object file, std::uint32_t rows,
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
  return std::make_unique<Columns>(options, std::move(file), rows, form->second);
}

}  // namespace

void addColumnsType(py::module_& module) {
  py::class_<Columns>(module, "Columns").def("next", &Columns::next).def("notes", &Columns::notes);
  module.def("columns", &open);
}

}  // namespace oxr::python
