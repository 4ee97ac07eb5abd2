#pragma once

#include <string>

#include "records/recordplan.hpp"

// What a plan shows of a record, told to other programs. describe() in layout.hpp tells it to people.

namespace oxr::rec {

// A JSON Schema (draft 2020-12) of the objects that records become, one property a line; of several kinds it is one of
// theirs. `pointsAsText` says that numbers with a decimal point are strings. Null is foreseen where a setting says that
// blanks or NULs stand for it, not for want of a good value.
std::string jsonSchema(const RecordPlan& plan, bool pointsAsText);

// CREATE TABLE for a row a record, with a column a field as in comma-separated values: "HOME.TOWN",
// "MOVEMENT(2).AMOUNT"; of several kinds with those of all. Throws PlanError for a table that no database takes.
std::string createTable(const RecordPlan& plan);

}  // namespace oxr::rec
