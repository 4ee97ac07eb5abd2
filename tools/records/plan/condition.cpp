#include "records/plan/condition.hpp"

#include <stdexcept>

#include "records/plan/error.hpp"

namespace oxr::rec {

namespace {

[[noreturn]] void refuse(std::string_view text, const std::string& what) {
  throw PlanError("--when " + std::string(text) + ": " + what);
}

std::optional<ValueSet> readValues(std::string_view condition, std::string_view values) {
  if (values == "*") return std::nullopt;
  try {
    return ValueSet(values);
  } catch (const std::invalid_argument& fault) {
    refuse(condition, fault.what());
  }
}

}  // namespace

// Neither a field's name nor that of a record has a "=" or a ":", so that a value may have both.
Condition readCondition(std::string_view text) {
  const std::size_t equals = text.find('=');
  const std::size_t colon = text.rfind(':');
  if (equals == std::string_view::npos || colon == std::string_view::npos || colon < equals || equals == 0 ||
      colon + 1 == text.size())
    refuse(text, "this is not FIELD=VALUE:NAME");
  return {std::string(text), ItemPath(text.substr(0, equals)),
          readValues(text, text.substr(equals + 1, colon - equals - 1)), ItemPath(text.substr(colon + 1))};
}

}  // namespace oxr::rec
