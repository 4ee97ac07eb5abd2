#pragma once

#include <string>

#include "records/recordplan.hpp"

// What a plan shows of a record, told to other programs. describe() in layout.hpp tells it to people.

namespace oxr::rec {

// A JSON Schema (draft 2020-12) of the objects that records of the plan's first kind become, one property a line.
// `pointsAsText` says that numbers with a decimal point are strings. A value that is null for want of a good one is not
// foreseen.
std::string jsonSchema(const RecordPlan& plan, bool pointsAsText);

// CREATE TABLE for a row a record, with a column a field as in comma-separated values: "HOME.TOWN",
// "MOVEMENT(2).AMOUNT". Throws PlanError for a table that no database takes.
std::string createTable(const RecordPlan& plan);

}  // namespace oxr::rec
