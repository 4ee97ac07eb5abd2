#pragma once

#include <exception>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "errors.hpp"
#include "input.hpp"
#include "oxrrec/decode.hpp"
#include "records/program/reading.hpp"

namespace oxr::python {

// Hears of the bad fields of a record and keeps them.
class BadFieldKeeper : public rec::FaultListener {
 public:
  explicit BadFieldKeeper(rec::OnError onError) : onError_(onError) {}
  bool goOnAfter(const rec::FieldFault& fault) override {
    fields_.emplace_back(fault);
    return onError_ != rec::OnError::stop;
  }
  std::vector<BadField>& fields() { return fields_; }

 private:
  const rec::OnError onError_;
  std::vector<BadField> fields_;  // of the record in hand
};

// Reads the records of an input, one after the other, into a handler. Needs no interpreter once it is made.
class Reading {
 public:
  // With the interpreter held, which is released while the input is opened.
  static Reading open(const rec::DecodeOptions& options, const pybind11::object& file);
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

  const Source& source() const { return *source_; }
  const rec::RecordPlan& plan() const { return description_.plan(); }
  rec::RecordWorker& worker() { return *worker_; }
  // To be called once, before the first record. Both must outlive the reading.
  void setHandler(FIHandler& handler, rec::FieldObserver* observer);
  // False at the input's end. Throws what a function of the module may throw; nothing is to be read after that.
  bool next();
  // Those of the last record.
  std::vector<BadField>& badFields() { return keeper_.fields(); }
  // What was chosen that nobody asked for, and what was found out about the input: a line each.
  std::string notes() const { return notes_.str(); }

 private:
  Reading(const rec::DecodeOptions& options, std::unique_ptr<Source> source);
  rec::Console console() { return {0, 1, notes_, false, "oxrrec"}; }

  std::ostringstream notes_;
  const rec::Description description_;
  BadFieldKeeper keeper_;
  const std::unique_ptr<Source> source_;
  rec::FileInput input_;
  rec::RecordWorker::Owner worker_;
  bool isBegun_ = false;
};

}  // namespace oxr::python
