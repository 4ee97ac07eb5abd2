#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "records/recordplan.hpp"

namespace oxr::rec {

// The names that may stand directly in the object of a record which a condition calls `kind`.
std::vector<std::string> namesInObject(const RecordPlan& plan, std::string_view kind);

}  // namespace oxr::rec
