#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "records/plan/itempath.hpp"
#include "records/plan/valueset.hpp"

namespace oxr::rec {

// "FIELD=VALUE:NAME": where the field holds the value, the bytes are what the name says.
struct Condition {
  std::string text;
  ItemPath field;
  std::optional<ValueSet> values;  // nothing for "*": whatever no other condition has
  ItemPath name;
};

// Throws PlanError.
Condition readCondition(std::string_view text);

}  // namespace oxr::rec
