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
  bool isOptional = false;      // of an alternative, which a condition may choose or not

  bool isArray() const { return step != nullptr && step->op == Op::beginArray; }
  bool isField() const { return step != nullptr && step->op == Op::field; }
};

// A record of a kind. Keeps pointers to the plan's steps. Alternatives may have children of the same name.
Shown shownRecord(const RecordPlan& plan, const RecordKind& kind);
// The item of a step.
const Item& itemOf(const RecordPlan& plan, const Step& step);

}  // namespace oxr::rec
