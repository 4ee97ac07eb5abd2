#include "values.hpp"

#include <array>
#include <cstring>

#include "kelwstringconvertor.hpp"

namespace py = pybind11;

namespace oxr::python {

namespace {

PyObject* checked(PyObject* made) {
  if (made == nullptr) throw py::error_already_set();
  return made;
}

}  // namespace

py::object owned(PyObject* made) {
  return py::reinterpret_steal<py::object>(checked(made));
}

namespace {

Makers& makers() {
  static Makers found{};
  return found;
}

}  // namespace

const Makers& Makers::get() {
  return makers();
}

void Makers::find() {
  const auto attribute = [](const char* module, const char* name) { return py::module_::import(module).attr(name); };
  const auto fromIso = [&](const char* name) {
    return py::object(attribute("datetime", name).attr("fromisoformat")).release().ptr();
  };
  // A context that rounds nothing: its method takes a text with less ado than the type does.
  const py::object exact = attribute("decimal", "Context")(
      py::arg("prec") = attribute("decimal", "MAX_PREC"), py::arg("Emax") = attribute("decimal", "MAX_EMAX"),
      py::arg("Emin") = attribute("decimal", "MIN_EMIN"), py::arg("traps") = py::list());
  makers() = {py::object(exact.attr("create_decimal")).release().ptr(),
              py::object(attribute("decimal", "Decimal")).release().ptr(), fromIso("date"), fromIso("time"),
              fromIso("datetime")};
}

PyObject* newText(Token token, const char* bytes, std::size_t size) {
  const auto length = static_cast<Py_ssize_t>(size);
  if (token == Token::ascii) {
    PyObject* const text = checked(PyUnicode_New(length, 0x7F));
    std::memcpy(PyUnicode_1BYTE_DATA(text), bytes, size);
    return text;
  }
  if (token == Token::latin1) return checked(PyUnicode_FromKindAndData(PyUnicode_1BYTE_KIND, bytes, length));
  // A surrogate without its other half becomes U+FFFD, as in JSON.
  int order = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? -1 : 1;
  return checked(PyUnicode_DecodeUTF16(bytes, length, "replace", &order));
}

// Nobody keeps the text, so that one of each length serves all: its characters are written anew each time.
PyObject* newDecimal(const char* digits, std::size_t size) {
  constexpr std::size_t kReused = 40;
  static std::array<PyObject*, kReused> texts{};
  if (size >= kReused) {
    const py::object text = owned(newText(Token::ascii, digits, size));
    return checked(PyObject_CallOneArg(Makers::get().decimal, text.ptr()));
  }
  PyObject*& text = texts[size];
  if (text == nullptr) text = newText(Token::ascii, digits, size);
  std::memcpy(PyUnicode_1BYTE_DATA(text), digits, size);
  return checked(PyObject_CallOneArg(Makers::get().decimal, text));
}

PyObject* newBigInteger(const char* digits, std::size_t size) {
  const py::object text = owned(newText(Token::ascii, digits, size));
  return checked(PyLong_FromUnicodeObject(text.ptr(), 10));
}

PyObject* newDate(const char* text, std::size_t size) {
  const std::string_view iso(text, size);
  const bool hasTime = iso.find(':') != std::string_view::npos;
  const bool hasDate = iso.find('T') != std::string_view::npos || !hasTime;
  const Makers& makers = Makers::get();
  PyObject* const maker = !hasTime ? makers.date : hasDate ? makers.dateTime : makers.time;
  py::object shown = owned(newText(Token::ascii, text, size));
  PyObject* const made = PyObject_CallOneArg(maker, shown.ptr());
  if (made != nullptr) return made;
  if (PyErr_ExceptionMatches(PyExc_ValueError) == 0) throw py::error_already_set();
  PyErr_Clear();
  return shown.release().ptr();
}

PyObject* newScalar(const Head& head, const char* bytes) {
  const auto number = [&](auto value) {
    std::memcpy(&value, bytes, sizeof value);
    return value;
  };
  switch (head.token) {
    case Token::integer:
      return checked(PyLong_FromLongLong(number(std::int64_t{})));
    case Token::real:
      return checked(PyFloat_FromDouble(number(double{})));
    case Token::bigInteger:
      return newBigInteger(bytes, head.size);
    case Token::decimal:
      return newDecimal(bytes, head.size);
    case Token::ascii:
    case Token::latin1:
    case Token::utf16:
      return newText(head.token, bytes, head.size);
    case Token::date:
      return newDate(bytes, head.size);
    default:
      Py_RETURN_NONE;
  }
}

Builder::Builder(const rec::RecordPlan& plan) : keys_(plan.names().size() + 1) {
  const auto interned = [](const std::string& name) { return owned(PyUnicode_InternFromString(name.c_str())); };
  const std::vector<unsigned short>& names = plan.names();
  for (std::size_t at = 0; at < names.size();) {
    const UnitView name(names.data() + at);
    keys_[at] = interned(toUtf8(name));
    at += name.size() + 1;
  }
  keys_.back() = interned("RAW");
}

Head Builder::next() {
  Head head;
  std::memcpy(&head, at_, sizeof head);
  at_ += sizeof head;
  return head;
}

void Builder::fill(PyObject* record, const char* at) {
  at_ = at;
  const Head head = next();
  members(record, head.size);
}

void Builder::members(PyObject* dict, std::uint64_t count) {
  for (; count != 0; --count) {
    const Head head = next();
    PyObject* const value = make(head);
    const int failed = PyDict_SetItem(dict, keys_[head.name].ptr(), value);
    Py_DECREF(value);
    if (failed != 0) throw py::error_already_set();
  }
  at_ += sizeof(Head);
}

PyObject* Builder::makeList(std::uint64_t size) {
  py::object list = owned(PyList_New(static_cast<Py_ssize_t>(size)));
  for (std::uint64_t i = 0; i < size; ++i)
    PyList_SET_ITEM(list.ptr(), static_cast<Py_ssize_t>(i), make(next()));
  at_ += sizeof(Head);
  return list.release().ptr();
}

PyObject* Builder::make(const Head& head) {
  switch (head.token) {
    case Token::beginGroup: {
      py::object dict = owned(PyDict_New());
      members(dict.ptr(), head.size);
      return dict.release().ptr();
    }
    case Token::beginArray:
      return makeList(head.size);
    default:
      break;
  }
  const char* const bytes = at_;
  at_ += Tape::padded(head.size);
  return newScalar(head, bytes);
}

}  // namespace oxr::python
