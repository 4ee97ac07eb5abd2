#include "jsontext.hpp"

#include <algorithm>
#include <array>
#include <cstdio>

#include "kelwstringconvertor.hpp"
#include "records/fields/datepattern.hpp"

namespace py = pybind11;

namespace oxr::python {

namespace {

std::string_view utf8Of(py::handle text) {
  Py_ssize_t size = 0;
  const char* const bytes = PyUnicode_AsUTF8AndSize(text.ptr(), &size);
  if (bytes == nullptr) throw py::error_already_set();
  return {bytes, static_cast<std::size_t>(size)};
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

bool isA(py::handle value, const char* module, const char* name) {
  const py::object type = py::module_::import(module).attr(name);
  return py::isinstance(value, type);
}

}  // namespace

RecordText::RecordText(const rec::RecordPlan& plan) {
  for (const rec::Step& step : plan.steps()) {
    if (step.op != rec::Op::field || step.name == rec::Step::kNoName) continue;
    const std::string iso = rec::readDatePattern(plan.forms()[step.form].date).iso;
    const std::size_t digits = static_cast<std::size_t>(std::count(iso.begin(), iso.end(), 'S'));
    if (digits != 0) fractions_[toUtf8(UnitView(plan.name(step)))] = digits;
  }
}

void RecordText::append(py::handle record, std::string& line) const {
  if (!py::isinstance<py::dict>(record)) throw py::type_error("a record is a dict");
  object(record, line);
  line += '\n';
}

void RecordText::object(py::handle dict, std::string& line) const {
  line += '{';
  bool isFirst = true;
  for (const auto& [key, member] : py::reinterpret_borrow<py::dict>(dict)) {
    if (!py::isinstance<py::str>(key)) throw py::type_error("the keys of a record are the names of its fields");
    if (!isFirst) line += ',';
    isFirst = false;
    quoted(utf8Of(key), line);
    line += ':';
    value(member, utf8Of(key), line);
  }
  line += '}';
}

void RecordText::value(py::handle value, std::string_view name, std::string& line) const {
  PyObject* const given = value.ptr();
  if (given == Py_None) {
    line += "null";
  } else if (PyUnicode_Check(given) != 0) {
    quoted(utf8Of(value), line);
  } else if (PyDict_Check(given) != 0) {
    object(value, line);
  } else if (PyList_Check(given) != 0 || PyTuple_Check(given) != 0) {
    line += '[';
    const char* between = "";
    for (const py::handle element : py::reinterpret_borrow<py::sequence>(value)) {
      line += between;
      between = ",";
      this->value(element, name, line);
    }
    line += ']';
  } else if (PyBool_Check(given) != 0) {
    line += given == Py_True ? "true" : "false";
  } else if (PyIndex_Check(given) != 0) {
    number(py::str(py::reinterpret_steal<py::object>(PyNumber_Index(given))), line);
  } else if (isA(value, "decimal", "Decimal")) {
    number(py::str(value), line);
  } else if (py::hasattr(value, "isoformat")) {
    moment(value, name, line);
  } else if (PyNumber_Check(given) != 0) {
    number(py::repr(py::float_(py::reinterpret_borrow<py::object>(value))), line);
  } else {
    throw py::type_error(std::string(name) + ": a " + Py_TYPE(given)->tp_name + " is no value of a field");
  }
}

void RecordText::number(py::handle text, std::string& line) const {
  const std::string_view digits = utf8Of(text);
  const bool isNumber = digits.find_first_of("nNiI") == std::string_view::npos;  // neither NaN nor infinite
  if (isNumber)
    line += digits;
  else
    quoted('<' + std::string(digits) + '>', line);
}

// A digit of a second that the field has no place for stays, so that it is refused and not lost.
void RecordText::moment(py::handle value, std::string_view name, std::string& line) const {
  if (!py::hasattr(value, "microsecond")) return quoted(utf8Of(py::str(value.attr("isoformat")())), line);
  std::string text(utf8Of(py::str(value.attr("isoformat")(py::arg("timespec") = "microseconds"))));
  const std::size_t point = text.find('.');
  const auto known = fractions_.find(name);
  const std::size_t wanted = known == fractions_.end() ? 0 : known->second;
  std::size_t end = text.find_first_not_of("0123456789", point + 1);
  if (end == std::string::npos) end = text.size();
  const std::string zone = text.substr(end);
  text.resize(end);
  while (text.size() - point - 1 > wanted && text.back() == '0')
    text.pop_back();
  if (text.back() == '.') text.pop_back();
  if (wanted > 6) text.append(wanted - 6, '0');
  quoted(text + zone, line);
}

}  // namespace oxr::python
