#include "jsontext.hpp"

#include <algorithm>
#include <array>
#include <cstdio>

#include "kelwstringconvertor.hpp"
#include "records/fields/datepattern.hpp"
#include "values.hpp"

namespace py = pybind11;

namespace oxr::python {

namespace {

// Of a text that lives on. Half of a surrogate pair is no character.
std::string_view utf8Of(py::handle text, const ValuePlace& place) {
  Py_ssize_t size = 0;
  const char* const bytes = PyUnicode_AsUTF8AndSize(text.ptr(), &size);
  if (bytes != nullptr) return {bytes, static_cast<std::size_t>(size)};
  if (PyErr_ExceptionMatches(PyExc_UnicodeEncodeError) == 0) throw py::error_already_set();
  PyErr_Clear();
  throw ValueFault("the text has half of a surrogate pair", place.path());
}

void quoted(std::string_view text, std::string& line) {
  line += '"';
  for (const char c : text) {
    if (static_cast<unsigned char>(c) < 0x20) {
      std::array<char, 8> escape{};
      std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(c));
      line += escape.data();
      continue;
    }
    if (c == '"' || c == '\\') line += '\\';
    line += c;
  }
  line += '"';
}

[[noreturn]] void refuse(py::handle value, const ValuePlace& place) {
  throw ValueFault(std::string("a ") + Py_TYPE(value.ptr())->tp_name + " is no value of a field", place.path());
}

// What a value was made into. A type or value that refuses that is no field's.
py::object made(PyObject* result, py::handle value, const ValuePlace& place) {
  if (result != nullptr) return py::reinterpret_steal<py::object>(result);
  if (PyErr_ExceptionMatches(PyExc_TypeError) == 0 && PyErr_ExceptionMatches(PyExc_ValueError) == 0)
    throw py::error_already_set();
  PyErr_Clear();
  refuse(value, place);
}

// The text of a number: what is neither NaN nor infinite.
void number(py::handle text, const ValuePlace& place, std::string& line) {
  const std::string_view digits = utf8Of(text, place);
  if (digits.find_first_of("nNiI") == std::string_view::npos)
    line += digits;
  else
    quoted('<' + std::string(digits) + '>', line);
}

bool isTrueOrFalse(PyObject* value) {
  const std::string_view type = Py_TYPE(value)->tp_name;
  return PyBool_Check(value) != 0 || type == "numpy.bool_" || type == "numpy.bool";
}

// A record may hold itself.
class OneDeeper {
 public:
  OneDeeper() {
    if (Py_EnterRecursiveCall(" while a record is written") != 0) throw py::error_already_set();
  }
  OneDeeper(const OneDeeper&) = delete;
  OneDeeper& operator=(const OneDeeper&) = delete;
  ~OneDeeper() { Py_LeaveRecursiveCall(); }
};

}  // namespace

std::string ValuePlace::path() const {
  std::string before = around == nullptr ? std::string() : around->path();
  if (occurrence != 0) return before + '(' + std::to_string(occurrence) + ')';
  if (!before.empty()) before += '.';
  return before.append(name);
}

RecordText::RecordText(const rec::RecordPlan& plan) {
  for (const rec::Step& step : plan.steps()) {
    if (step.op != rec::Op::field || step.name == rec::Step::kNoName) continue;
    const std::string iso = rec::readDatePattern(plan.forms()[step.form].date).iso;
    const std::size_t digits = static_cast<std::size_t>(std::count(iso.begin(), iso.end(), 'S'));
    if (digits != 0) fractions_[toUtf8(UnitView(plan.name(step)))] = digits;
  }
}

void RecordText::append(py::handle record, std::string& line) const {
  if (!py::isinstance<py::dict>(record))
    throw py::type_error(std::string("a record is a dict, not a ") + Py_TYPE(record.ptr())->tp_name);
  object(record, {nullptr, {}, 0}, line);
  line += '\n';
}

// Values' own methods are called on the way, which may change the dict: what is in hand is kept.
void RecordText::object(py::handle dict, const ValuePlace& place, std::string& line) const {
  line += '{';
  bool isFirst = true;
  PyObject* nextKey = nullptr;
  PyObject* nextMember = nullptr;
  for (Py_ssize_t at = 0; PyDict_Next(dict.ptr(), &at, &nextKey, &nextMember) != 0;) {
    const auto key = py::reinterpret_borrow<py::object>(nextKey);
    const auto member = py::reinterpret_borrow<py::object>(nextMember);
    if (!py::isinstance<py::str>(key))
      throw ValueFault("the keys of a record are the names of its fields", place.path());
    if (!isFirst) line += ',';
    isFirst = false;
    const std::string_view name = utf8Of(key, place);
    quoted(name, line);
    line += ':';
    value(member, {&place, name, 0}, line);
  }
  line += '}';
}

void RecordText::array(py::handle values, const ValuePlace& place, std::string& line) const {
  line += '[';
  std::size_t occurrence = 0;
  for (const py::handle element : py::reinterpret_borrow<py::iterable>(values)) {
    if (occurrence != 0) line += ',';
    value(element, {&place, place.name, ++occurrence}, line);
  }
  line += ']';
}

void RecordText::value(py::handle value, const ValuePlace& place, std::string& line) const {
  PyObject* const given = value.ptr();
  if (given == Py_None) {
    line += "null";
  } else if (PyUnicode_Check(given) != 0) {
    quoted(utf8Of(value, place), line);
  } else if (PyDict_Check(given) != 0) {
    const OneDeeper deeper;
    object(value, place, line);
  } else if (PyList_Check(given) != 0 || PyTuple_Check(given) != 0) {
    const OneDeeper deeper;
    array(value, place, line);
  } else if (isTrueOrFalse(given)) {
    line += PyObject_IsTrue(given) != 0 ? "true" : "false";
  } else if (PyIndex_Check(given) != 0) {
    const py::object whole = made(PyNumber_Index(given), value, place);
    number(made(PyObject_Str(whole.ptr()), value, place), place, line);
  } else if (py::isinstance(value, Makers::get().decimalType)) {
    number(made(PyObject_Str(given), value, place), place, line);
  } else if (py::hasattr(value, "isoformat")) {
    moment(value, place, line);
  } else if (PyNumber_Check(given) != 0) {
    number(py::repr(made(PyNumber_Float(given), value, place)), place, line);
  } else {
    refuse(value, place);
  }
}

// A digit of a second that the field has no place for stays, so that it is refused and not lost.
void RecordText::moment(py::handle value, const ValuePlace& place, std::string& line) const {
  const py::object iso = value.attr("isoformat");
  const auto textOf = [&](const py::str& given) { return std::string(utf8Of(given, place)); };
  if (!py::hasattr(value, "microsecond")) return quoted(textOf(iso()), line);
  // A Timestamp of pandas has nanoseconds, too.
  const bool isFiner = !py::getattr(value, "nanosecond", py::int_(0)).equal(py::int_(0));
  std::string text = textOf(iso(py::arg("timespec") = isFiner ? "nanoseconds" : "microseconds"));
  const std::size_t point = text.find('.');
  const auto known = fractions_.find(place.name);
  const std::size_t wanted = known == fractions_.end() ? 0 : known->second;
  const std::size_t end = std::min(text.find_first_not_of("0123456789", point + 1), text.size());
  const std::string zone = text.substr(end);
  text.resize(end);
  while (text.size() - point - 1 > wanted && text.back() == '0')
    text.pop_back();
  if (wanted == 0 && text.back() == '.') text.pop_back();
  if (wanted != 0 && text.size() < point + 1 + wanted) text.resize(point + 1 + wanted, '0');
  quoted(text + zone, line);
}

}  // namespace oxr::python
