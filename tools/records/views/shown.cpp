#include "records/views/shown.hpp"

#include "kelwstringconvertor.hpp"

namespace oxr::rec {

Shown shownRecord(const RecordPlan& plan) {
  const RecordKind& kind = plan.kinds().front();
  Shown record{kind.name, nullptr, {}};
  std::vector<Shown*> open{&record};  // a child's own children are added while no brother of it is
  for (std::uint32_t i = kind.begin; i < kind.end; ++i) {
    const Step& step = plan.steps()[i];
    if (step.name == Step::kNoName) continue;
    switch (step.op) {
      case Op::field:
      case Op::beginGroup:
      case Op::beginArray:
        open.back()->children.push_back({toUtf8(UnitView(plan.name(step))), &step, {}});
        if (step.op != Op::field) open.push_back(&open.back()->children.back());
        break;
      case Op::endGroup:
      case Op::endArray:
        open.pop_back();
        break;
      case Op::choose:
      case Op::jump:
      case Op::keepPlace:
      case Op::restorePlace:
        break;
    }
  }
  return record;
}

}  // namespace oxr::rec
