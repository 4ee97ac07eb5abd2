#include "recordtype.hpp"

#include <structmember.h>

#include <array>
#include <cstddef>

namespace py = pybind11;

namespace oxr::python {

namespace {

struct RecordObject {
  PyDictObject dict;
  RecordPlace place;
  PyObject* kind;    // null for None
  PyObject* errors;  // null for none
};

RecordObject* recordOf(PyObject* self) {
  return reinterpret_cast<RecordObject*>(self);
}

int clear(PyObject* self) {
  Py_CLEAR(recordOf(self)->kind);
  Py_CLEAR(recordOf(self)->errors);
  return PyDict_Type.tp_clear(self);
}

int traverse(PyObject* self, visitproc visit, void* arg) {
  Py_VISIT(Py_TYPE(self));
  Py_VISIT(recordOf(self)->kind);
  Py_VISIT(recordOf(self)->errors);
  return PyDict_Type.tp_traverse(self, visit, arg);
}

void deallocate(PyObject* self) {
  PyObject_GC_UnTrack(self);
  PyTypeObject* const type = Py_TYPE(self);
  Py_CLEAR(recordOf(self)->kind);
  Py_CLEAR(recordOf(self)->errors);
  PyDict_Type.tp_dealloc(self);
  Py_DECREF(type);
}

PyObject* kindOf(PyObject* self, void*) {
  PyObject* const kind = recordOf(self)->kind;
  return Py_NewRef(kind == nullptr ? Py_None : kind);
}

PyObject* errorsOf(PyObject* self, void*) {
  PyObject* const errors = recordOf(self)->errors;
  return errors == nullptr ? PyTuple_New(0) : Py_NewRef(errors);
}

// For pickle and copy: the members follow one by one, so that a record may hold itself.
PyObject* reduce(PyObject* self, PyObject*) {
  PyObject* const items = PyObject_CallMethod(self, "items", nullptr);
  PyObject* const members = items == nullptr ? nullptr : PyObject_GetIter(items);
  Py_XDECREF(items);
  if (members == nullptr) return nullptr;
  const RecordPlace& place = recordOf(self)->place;
  return Py_BuildValue("O()(KKNN)ON", Py_TYPE(self), place.number, place.offset, kindOf(self, nullptr),
                       errorsOf(self, nullptr), Py_None, members);
}

PyObject* setState(PyObject* self, PyObject* state) {
  unsigned long long number = 0;
  unsigned long long offset = 0;
  PyObject* kind = nullptr;
  PyObject* errors = nullptr;
  if (PyTuple_Check(state) == 0) {
    PyErr_SetString(PyExc_TypeError, "the state of a record is a tuple");
    return nullptr;
  }
  if (PyArg_ParseTuple(state, "KKOO!", &number, &offset, &kind, &PyTuple_Type, &errors) == 0) return nullptr;
  recordOf(self)->place = {number, offset};
  Py_XSETREF(recordOf(self)->kind, kind == Py_None ? nullptr : Py_NewRef(kind));
  Py_XSETREF(recordOf(self)->errors, PyTuple_GET_SIZE(errors) == 0 ? nullptr : Py_NewRef(errors));
  Py_RETURN_NONE;
}

constexpr char kDoc[] =
    "One record: a dict of its fields by name, groups as dicts and arrays as lists.\n\n"
    "Text is str, numbers are int or decimal.Decimal, floats float, and fields with a\n"
    "date pattern date, time or datetime. A field that could not be read is None.";

constexpr Py_ssize_t placeAt(std::size_t member) {
  return static_cast<Py_ssize_t>(offsetof(RecordObject, place) + member);
}

// The interpreter keeps pointers into these.
std::array<PyMemberDef, 3> members{
    {{"number", T_ULONGLONG, placeAt(offsetof(RecordPlace, number)), READONLY, "The number of the record, from 1."},
     {"offset", T_ULONGLONG, placeAt(offsetof(RecordPlace, offset)), READONLY, "Its first byte in the input, from 0."},
     {}}};
std::array<PyGetSetDef, 3> getters{
    {{"kind", kindOf, nullptr, "The name that the condition of `when` gave it, or None.", nullptr},
     {"errors", errorsOf, nullptr, "The fields that could not be read, a tuple of FieldError.", nullptr},
     {}}};
std::array<PyMethodDef, 3> methods{{{"__reduce__", reduce, METH_NOARGS, "What pickle and copy keep."},
                                    {"__setstate__", setState, METH_O, "What they kept."},
                                    {}}};
std::array<PyType_Slot, 8> slots{{{Py_tp_dealloc, reinterpret_cast<void*>(deallocate)},
                                  {Py_tp_traverse, reinterpret_cast<void*>(traverse)},
                                  {Py_tp_clear, reinterpret_cast<void*>(clear)},
                                  {Py_tp_members, members.data()},
                                  {Py_tp_methods, methods.data()},
                                  {Py_tp_getset, getters.data()},
                                  {Py_tp_doc, const_cast<char*>(kDoc)},
                                  {}}};
PyType_Spec description{"oxrrec.Record", sizeof(RecordObject), 0,
                        Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE | Py_TPFLAGS_HAVE_GC, slots.data()};

PyTypeObject* recordType = nullptr;
PyObject* noArguments = nullptr;

}  // namespace

void addRecordType(py::module_& module) {
  const py::tuple bases = py::make_tuple(py::handle(reinterpret_cast<PyObject*>(&PyDict_Type)));
  PyObject* const type = PyType_FromSpecWithBases(&description, bases.ptr());
  if (type == nullptr) throw py::error_already_set();
  recordType = reinterpret_cast<PyTypeObject*>(type);
  noArguments = PyTuple_New(0);
  module.attr("Record") = py::handle(type);
}

PyObject* newRecord(const RecordPlace& place, PyObject* kind, PyObject* errors) {
  PyObject* const made = PyDict_Type.tp_new(recordType, noArguments, nullptr);
  if (made == nullptr) throw py::error_already_set();
  recordOf(made)->place = place;
  recordOf(made)->kind = Py_XNewRef(kind);
  recordOf(made)->errors = Py_XNewRef(errors);
  return made;
}

}  // namespace oxr::python
