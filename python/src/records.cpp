#include "records.hpp"

#include <pybind11/stl.h>

#include <array>

#include "arguments.hpp"
#include "interpreter.hpp"
#include "oxrrec/nesting.hpp"

namespace py = pybind11;

namespace oxr::python {

Records::Records(const rec::DecodeOptions& options, const py::object& file)
    : reading_(Reading::open(options, file)),
      batch_(reading_, options.onError == rec::OnError::skip && options.nest.empty()),
      builder_(reading_.plan()) {}

PyObject* Records::next() {
  const Busy::Turn turn(busy_);
  while (made_ == batch_.entries().size()) {
    if (const std::exception_ptr ending = batch_.takeEnding()) std::rethrow_exception(ending);
    if (batch_.isAtEnd()) return nullptr;
    if (PyErr_CheckSignals() != 0) throw py::error_already_set();
    const Released interpreter;
    made_ = 0;
    batch_.fill();
  }
  return make(batch_.entries()[made_++]);
}

PyObject* Records::make(const Batch::Entry& entry) {
  py::object errors;
  if (entry.firstBadField != entry.endBadField) {
    py::tuple bad(entry.endBadField - entry.firstBadField);
    for (std::size_t i = 0; i < bad.size(); ++i) {
      const BadField& field = batch_.badFields()[entry.firstBadField + i];
      bad[i] = errorOf(field, field.text);
    }
    errors = std::move(bad);
  }
  const py::object kind = entry.kind.empty() ? py::object() : kindOf(entry.kind);
  auto record = py::reinterpret_steal<py::object>(newRecord(entry.place, kind.ptr(), errors.ptr()));
  builder_.fill(record.ptr(), batch_.tapeAt(entry));
  return record.release().ptr();
}

py::object Records::kindOf(std::string_view kind) {
  py::object& known = kinds_[kind];
  if (!known) known = py::str(kind.data(), kind.size());
  return known;
}

namespace {

// An iterator of its own, so that a loop calls next() without anything between.
struct RecordsObject {
  PyObject base;
  std::unique_ptr<Records> records;  // null once they are closed
};

std::unique_ptr<Records>& recordsOf(PyObject* self) {
  return reinterpret_cast<RecordsObject*>(self)->records;
}

PyObject* iterate(PyObject* self) {
  Records* const records = recordsOf(self).get();
  if (records == nullptr) return nullptr;
  try {
    return records->next();
  } catch (const abi::__forced_unwind&) {
    throw;  // the thread ends with its process
  } catch (...) {
    setError();
    return nullptr;
  }
}

// A file of Python's own may hold who reads it.
int traverse(PyObject* self, visitproc visit, void* arg) {
  Py_VISIT(Py_TYPE(self));
  if (const auto& records = recordsOf(self)) Py_VISIT(records->source().reader());
  return 0;
}

int clear(PyObject* self) {
  const std::unique_ptr<Records> records = std::move(recordsOf(self));
  return 0;
}

void deallocate(PyObject* self) {
  PyObject_GC_UnTrack(self);
  PyTypeObject* const type = Py_TYPE(self);
  std::destroy_at(&recordsOf(self));
  type->tp_free(self);
  Py_DECREF(type);
}

constexpr char kDoc[] = "The records of an input, one after the other, as read() gives them.";

std::array<PyType_Slot, 7> slots{{{Py_tp_iter, reinterpret_cast<void*>(PyObject_SelfIter)},
                                  {Py_tp_iternext, reinterpret_cast<void*>(iterate)},
                                  {Py_tp_dealloc, reinterpret_cast<void*>(deallocate)},
                                  {Py_tp_traverse, reinterpret_cast<void*>(traverse)},
                                  {Py_tp_clear, reinterpret_cast<void*>(clear)},
                                  {Py_tp_doc, const_cast<char*>(kDoc)},
                                  {}}};
PyType_Spec description{"oxrrec._oxrrec.Records", sizeof(RecordsObject), 0,
                        Py_TPFLAGS_DEFAULT | Py_TPFLAGS_HAVE_GC | Py_TPFLAGS_DISALLOW_INSTANTIATION, slots.data()};

PyTypeObject* recordsType = nullptr;

rec::Nesting nestingOf(const rec::DecodeOptions& options, const rec::RecordPlan& plan) {
  try {
    return {options.nest, plan};
  } catch (const rec::ToolError& error) {
    throw OptionFault(error.what());
  }
}

// An iterator, the notes of how it was opened, the pairs of `nest` by the names that the records have, and whether who
// puts these into each other is to leave out records with a bad field.
py::tuple open(const Arguments& arguments, const py::object& file) {
  const auto options = readArguments(arguments, rec::addReadingOptions);
  auto records = std::make_unique<Records>(options, file);
  const rec::Nesting nesting = nestingOf(options, records->plan());
  records->setKindsOfInterest(nesting.names());
  const std::string notes = records->notes();
  PyObject* const made = recordsType->tp_alloc(recordsType, 0);
  if (made == nullptr) throw py::error_already_set();
  std::construct_at(&recordsOf(made), std::move(records));
  return py::make_tuple(py::reinterpret_steal<py::object>(made), notes, nesting.pairs(),
                        options.onError == rec::OnError::skip);
}

void close(const py::object& self) {
  if (Py_TYPE(self.ptr()) != recordsType) throw py::type_error("close() is a method of Records");
  std::unique_ptr<Records>& records = recordsOf(self.ptr());
  if (records == nullptr) return;
  records->requireIdle();
  records.reset();
}

}  // namespace

void addRecordsType(py::module_& module) {
  recordsType = reinterpret_cast<PyTypeObject*>(PyType_FromSpec(&description));
  if (recordsType == nullptr) throw py::error_already_set();
  const py::handle type(reinterpret_cast<PyObject*>(recordsType));
  const auto method = [&](const char* name, auto function, const char* doc) {
    type.attr(name) = py::cpp_function(function, py::name(name), py::is_method(type), doc);
  };
  method(
      "close", [](const py::object& self) { close(self); }, "Close the input; no record comes any more.");
  method(
      "__enter__", [](const py::object& self) { return self; }, "");
  method(
      "__exit__", [](const py::object& self, const py::args&) { close(self); }, "");
  module.attr("Records") = type;
  module.def("read", &open);
}

}  // namespace oxr::python
