#include "oxrrec/namesinobject.hpp"

#include <algorithm>
#include <optional>

#include "kelwstringconvertor.hpp"
#include "records/plan/itempath.hpp"

// A record is called by a condition of its level 01 entry, or by one of an area in it. Of that area only the
// alternative of this name is there. Of other areas any may be.

namespace oxr::rec {

namespace {

// The alternative of that name, if a record may be called by it.
const Choice::Alternative* alternativeOf(const Choice& choice, std::string_view name) {
  const auto found = std::find_if(choice.alternatives.begin(), choice.alternatives.end(),
                                  [&](const auto& alternative) { return isSameName(alternative.name, name); });
  return choice.isOfRecord && found != choice.alternatives.end() ? &*found : nullptr;
}

bool canBeCalled(const RecordPlan& plan, const RecordKind& kind, std::string_view name) {
  const auto isOf = [&](const Choice::Alternative& alternative) {
    return &plan.kinds()[alternative.target] == &kind && isSameName(alternative.name, name);
  };
  if (plan.recordChoice() != nullptr &&
      std::any_of(plan.recordChoice()->alternatives.begin(), plan.recordChoice()->alternatives.end(), isOf))
    return true;
  return std::any_of(plan.choices().begin() + kind.firstChoice, plan.choices().begin() + kind.endChoice,
                     [&](const Choice& choice) { return alternativeOf(choice, name) != nullptr; });
}

void addNames(const RecordPlan& plan, const RecordKind& kind, std::string_view called,
              std::vector<std::string>& names) {
  unsigned depth = 0;
  std::optional<std::uint32_t> taken;  // the choice that is settled
  for (std::uint32_t i = kind.begin; i < kind.end; ++i) {
    const Step& step = plan.steps()[i];
    if (step.op == Op::choose) {
      const Choice::Alternative* const only = alternativeOf(plan.choices()[step.choice], called);
      if (only == nullptr) continue;
      taken = step.choice;
      i = only->target - 1;
    } else if (step.op == Op::jump && taken == step.choice) {
      i = step.target - 1;
    } else if (plan.name(step) != nullptr) {
      const bool ends = step.op == Op::endGroup || step.op == Op::endArray;
      if (ends) --depth;
      if (!ends && depth == 0) names.push_back(toUtf8(UnitView(plan.name(step))));
      if (step.op == Op::beginGroup || step.op == Op::beginArray) ++depth;
    }
  }
}

}  // namespace

std::vector<std::string> namesInObject(const RecordPlan& plan, std::string_view kind) {
  std::vector<std::string> names;
  for (const RecordKind& record : plan.kinds())
    if (canBeCalled(plan, record, kind)) addNames(plan, record, kind, names);
  return names;
}

}  // namespace oxr::rec
