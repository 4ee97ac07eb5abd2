#pragma once

#include <pybind11/pybind11.h>

#include <memory>
#include <string_view>
#include <unordered_map>

#include "batch.hpp"
#include "busy.hpp"
#include "values.hpp"

namespace oxr::python {

// The records of an input as dicts. All members are called with the interpreter held, by one thread at a time.
class Records {
 public:
  // Where records are put into each other, those with a bad field come too, even if the options leave them out.
  Records(const rec::DecodeOptions& options, const pybind11::object& file);
  Records(const Records&) = delete;
  Records& operator=(const Records&) = delete;

  // A new reference; null, without an exception, at the end. Throws what a function of the module may throw.
  PyObject* next();
  const rec::RecordPlan& plan() const { return reading_.plan(); }
  // The names of kinds that matter to who asks for them: see RecordWorker.
  void setKindsOfInterest(std::vector<std::string> names) { reading_.worker().setKindsOfInterest(std::move(names)); }
  const Source& source() const { return reading_.source(); }
  std::string notes() const { return reading_.notes(); }
  // Throws value_error while next() is at work.
  void requireIdle() const { busy_.requireIdle(); }

 private:
  PyObject* make(const Batch::Entry& entry);
  pybind11::object kindOf(std::string_view kind);

  Reading reading_;
  Batch batch_;
  Builder builder_;
  std::size_t made_ = 0;  // of the entries of the batch
  std::unordered_map<std::string_view, pybind11::object> kinds_;
  Busy busy_{"these records"};
};

// Makes the class Records and puts it into the module.
void addRecordsType(pybind11::module_& module);

}  // namespace oxr::python
