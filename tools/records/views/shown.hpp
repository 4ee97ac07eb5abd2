#pragma once

#include <string>
#include <vector>

#include "records/recordplan.hpp"

namespace oxr::rec {

// What a plan shows of a record, as a tree: objects, arrays and fields under the names that the JSON has.
struct Shown {
  std::string name;
  const Step* step = nullptr;   // null for the record
  std::vector<Shown> children;  // of an object; the one element of an array

  bool isArray() const { return step != nullptr && step->op == Op::beginArray; }
  bool isField() const { return step != nullptr && step->op == Op::field; }
};

// The record of a plan's first kind. Keeps pointers to its steps.
Shown shownRecord(const RecordPlan& plan);

}  // namespace oxr::rec
